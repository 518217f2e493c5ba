// Header lines, list items, the start line and the body of a text, found without decoding it.
#include <gtest/gtest.h>

#include "support/decoding.h"
#include "support/encoding.h"
#include "support/guarded.h"

#include <sipcode/safe.h>

namespace {

using namespace support;

const std::string start = "BYE sip:b SIP/2.0\n";

std::string part(std::string_view text, const SIP_SLICE &slice) {
    return std::string(text.substr(slice.at, slice.length));
}

// "name=value" of each header line, then the body.
std::vector<std::string> walked(const std::string &text) {
    const Guarded data = Guarded::bytes(text);
    std::vector<std::string> found;
    SIP_HEADER_WALK walk{};
    while (SIP_Walk_Headers(data.data(), text.size(), &walk) == 1)
        found.push_back(part(text, walk.name) + "=" + part(text, walk.value));
    EXPECT_EQ(SIP_Walk_Headers(data.data(), text.size(), &walk), 0) << "the end stays the end";
    EXPECT_EQ(walk.line, static_cast<int>(found.size()));
    SIP_SLICE body;
    if (SIP_Find_Body(data.data(), text.size(), &body) == 1)
        found.push_back(part(text, body));
    return found;
}

TEST(Walk, finds_header_lines_and_the_body) {
    const std::string lines_62 = repeat(62, "a:\n");
    const auto ending_in = [](const char *last) {
        std::vector<std::string> found(62, "a=");
        found.emplace_back(last);
        return found;
    };
    const struct {
        std::string text;
        std::vector<std::string> found;
    } rows[] = {
        {"", {}},
        {wire("\nTo: a\n"), {"To: a\r\n"}},
        {wire(start + "\nTo: a"), {"To: a"}},
        {wire(start + "To: a \nm:\t <sip:b>\nx\n : y\n\nbody\n"), {"To=a ", "m=<sip:b>", "=x", " =y", "body\r\n"}},
        {wire(start) + "To:a,\r\n b\r\nX: ,c\nY: d\n\rZ\r\nbody", {"To=a,\r\n b", "X=,c\nY: d", "body"}},
        {wire(start) + "To: a\rb\r\nX: c", {"To=a", "X=c"}},
        {wire(start + "To: a\n") + '\0' + "X: c\r\n", {"To=a"}},
        {wire(start + "To: " + std::string(5000, 'x')), {"To=" + std::string(4095 - 19 - 4, 'x')}},
        {start + lines_62 + "b:\nc:\n\nd", ending_in("d")},
        {start + lines_62 + "b:\nc:", ending_in("c=")},
    };
    for (const auto &[text, found] : rows)
        EXPECT_EQ(lines(walked(text)), lines(found)) << text;
}

TEST(Walk, finds_headers_and_items_by_name) {
    const std::string text =
        wire(start + "supported: a, \"b,\\\",c\" ,, <sip:d,e>;f\nk: g,\n h\nCONTACT: i\nm: j\nSupportedX: k\n");
    const Guarded data = Guarded::bytes(text);
    const auto items = [&](const char *name, SIP_NAME_FORMS forms) {
        std::vector<std::string> found;
        SIP_LIST_WALK list{};
        while (SIP_Walk_List(data.data(), text.size(), name, forms, &list) == 1)
            found.push_back(std::to_string(list.header.line) + part(text, list.item));
        return lines(found);
    };
    EXPECT_EQ(items("Supported", SIP_NAME_FULL), "1a\n1\"b,\\\",c\"\n1<sip:d,e>;f");
    EXPECT_EQ(items("Supported", SIP_NAME_ANY_FORM), "1a\n1\"b,\\\",c\"\n1<sip:d,e>;f\n2g\n2h");
    const auto value = [&](const char *name, SIP_NAME_FORMS forms, int number) {
        SIP_SLICE slice;
        const int result = SIP_Find_Header(data.data(), text.size(), name, forms, number, &slice);
        return std::to_string(result) + part(text, slice);
    };
    EXPECT_EQ(value("contact", SIP_NAME_FULL, 0) + value("contact", SIP_NAME_FULL, 1), "1i0");
    EXPECT_EQ(value("Contact", SIP_NAME_ANY_FORM, 1) + value("M", SIP_NAME_FULL, 0), "1j1j");
}

TEST(Walk, reads_the_start_line) {
    const struct {
        std::string line;
        std::string found; // outcome, status, then what else there is
    } rows[] = {
        {"SIP/2.0 301 Moved  here ", "1 301 reason Moved  here"},
        {"sip/2.0\t\t999", "1 999"},
        {"SIP/2.0 3011 x", "1 0 reason x"},
        {"SIP/2.0 2x0", "1 0"},
        {"SIP/2.0 20", "-3 0"},
        {" FOO  urn:x sip/2.0 ", "1 0 method FOO uri urn:x"},
        {"", "-2 0"},
        {"BYE <sip:b> SIP/2.0", "-4 0"},
        {"BYE sip:b SIP/2.1", "-5 0"},
    };
    for (const auto &[line, found] : rows) {
        const std::string text = line + "\r\n";
        const Guarded data = Guarded::bytes(text);
        SIP_START_LINE parts;
        std::string read = std::to_string(SIP_Read_Start_Line(data.data(), text.size(), &parts));
        read += " " + std::to_string(parts.status);
        for (const auto &[name, slice] :
             {std::pair{" reason ", parts.reason}, {" method ", parts.method}, {" uri ", parts.uri}})
            read += slice.length != 0 ? name + part(text, slice) : "";
        EXPECT_EQ(read, found) << line;
    }
}

} // namespace
