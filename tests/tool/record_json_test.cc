// The record as JSON and back: nothing is lost, and an error names the place of what does not fit.
#include <climits>
#include <cstring>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "record_json.h"

namespace {

using nlohmann::ordered_json;

// Texts hold any bytes but NUL, so some are not UTF-8. Numbers include the smallest and the largest.
SIP_CODE_MSG random_record(unsigned seed) {
    std::mt19937 random(seed);
    SIP_CODE_MSG record{};
    sipcode::for_each_leaf(record, [&random, seed](const sipcode::Leaf<std::byte> &leaf) {
        if (leaf.member.kind == sipcode::Kind::text) {
            std::string bytes(random() % leaf.member.size, '\0');
            for (char &c : bytes)
                c = static_cast<char>(1 + random() % (seed % 2 == 0 ? 0x7f : 0xff));
            sipcode::store_text(leaf.member, leaf.element, bytes);
        } else if (leaf.member.kind == sipcode::Kind::number) {
            const bool is_long = leaf.member.size == sizeof(long);
            const long numbers[] = {0, 1, -1, is_long ? LONG_MIN : INT_MIN, is_long ? LONG_MAX : INT_MAX};
            sipcode::store_number(leaf.member, leaf.element, numbers[random() % std::size(numbers)]);
        }
    });
    return record;
}

TEST(record_json, keeps_every_member) {
    for (unsigned seed = 0; seed < 50; ++seed) {
        const SIP_CODE_MSG record = random_record(seed);
        rapidjson::StringBuffer json;
        sipcode::JsonWriter out(json);
        out.StartObject();
        sipcode::write_members(out, record, sipcode::Scope::all);
        out.EndObject();
        const SIP_CODE_MSG read = sipcode::record_from_json(ordered_json::parse(json.GetString()));
        ASSERT_EQ(std::memcmp(&read, &record, sizeof read), 0) << "seed " << seed;
    }
}

TEST(record_json, reports_what_does_not_fit) {
    struct {
        const char *json;
        const char *message; // empty: it fits
    } const cases[] = {
        {R"({"via":{"addr":{"ip":"12345678901234567890123"}}})", ""},
        {R"({"via":{"addr":{"ip":"123456789012345678901234"}}})", "via.addr.ip: text of 24 characters, at most 23"},
        {R"({"via":{"addr":{"host":1}}})", "via.addr.host: no such member"},
        {R"({"method":"INVITE"})", "method: expected a number, not string"},
        {R"({"method":5.5})", "method: expected a whole number, not 5.5"},
        {R"({"method":-2147483649})", "method: number -2147483649 is out of range -2147483648 to 2147483647"},
        {R"({"sdp":{"o_sec":9223372036854775808}})",
         "sdp.o_sec: number 9223372036854775808 is out of range -9223372036854775808 to 9223372036854775807"},
        {R"({"sdp":{"a_coders":[1,{}]}})", "sdp.a_coders[1]: expected a number, not object"},
        {R"({"history_info":[{},{},{},{},{}]})", "history_info: 5 elements, at most 4"},
        {R"({"history_info":[{},{"cause":302}]})",
         R"(history_info[1].cause: expected a string or {"latin1": string}, not number)"},
        {R"({"callid":{"latin1":"\u00ff"}})", ""},
        {R"({"callid":{"latin1":"\u0100"}})", "callid: a character above U+00FF in latin1"},
        {R"({"callid":"a\u0000b"})", "callid: a NUL in the text"},
        {R"({"xml":{"xml":null}})", ""},
        {R"({"xml":{"xml":1}})", "xml.xml: expected null, not number"},
    };
    for (const auto &[json, message] : cases) {
        std::string reported;
        try {
            sipcode::record_from_json(ordered_json::parse(json));
        } catch (const sipcode::RecordError &error) {
            reported = error.what();
        }
        EXPECT_EQ(reported, message) << json;
    }
}

} // namespace
