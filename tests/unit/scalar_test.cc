// Headers that are kept verbatim, and numbers.
#include <gtest/gtest.h>

#include "support/decoding.h"

namespace {

using namespace support;

const std::string start = "INVITE sip:h SIP/2.0\r\n";
const std::string rest = "Via: SIP/2.0/UDP h;branch=b\r\nFrom: sip:f\r\nTo: sip:t\r\n";
const std::string call_id = "Call-ID: c\r\n";
const std::string cseq = "CSeq: 1 INVITE\r\n";

// ---------------------------------------------------------------------------------------------------------------------
// Texts

// Headers that are kept verbatim: the member, and how many characters it holds.
const struct {
    std::string name;
    std::string member;
    std::size_t longest;
} verbatim_headers[] = {
    {"Korvadex", "korvadex_trunk", 126},
    {"Require", "require use=1 REQUIRE", 62},
    {"Event", "event use=1 content", 62},
    {"Date", "date use=1 datetime", 30},
    {"User-Agent", "user_agent use=1 useragent", 62},
    {"Replaces", "replaces use=1 content", 254},
    {"Subscription-State", "subscription_state use=1 content", 62},
    {"Referred-By", "referred_by use=1 content", 62},
    {"Service-Route", "service_route use=1 content", 254},
    {"Alert-Info", "alert use=1 alertinfo", 126},
    {"Call-Info", "call_info use=1 content", 127},
    {"Content-Type", "content use=1 type", 63},
    {"c", "content use=1 type", 63},
};

TEST(Verbatim, is_kept_up_to_its_limit_and_found_by_its_name_alone) {
    const std::string message = start + call_id + cseq + rest;
    const Members without = decode(message + "\r\n").members;
    const auto stored = [&](const std::string &line) {
        return changes(without, decode(message + line + "\r\n\r\n").members);
    };
    for (const auto &[name, member, longest] : verbatim_headers) {
        for (const std::size_t length : {longest, longest + 1, std::size_t{3000}})
            EXPECT_EQ(stored(name + ": " + letters(length)), member + "=" + letters(longest)) << length;
        std::string other_case = name;
        for (char &c : other_case)
            c = static_cast<char>(c == '-' ? c : c ^ 0x20);
        EXPECT_EQ(stored(other_case + ":\"a\" <b>;c=%41,d \r\n" + name + ": e"), member + "=\"a\" <b>;c=%41,d ");
        EXPECT_EQ(stored(name + ":\r\n" + name + ": e"), member + "=");
        for (std::size_t at = 0; at < name.size(); ++at)
            EXPECT_EQ(stored(std::string(name).replace(at, 1, "_") + ": v"), "") << at << " of " << name;
        for (const std::string &line : {name + " : v", name + "x: v", "x" + name + ": v", name.substr(1) + ": v", name})
            EXPECT_EQ(stored(line), "") << line;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Numbers

// A text and its number: read into 64 bits with saturation, of which the low 32 are kept.
const char *const numbers = R"(0=0 | 0070=70 | +5=5 | -5=-5 | 12ab=12 | 0x10=0 | 1.9=1
2147483647=2147483647 | 2147483648=-2147483648 | -2147483649=2147483647 | 4294967303=7 | 18446744073709551623=-1
9223372036854775806=-2 | 9223372036854775808=-1 | -9223372036854775807=1 | -9223372036854775809=0
00000000000000000000000000042=42)";

TEST(Scalar, numbers_of_every_header) {
    const std::string head = start + call_id + cseq + "f: sip:f\r\nt: sip:t\r\n";
    const struct {
        std::string before;
        std::string after;
        std::string member;
    } places[] = {{start + call_id + rest + "CSeq: ", " INVITE", "cseq.seq"},
                  {head + "v: x\r\nMax-Forwards: ", "", "max_forward"},
                  {head + "v: x\r\nExpires: ", ";x", "expire.expires"},
                  {head + "v: x\r\nContact: <sip:h;expires=", ">", "expire.expires"},
                  {head + "v: x\r\nRSeq: ", "", "rseq.RSeq"},
                  {head + "v: x\r\nRAck: ", " 1 INVITE", "rack.rack"},
                  {head + "v: x\r\nRAck: 1 ", " INVITE", "rack.cseq"},
                  {head + "v: x\r\nSession-Expires: ", ";x", "session_expires.sessionexpires"},
                  {head + "v: x\r\nMin-SE: ", "", "min_se.minse"},
                  {head + "v: x\r\nMin-Expires: ", "", "min_expires.min_expires"},
                  {head + "v: x\r\nContact: sip:h:", "", "contact.addr.port"},
                  {head + "v: SIP/2.0/UDP h:", ";branch=b", "via.addr.port"}};
    for (const std::string &row : entries(numbers))
        for (const auto &[before, after, member] : places) {
            const std::string text = row.substr(0, row.find('='));
            const std::string value = decode(before + text + after + "\r\n\r\n")[member];
            EXPECT_EQ(text + "=" + value, row) << member;
        }
}

} // namespace
