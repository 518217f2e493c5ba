// Identifiers, their texts, the recognisers; the layout of the record.
#include <gtest/gtest.h>

#include <sipcode/decode.h>

#include "record.h"
#include "support/decoding.h"
#include "support/guarded.h"

namespace {

using namespace support;

// Every identifier's text, from 0 on.
const char *const all_texts = R"(-UNKNOWN- | SIP/2.0 | REGISTER | OPTIONS | NOTIFY | INVITE | ACK | PRACK | BYE | REFER
SUBSCRIBE | MESSAGE | UPDATE | INFO | CANCEL | PUBLISH | 100 Trying | 180 Ringing | 183 Session Progress | 182 Queued
200 OK | 202 Accepted | 401 Unauthorized | 403 Forbidden | 404 Not Found | 407 Proxy Authentication Required
408 Request Timeout | 480 Temporarily Unavailable | 481 Call/Transaction Does Not Exist | 483 Too Many Hops
486 Busy Here | 487 Request Terminated | 488 Not Acceptable Here | 491 Request Pending | 493 Undecipherable
500 Server Internal Error | 501 Not Implemented | 504 Gateway Time-out | 505 Version Not Supported
513 Message Too Large | 600 Busy Everywhere | 603 Decline | 604 Does Not Exist Anywhere
181 Call Is Being Forwarded | 400 Bad Request | 503 Service Unavailable | 423 Interval Too Brief
422 Session Interval Too Small | 405 Method Not Allowed)";
constexpr int first_status = 16;

TEST(Tables, texts_stand_at_their_identifiers) {
    std::vector<std::string> texts;
    for (int id = 0; id < SIP_CODE_METHOD_COUNT; ++id) {
        EXPECT_EQ(decode_methods[id].id, id);
        texts.emplace_back(decode_methods[id].text);
    }
    EXPECT_EQ(lines(texts), lines(entries(all_texts)));
}

TEST(Tables, codecs) {
    std::vector<std::string> texts;
    for (const SIP_CODEC_TEXT &row : code_methods)
        texts.emplace_back(row.text);
    EXPECT_EQ(lines(texts),
              lines(entries(" | G711_A | G711_U | G729 | G723 | 101 | GSM | G726-32 | 97 | SPEEX | ILBC | DVI4")));
}

// Where each member of the record begins: the binary interface, with 64-bit pointers.
const char *const layout =
    R"(xml_buf 0 | method 4096 | via_count 4100 | callid 4104 | korvadex 4232 | korvadex_trunk 4360
max_forward 4488 | user_phone 4492 | via 4496 | via1 4656 | expire 4816 | xml 4824 | uri 4840 | cseq 4936 | from 4944
to 5176 | contact 5408 | sdp 5472 | content 6816 | info 6884 | authen 6920 | author 7288 | refer_to 7784 | alert 8548
supported 8680 | require 8780 | rseq 8848 | rack 8856 | history_info 8868 | requst_uri 9204 | p_passerted_identity 9396
callparty 9588 | msg_sdp 9820 | event 12824 | record_route 12892 | date 13024 | trans_type 13060 | user_agent 13064
service_route 13136 | replaces 13396 | referred_by 13656 | subscription_state 13724 | session_expires 13792
min_se 13808 | min_expires 13816 | p_early_media 13824 | message_summary 13860 | call_info 13948)";

TEST(Tables, layout_of_the_record) {
    std::vector<std::string> members;
    for (const sipcode::Member &member : sipcode::code_record().members)
        members.push_back(std::string(member.name) + " " + std::to_string(member.offset));
    EXPECT_EQ(lines(members), lines(entries(layout)));
    EXPECT_EQ(sizeof(SIP_CODE_MSG), 14080);
}

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
        for (const char *behind : {"X", "\x21", "\x7F", "\x80", "\xFF"})
            EXPECT_EQ(method(word + behind), 0) << word << behind;
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
    const std::pair<std::string, int> rows[] = {{"302 Moved", 0}, {"abc", 0},  {"-UN", 0},  {"sip", 1}, {"REG", 2},
                                                {"inv", 5},       {"Sub", 10}, {"PUB", 15}, {"", -1}};
    for (const auto &[text, id] : rows)
        EXPECT_EQ(status(text), id) << text;
    EXPECT_EQ(SIP_Decode_Parse_Method_Response(nullptr), -1);
}

TEST(Recognise, stand_in_for_other_statuses) {
    const std::pair<std::string, int> rows[] = {{"399", 0}, {"400", 27}, {"699", 27}, {"700", 0}, {"4999", 27},
                                                {"6 9", 0}, {"+50", 0},  {"-40", 0},  {"abc", 0}, {"69", 0},
                                                {"4", 0},   {"", 0},     {" 48", 0},  {"5x0", 0}};
    for (const auto &[text, id] : rows)
        EXPECT_EQ(stand_in(text), id) << text;
    EXPECT_EQ(SIP_Decode_Parse_Other_Response(nullptr), 0);
}

} // namespace
