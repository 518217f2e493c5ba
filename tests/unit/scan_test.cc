// The exported scanning functions and decoders, on texts and split messages of a host.
#include <algorithm>

#include <gtest/gtest.h>

#include "support/decoding.h"
#include "support/split_message.h"

namespace {

using namespace support;

TEST(Scan, blanks_are_the_bytes_1_to_32) {
    for (int byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        const Guarded text(std::string{c, c, 'x'});
        EXPECT_EQ(Parse_Skip_Blanks(text.data()) - text.data(), byte >= 1 && byte <= 32 ? 2 : 0) << byte;
    }
    EXPECT_STREQ(Parse_Skip_Blanks(Guarded(" \t\r\n").data()), "");
}

TEST(Scan, empty_is_null_or_nothing) {
    EXPECT_EQ(Judge_Strlen_Zero(nullptr), 1);
    EXPECT_EQ(Judge_Strlen_Zero(""), 1);
    EXPECT_EQ(Judge_Strlen_Zero(" "), 0);
}

TEST(Scan, copy_is_cut_to_its_room) {
    for (const std::size_t size : {1U, 7U, 8U, 9U, 22U})
        for (const std::size_t length : {0U, 7U, 20U}) {
            const Guarded room(size, stale);
            Copy_String(room.data(), Guarded(letters(length)).data(), size);
            const std::size_t copied = std::min(length, size - 1);
            EXPECT_EQ(room.data(), letters(copied)) << length << " characters into " << size;
            EXPECT_EQ(std::count(room.data(), room.data() + size, static_cast<char>(stale)), size - 1 - copied) << size;
        }
    const Guarded unterminated(7, 'x');
    const Guarded room(8, stale);
    Copy_String(room.data(), unterminated.data(), 8);
    Copy_String(room.data(), nullptr, 8);
    Copy_String(room.data(), "y", 0);
    Copy_String(nullptr, "y", 8);
    EXPECT_STREQ(room.data(), "xxxxxxx") << "no source, no room or no target changes nothing";
}

// A text and its decoded form.
const char *const escapes =
    "= | plain=plain | %41%5A%5a%7e=AZZ~ | %=% | %4=%4 | a%41=aA | %41b%=Ab% | %4G=\x04 | %4Gx=\x04x | %G1=%G1 | "
    "%%41=%A | %25%34%31=%41 | %ffx=\xFFx | %FFx=\xFFx | a%00b=a | %0xb= | %0=%0 | % 4z=\x04z | %  41=A41 | "
    "%\v\r4=\0044 | %  z=%  z | %  =%   | %\00141=%\00141 | %-1x=\xFFx | %+fx=\x0Fx | %-0x= | % -1=\3771 | "
    "%-g=%-g | %--1=%--1 | %+-1=%+-1 | %:0%/0%@0%`0%g0=%:0%/0%@0%`0%g0";

TEST(UriDecode, escapes) {
    for (const std::string &row : entries(escapes)) {
        const std::string text = row.substr(0, row.find('='));
        const Guarded room(text.size() + 1, 0);
        text.copy(room.data(), text.size());
        Uri_Decode(room.data());
        EXPECT_EQ(room.data(), row.substr(text.size() + 1)) << row;
    }
}

TEST(Header, counts) {
    const struct {
        std::vector<std::string> header;
        int vias;
        int record_routes;
    } rows[] = {
        {{"INVITE", "To: x", "Vi: x", "v", "v :x", "ve: x", " Via: x", ""}, 0, 0},
        {{"VIATOR", "V:"}, 2, 0},
        {{"vIa:,", "v:x"}, 3, 0},
        {{"Via: a,b,c,d"}, 2, 0},
        {std::vector<std::string>(64, "v:"), 64, 0},
        {{"Record-Rout", " Record-Route: a", "To: Record-Route", "Record-Route:", "record-ROUTEs", "x"}, 0, 2},
        {std::vector<std::string>(64, "Record-Route:a,b"), 0, 64},
    };
    for (const auto &[header, vias, record_routes] : rows) {
        SplitMessage split(header);
        EXPECT_EQ(SIP_Decode_Judge_Via_Count(&split.message()), vias) << testing::PrintToString(header);
        EXPECT_EQ(SIP_Decode_Judge_RecordRoute_Count(&split.message()), record_routes)
            << testing::PrintToString(header);
    }
    EXPECT_EQ(SIP_Decode_Judge_RecordRoute_Count(nullptr), -1);
}

TEST(Header, lookup) {
    SplitMessage split({"INVITE:x", "To: \t 1 ", "Tox: 2", "to: 3", "Via :4", ":5", "T:", "From:\x01", "Date"});
    split.message().header[2] = nullptr;
    const struct {
        const char *name;
        const char *value;
    } rows[] = {{"To", "1 "},      {"tO", "1 "},       {"T", ""},        {"INVITE", "x"},
                {"", "5"},         {"From", ""},       {"Tox", nullptr}, {"Via", nullptr},
                {"Date", nullptr}, {nullptr, nullptr}, {"To:", nullptr}, {"Via ", "4"}};
    for (const auto &row : rows)
        EXPECT_STREQ(Parse_Header(&split.message(), row.name), row.value) << (row.name == nullptr ? "null" : row.name);
    EXPECT_EQ(Parse_Header(nullptr, "To"), nullptr);
    EXPECT_EQ(Parse_Header(&split.message(), "to"), split.message().header[1] + 6);
}

TEST(Header, entries_after_the_last_are_not_read) {
    std::vector<std::string> header(64, "a: b");
    header[63] = "Contact: sip:u@h";
    SplitMessage split(header);
    SIP_CONTACT contact{};
    const struct {
        int headers;
        const char *value;
        const char *user;
    } rows[] = {{1000000, "sip:u@h", "u"}, {64, "sip:u@h", "u"}, {63, nullptr, ""}, {-2147483647, nullptr, ""}};
    for (const auto &row : rows) {
        split.message().headers = row.headers;
        EXPECT_STREQ(Parse_Header(&split.message(), "contact"), row.value) << row.headers;
        EXPECT_EQ(Parse_Header(&split.message(), "none"), nullptr) << row.headers;
        contact = {};
        Parse_Contact(&contact, &split.message());
        EXPECT_STREQ(contact.user, row.user) << row.headers;
        EXPECT_EQ(SIP_Decode_Judge_Via_Count(&split.message()), 0);
    }
}

// What the exported decoders read from the lines of a host. Each writes only its own member.
const struct {
    std::string title;
    std::vector<std::string> header;
    std::string changes;
} exported[] = {
    {"every decoder, after a null entry",
     {"", "Contact: \"<\" <sip:a@h:1>", "m: tel:2", "x: 2;r=s", "Min-SE: 3", "Min-Expires: 4", "Call-Info: 5"},
     R"(result=1 | contact user=a addr=h:1 | session_expires use=1 sessionexpires=2 refresher=s
min_se use=1 minse=3 | min_expires use=1 min_expires=4 | call_info use=1 content=5)"},
    {"lines longer than a message",
     {"m: tel:" + letters(9000), "x: 1;" + letters(9000), "Min-SE: 1" + letters(9000), "Call-Info: " + letters(9000)},
     "result=1 | contact user=" + letters(31) + R"( | session_expires use=1 sessionexpires=1
min_se use=1 minse=1 | call_info use=1 content=)" +
         letters(127)},
};

TEST(Exported, decoders) {
    SplitMessage nothing({"INVITE"});
    SIP_CODE_MSG unused{};
    EXPECT_EQ(Parse_Call_Info(&nothing.message(), &unused), -1);
    for (const auto &row : exported) {
        SplitMessage split(row.header);
        for (std::size_t i = 0; i < row.header.size(); ++i)
            if (row.header[i].empty())
                split.message().header[i] = nullptr;
        const Guarded room(sizeof(SIP_CODE_MSG), stale);
        auto &record = room.as<SIP_CODE_MSG>();
        Parse_Contact(&record.contact, &split.message());
        Parse_Session_Expires(&record.session_expires, &split.message());
        Parse_Min_Se(&record.min_se, &split.message());
        Parse_Min_Expires(&record.min_expires, &split.message());
        const int result = Parse_Call_Info(&split.message(), &record);
        EXPECT_EQ(changes({}, members_of(record, stale, result)), lines(entries(row.changes))) << row.title;
    }
}

} // namespace
