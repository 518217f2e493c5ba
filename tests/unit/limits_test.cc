// Every limit at its last character and one past it: message, lines, members, and how much of a value is read.
#include <gtest/gtest.h>

#include "support/decoding.h"

namespace {

using namespace support;

const std::string start = "OPTIONS sip:h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 OPTIONS\r\n";
const std::string via = "Via: SIP/2.0/UDP h;branch=b\r\n";
const std::string six_lines = start + via + "f: tel:\r\nt: tel:\r\n";
const std::string end = "\r\n\r\n";

// ---------------------------------------------------------------------------------------------------------------------
// Members: how many characters of the text between the two others are kept.

const std::string request_tail = " SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 OPTIONS\r\n" + via + "\r\n";

const struct {
    const char *title;
    const char *member;
    std::size_t longest;
    std::string before;
    std::string after;
} limits[] = {
    {"user of the request URI", "uri.user", 31, "OPTIONS sip:", "@h" + request_tail},
    {"user of a tel request URI", "uri.user", 31, "OPTIONS tel:", ";x" + request_tail},
    {"host of the request URI", "uri.addr.ip", 23, "OPTIONS sip:", ":1" + request_tail},
    {"user of From", "from.user", 31, start + via + "From: <sip:", "@h>" + end},
    {"tag of From", "from.tag", 127, start + via + "From: <sip:a@h>;tag=", ";x" + end},
    {"host of To", "to.addr.ip", 23, start + via + "To: sip:a@", end},
    {"user of Contact", "contact.user", 31, start + via + "Contact: <sip:", "@h>" + end},
    {"branch", "via.branch", 127, start + "Via: SIP/2.0/UDP h;branch=", ";x" + end},
    {"host of a Via", "via.addr.ip", 23, start + "Via: SIP/2.0/UDP ", ";branch=b" + end},
    {"host of the upper Via", "via1.addr.ip", 23, start + "Via: SIP/2.0/UDP ", ":1\r\n" + via + "\r\n"},
    {"branch of the lower Via", "via.branch", 127, start + via + "Via: SIP/2.0/UDP h;branch=", end},
    {"branch of the second joined Via", "via.branch", 127,
     start + "Via: SIP/2.0/UDP h;branch=b,SIP/2.0/UDP h;branch=", end},
};

TEST(Limits, characters_of_members) {
    for (const auto &[title, member, longest, before, after] : limits) {
        Members expected = decode(before + letters(longest - 1) + after).members;
        for (auto &[path, value] : expected)
            if (path == member)
                value = letters(longest);
        for (const std::size_t length : {longest, longest + 1, longest + 60}) {
            const std::string text = before + letters(length) + after;
            EXPECT_EQ(changes(expected, decode(text).members), "") << title << ", " << length;
            expect_whole_members(text);
        }
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Windows: how many characters of a value are read. The mark is placed so that three characters after it are read.

const struct {
    const char *title;
    const char *member;
    std::size_t size;
    std::string before;
    std::string value; // its part before the padding
    std::string mark;
    std::string after = end;
} windows[] = {
    {"From", "from.tag", 255, start + via + "From: ", "<sip:a@h>;p=", ";tag="},
    {"Contact", "contact.addr.port", 255, start + via + "Contact: ", "sip:a@", ":"},
    {"expiry of Contact", "expire.expires", 255, start + via + "Contact: ", "<sip:a@h>;p=", ";expires="},
    {"P-Called-Party-ID", "callparty.addr.port", 255, start + via + "P-Called-Party-ID: ", "sip:a@", ":"},
    {"Via", "via.branch", 255, start + "Via: ", "SIP/2.0/UDP h;p=", ";branch="},
    {"upper Via with its name", "via1.branch", 255, start, "Via: SIP/2.0/UDP h;p=", ";branch=", "\r\n" + via + "\r\n"},
    {"lower Via with its name", "via.branch", 255, start + via, "v: SIP/2.0/UDP h;p=", ";branch="},
    {"second joined Via with the first", "via.branch", 255, start,
     "Via: SIP/2.0/UDP h;branch=b,SIP/2.0/UDP h;p=", ";branch="},
    {"Session-Expires", "session_expires.sessionexpires", 63, start + via + "x: ", "", "00"},
    {"Min-SE", "min_se.minse", 63, start + via + "Min-SE: ", "", "00"},
};

TEST(Limits, characters_of_values_that_are_read) {
    for (const auto &[title, member, size, before, start_of_value, mark, after] : windows) {
        const std::string padding(size - 3 - start_of_value.size() - mark.size(), '0');
        EXPECT_EQ(decode(before + start_of_value + padding + mark + "123456" + after)[member], "123") << title;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Lines

// What is logged for that many line ends in one section.
std::string overflows(std::size_t line_ends, const std::string &line) {
    return lines(std::vector<std::string>(line_ends < 63 ? 0 : line_ends - 63, line));
}

// The last line is a Date. The start line counts, and a line without an end may still take the last place.
TEST(Limits, header_lines) {
    for (const std::size_t count : {62U, 63U, 64U, 65U, 500U})
        for (const std::string end_of_headers : {"\r\n\r\nb", "\r\n", ""}) {
            const bool ended = !end_of_headers.empty();
            const Decoded decoded = decode(six_lines + repeat(count - 7, "a\r\n") + "Date: d" + end_of_headers);
            EXPECT_EQ(decoded["result"], "1");
            EXPECT_EQ(decoded["date.datetime"], !ended || count <= 63 ? "d" : "(untouched)") << count << ended;
            EXPECT_EQ(decoded["xml_buf"], end_of_headers.ends_with("b") ? "b" : "") << count;
            EXPECT_EQ(lines(decoded.log), overflows(ended ? count : count - 1, "1 Too many SIP headers. Ignoring"));
        }
}

TEST(Limits, body_lines) {
    for (const std::size_t count : {63U, 64U, 65U, 500U})
        for (const std::string end_of_body : {"\r\n", "\n", ""}) {
            const Decoded decoded = decode(six_lines + "\r\n" + repeat(count - 1, "\n") + "x" + end_of_body);
            EXPECT_EQ(decoded["result"], "1");
            EXPECT_EQ(lines(decoded.log),
                      overflows(end_of_body.empty() ? count - 1 : count, "1 Too many SDP lines. Ignoring"));
        }
}

// Where a message is cut: in its body, in a header value, in the start line.
TEST(Limits, characters_of_a_message) {
    for (const std::size_t length : {4094U, 4095U, 4096U, 4097U, 100000U}) {
        const std::string body = letters(length - six_lines.size() - 2);
        EXPECT_EQ(decode(six_lines + "\r\n" + body)["xml_buf"], body.substr(0, 4095 - six_lines.size() - 2)) << length;
        const std::string date = "\r\nDate: 12345";
        const std::string filled = six_lines + letters(length - six_lines.size() - date.size()) + date;
        EXPECT_EQ(decode(filled)["date.datetime"],
                  length > 5000 ? "(untouched)" : std::string("12345").substr(0, 4095 + 5 - length))
            << length;
        const std::string rest = " SIP/2.0" + six_lines.substr(six_lines.find("\r\n"));
        const std::string uri = "tel:" + letters(length - rest.size() - 12);
        EXPECT_EQ(decode("OPTIONS " + uri + rest)["result"], length > 5000 ? "-1" : "1") << length;
    }
}

} // namespace
