// Recognition of method words and statuses.
#include <gtest/gtest.h>

#include <sipcode/decode.h>

#include "support/decoding.h"
#include "support/guarded.h"

namespace {

using namespace support;

constexpr int first_status = 16;

int method(const std::string &text) { return SIP_Decode_Parse_Method(Guarded(text).data()); }
int status(const std::string &text) { return SIP_Decode_Parse_Method_Response(Guarded(text).data()); }
int stand_in(const std::string &text) { return SIP_Decode_Parse_Other_Response(Guarded(text).data()); }

TEST(Recognise, method_word_followed_by_a_blank_or_nothing) {
    for (int id = 0; id < SIP_CODE_METHOD_COUNT; ++id) {
        const std::string word = decode_methods[id].text;
        std::string lower = word;
        for (char &c : lower)
            c = static_cast<char>(tolower(c));
        for (const std::string &text : {word, lower, word + " sip:x", word + "\x01", word + "\x1F", word + "\x20"})
            EXPECT_EQ(method(text), id) << text;
        for (const char *after : {"X", "\x21", "\x7F", "\x80", "\xFF"})
            EXPECT_EQ(method(word + after), 0) << word << after;
        for (const std::string &text : {" " + word, "X" + word, word.substr(1), word.substr(0, word.size() - 1)})
            EXPECT_EQ(method(text), 0) << text;
    }
    EXPECT_EQ(method("SIP\x0F"
                     "2.0"),
              0)
        << "only letters have a case";
    EXPECT_EQ(method(""), -1);
    EXPECT_EQ(SIP_Decode_Parse_Method(nullptr), -1);
}

TEST(Recognise, status_by_three_characters) {
    for (int id = first_status; id < SIP_CODE_METHOD_COUNT; ++id) {
        const std::string text = decode_methods[id].text;
        const std::string code = text.substr(0, 3);
        for (const std::string &variant : {text, code, code + " Autre", code + "9"})
            EXPECT_EQ(status(variant), id) << variant;
        EXPECT_EQ(status(text.substr(0, 2)), 0) << text;
        EXPECT_EQ(status(" " + text), 0) << text;
    }
    const std::pair<std::string, int> rows[] = {{"302 Moved", 0}, {"-UN", 0}, {"sip", 1}, {"inv", 5}, {"", -1}};
    for (const auto &[text, id] : rows)
        EXPECT_EQ(status(text), id) << text;
    EXPECT_EQ(SIP_Decode_Parse_Method_Response(nullptr), -1);
}

TEST(Recognise, stand_in_for_other_statuses) {
    const std::pair<std::string, int> rows[] = {{"399", 0}, {"400", 27}, {"699", 27}, {"700", 0}, {"4999", 27},
                                                {"69", 0},  {"6 9", 0},  {"+50", 0},  {"", 0},    {"5x0", 0}};
    for (const auto &[text, id] : rows)
        EXPECT_EQ(stand_in(text), id) << text;
    EXPECT_EQ(SIP_Decode_Parse_Other_Response(nullptr), 0);
}

} // namespace
