// The reference host: what its services do where host.h asks for it or leaves a choice.
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sipcode/host.h>

namespace {

TEST(Host, compares) {
    EXPECT_EQ(Str_Len("abc"), 3);
    EXPECT_EQ(Str_Cmp("a", "a"), 0);
    EXPECT_NE(Str_Cmp("a", "A"), 0);
    EXPECT_EQ(Str_N_Cmp("ims-x", "ims-y", 4), 0);
    EXPECT_EQ(Str_N_Cmp("a", "b", 0), 0);
    EXPECT_EQ(Str_N_Cmp_NoCase("aBc", "AbD", 2), 0);
    EXPECT_EQ(Str_N_Cmp_NoCase("a", "A", 9), 0) << "up to the terminator";
    EXPECT_NE(Str_N_Cmp_NoCase("@", "`", 1), 0) << "only letters have a case";
}

TEST(Host, reads_numbers_and_copies) {
    const std::pair<const char *, int> numbers[] = {
        {" \t-12x", -12}, {"x", 0}, {"4294967297", 1}, {"99999999999999999999", -1}};
    for (const auto &[text, number] : numbers)
        EXPECT_EQ(Str_Atoi(text), number) << text;
    char room[4] = "xyz";
    Str_N_Copy(room, "abcdef", 3);
    EXPECT_EQ(std::memcmp(room, "ab\0\0", 4), 0) << "the terminator counts, and nothing is written after it";
    Str_N_Copy(room, "q", 0);
    EXPECT_STREQ(room, "ab");
}

std::vector<std::string> tokens(std::string text, char *(*next)(char **)) {
    std::vector<std::string> found;
    char *cursor = text.data();
    while (const char *const token = next(&cursor))
        found.emplace_back(token);
    return found;
}

TEST(Host, cuts_tokens) {
    const auto by_comma = [](char **cursor) { return Str_Tok(cursor, ", "); };
    EXPECT_EQ(tokens("a, b,c, ", by_comma), (std::vector<std::string>{"a", "b,c", ""}));
    const auto in_brackets = [](char **cursor) { return Str_Two_Tok(cursor, "<", ">"); };
    EXPECT_EQ(tokens("x<a>y<b<c>z<d", in_brackets), (std::vector<std::string>{"a", "b<c"}));
    char text[] = "a<b";
    char *cursor = text;
    EXPECT_EQ(Str_Two_Tok(&cursor, "<", ">"), nullptr);
    EXPECT_EQ(cursor, text) << "without an end marker nothing is cut";
}

TEST(Host, writes_a_document_that_fits) {
    Xmldoc document{};
    document.xtype = 3;
    std::strcpy(document.name, "a<\"\x01");
    std::memset(document.source, 's', sizeof document.source); // unterminated
    const std::string expected =
        "<document><xtype>3</xtype><name>a&lt;\"</name><source>" + std::string(128, 's') + "</source></document>";
    const int longest = static_cast<int>(expected.size()) + 1;
    for (const int size : {4096, longest, longest - 1}) {
        std::string out(4096, 'x');
        int room = size;
        const bool fits = size >= longest;
        EXPECT_EQ(Xml_Encode(&document, out.data(), &room), fits ? 0 : -1) << size;
        EXPECT_EQ(out.c_str(), fits ? expected : "");
        EXPECT_EQ(size - room, fits ? longest - 1 : 0);
    }
    int room = 1;
    char out = 'x';
    EXPECT_EQ(Xml_Encode(nullptr, &out, &room), -1);
    EXPECT_EQ(out, '\0');
}

// A line break or a control character of a sender stays in its log line.
TEST(Host, logs_a_line) {
    testing::internal::CaptureStderr();
    Log_Trace_Proc(0, -1, "decode.c", 1, "Bad %s", "a\r\nb\x1B");
    const char *volatile none = nullptr; // unknown to the compiler, which would warn
    Log_Trace_Proc(1, -1, "decode.c", 1, "none: %s", none);
    MT_Log_Process(0, 1, -1, "via\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error: Bad a\\r\\nb\\x1b\nwarning: none: (null)\nerror: via\n");
}

} // namespace
