// Tags, branches, Call-IDs and dates, at times that the tests choose; and the append primitive.
#include <cstdlib>
#include <regex>

#include <gtest/gtest.h>

#include "support/clock.h"
#include "support/decoding.h"
#include "support/guarded.h"

#include <sipcode/encode.h>

// Stands in for a locale that names no day or month as the wire does.
extern "C" std::size_t strftime(char *text, std::size_t, const char *, const std::tm *) noexcept {
    *text = '\0';
    return 0;
}

namespace {

using namespace support;

// What a generator writes into a buffer of the size that it states.
template <typename Generate>
std::string generated(std::size_t room, Generate generate) {
    const Guarded output(room, stale);
    generate(output.data());
    return output.data();
}

void set_time_zone(const char *name) {
    setenv("TZ", name, 1);
    tzset();
}

TEST(Tag, is_the_next_random_value_in_eight_digits) {
    for (const unsigned seed : {1U, 2U, 3U, 327U, 4711U}) {
        srandom(seed);
        char expected[9];
        std::snprintf(expected, sizeof expected, "%08lx", random());
        srandom(seed);
        EXPECT_EQ(generated(SIP_TAG_SIZE, Build_Tag), expected);
    }
}

constexpr std::time_t third_of_march = 1772528707; // Tuesday, 3 March 2026, 09:05:07 UTC

std::string branch() {
    char text[SIP_BRANCH_SIZE];
    Build_Via_Branch(text);
    return text;
}
std::string call_id(std::string host) {
    char text[SIP_CALL_ID_SIZE];
    Bulid_Call_id(text, host.data());
    return text;
}

TEST(Branch, is_made_of_a_random_value_a_counter_three_times_and_the_local_time) {
    const Clock clock(third_of_march);
    set_time_zone("XYZ-15"); // fifteen hours ahead
    const std::string time = "20260304000507";
    const auto ends_in = [&time](std::string_view text, long count) {
        return text.ends_with(repeat(3, std::to_string(count)) + time);
    };
    std::string last;
    for (int draws = 0; draws < 70000 && !ends_in(last, 65536); ++draws)
        last = branch();
    for (const long count : {0, 1, 2}) {
        last = branch();
        EXPECT_TRUE(std::regex_match(last, std::regex("z9hG4bK-?[0-9]+"))) << last;
        EXPECT_TRUE(ends_in(last, count)) << last << " follows 65536";
    }
    EXPECT_GE(SIP_BRANCH_SIZE, std::string("z9hG4bK-2147483648" + repeat(3, "65536") + time).size() + 1);
}

TEST(CallId, is_four_random_values_and_the_host) {
    const Clock clock(third_of_march);
    for (const std::size_t length : {0U, 9U, 65U, 66U, 4000U}) {
        const std::string id = call_id(letters(length));
        EXPECT_TRUE(std::regex_match(id, std::regex("[0-9a-f]{32}@[a-z]*"))) << id;
        EXPECT_EQ(id.substr(32), ("@" + letters(length)).substr(0, 66));
    }
    // The random values come again when their counter has gone round twice, with four for each Call-ID.
    constexpr int values = 499999 - 200277;
    const std::string first = call_id("h");
    int different = 0;
    for (int i = 1; i < values / 2; ++i)
        different += call_id("h") != first;
    EXPECT_EQ(different, values / 2 - 1);
    EXPECT_EQ(call_id("h"), first);
}

TEST(Date, is_that_of_utc_in_english) {
    const struct {
        std::time_t now;
        std::string date;
    } rows[] = {
        {0, "Thu, 01 Jan 1970 00:00:00 GMT"},           {951782400, "Tue, 29 Feb 2000 00:00:00 GMT"},
        {1771200001, "Mon, 16 Feb 2026 00:00:01 GMT"},  {1779000000, "Sun, 17 May 2026 06:40:00 GMT"},
        {1781000000, "Tue, 09 Jun 2026 10:13:20 GMT"},  {1784592000, "Tue, 21 Jul 2026 00:00:00 GMT"},
        {1787000400, "Mon, 17 Aug 2026 21:00:00 GMT"},  {1790000000, "Mon, 21 Sep 2026 14:13:20 GMT"},
        {1792500000, "Tue, 20 Oct 2026 12:40:00 GMT"},  {1795254243, "Sat, 21 Nov 2026 09:44:03 GMT"},
        {1798761599, "Thu, 31 Dec 2026 23:59:59 GMT"},  {1798718340, "Thu, 31 Dec 2026 11:59:00 GMT"},
        {-2203891200, "Thu, 01 Mar 1900 00:00:00 GMT"}, {253402300800, "Sat, 01 Jan 10000 00:00:00 GMT"},
    };
    for (const char *const zone : {"UTC", "XYZ-15", "XYZ+11"})
        for (const auto &[now, date] : rows) {
            const Clock clock(now);
            set_time_zone(zone);
            EXPECT_EQ(generated(SIP_DATE_SIZE, Build_Date), date) << zone;
        }
}

TEST(MsgSprintf, appends_at_the_cursor) {
    const Guarded output(18, stale);
    char *cursor = output.data();
    MSG_Sprintf(&cursor, "v=0\r\n");
    MSG_Sprintf(&cursor, "s=%d%s\r\n", 1, "");
    MSG_Sprintf(&cursor, "%s", "");
    EXPECT_EQ(cursor - output.data(), 10);
    MSG_Sprintf(&cursor, "%ls", L"\x110000"); // no character of any encoding: the format fails
    EXPECT_EQ(cursor - output.data(), 10);
    MSG_Sprintf(&cursor, "%5s|%c", "b", 'c');
    EXPECT_STREQ(output.data(), "v=0\r\ns=1\r\n    b|c");
    EXPECT_EQ(cursor, output.data() + 17);
}

} // namespace
