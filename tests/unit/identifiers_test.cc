// Tags, branches, Call-IDs and dates, at times that the tests choose; and the append primitive.
#include <cstdlib>
#include <filesystem>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "support/clock.h"
#include "support/decoding.h"
#include "support/guarded.h"

#include <sipcode/encode.h>

// A locale in which nothing is named as on the wire.
extern "C" std::size_t strftime(char *text, std::size_t, const char *, const std::tm *) noexcept {
    *text = '\0';
    return 0;
}

namespace {

using namespace support;

// What a generator writes into the room that it asks for.
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

// The library as it was just loaded: a copy of it with counters of its own, and what these should be.
class FreshLibrary {
  public:
    FreshLibrary() {
        Dl_info loaded{};
        dladdr(dlsym(RTLD_DEFAULT, "Build_Via_Branch"), &loaded);
        const auto copy = std::filesystem::temp_directory_path() / ("sipcode-" + std::to_string(getpid()) + ".so");
        std::filesystem::copy_file(loaded.dli_fname, copy, std::filesystem::copy_options::overwrite_existing);
        library_ = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
        std::filesystem::remove(copy);
        build_branch_ = reinterpret_cast<void (*)(char *)>(dlsym(library_, "Build_Via_Branch"));
        build_call_id_ = reinterpret_cast<void (*)(char *, char *)>(dlsym(library_, "Bulid_Call_id"));
    }
    FreshLibrary(const FreshLibrary &) = delete;
    FreshLibrary &operator=(const FreshLibrary &) = delete;
    ~FreshLibrary() { dlclose(library_); }

    std::string branch() const { return generated(SIP_BRANCH_SIZE, build_branch_); }
    std::string call_id(std::string host) const {
        return generated(SIP_CALL_ID_SIZE, [&](char *out) { build_call_id_(out, host.data()); });
    }

    // The next random value, as the library should draw it at this time.
    int random_value() {
        const unsigned seq = 200277 + static_cast<unsigned>(drawn_++ % (499999 - 200277));
        std::srand((static_cast<unsigned>(std::time(nullptr)) + seq + static_cast<unsigned>(getpid())) ^ 0xAAAAAAAA);
        return static_cast<int>(static_cast<unsigned>(std::rand()) + seq + 1);
    }
    void take_back_value() { --drawn_; }

    std::string expected_branch(const std::string &time_digits) {
        count_ = count_ == 65536 ? 0 : count_ + 1;
        return "z9hG4bK" + std::to_string(random_value()) + repeat(3, std::to_string(count_)) + time_digits;
    }

    // Draws branches or Call-IDs, unseen, until the next value is about the nth since the library was loaded.
    void draw_up_to(int nth, bool branches) {
        char text[SIP_CALL_ID_SIZE];
        std::string host = "h";
        for (const int drawn = branches ? 1 : 4; drawn_ + drawn < nth; drawn_ += drawn) {
            branches ? build_branch_(text) : build_call_id_(text, host.data());
            count_ += branches;
        }
    }

  private:
    void *library_;
    void (*build_branch_)(char *);
    void (*build_call_id_)(char *, char *);
    int drawn_ = 0;
    long count_ = 1;
};

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

TEST(Branch, is_made_of_a_random_value_a_counter_and_the_local_time) {
    Clock clock(third_of_march);
    FreshLibrary library;
    set_time_zone("UTC");
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(library.branch(), library.expected_branch("20260303090507"));
    set_time_zone("XYZ-15"); // fifteen hours ahead
    EXPECT_EQ(library.branch(), library.expected_branch("20260304000507"));

    library.draw_up_to(65534, true);
    EXPECT_EQ(library.branch(), library.expected_branch("20260304000507")); // 65535
    for (std::time_t now = third_of_march; library.random_value() >= 0; library.take_back_value())
        clock.set(++now); // to a time at which the random value has eleven characters
    library.take_back_value();
    const std::string longest = library.branch(); // 65536
    const std::string time_digits = longest.substr(longest.size() - 14);
    EXPECT_EQ(longest, library.expected_branch(time_digits));
    EXPECT_EQ(longest.size() + 1, SIP_BRANCH_SIZE);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(library.branch(), library.expected_branch(time_digits)); // 0, 1, 2
}

TEST(CallId, is_four_random_values_and_the_host) {
    const Clock clock(third_of_march);
    FreshLibrary library;
    const auto expect_call_id = [&library](const std::string &host) {
        char digits[33];
        for (int i = 0; i < 4; ++i)
            std::snprintf(digits + 8 * i, 9, "%08x", static_cast<unsigned>(library.random_value()));
        EXPECT_EQ(library.call_id(host), (digits + ("@" + host)).substr(0, 98));
    };
    for (const std::size_t length : {0U, 9U, 64U, 65U, 66U, 90U, 4000U})
        expect_call_id(letters(length));
    library.draw_up_to(499999 - 200277 - 2, false); // before the random counter wraps
    for (int i = 0; i < 4; ++i)
        expect_call_id("h");
}

TEST(Date, is_that_of_utc_in_english) {
    const struct {
        std::time_t now;
        std::string date;
    } rows[] = {
        {0, "Thu, 01 Jan 1970 00:00:00 GMT"},           {951782400, "Tue, 29 Feb 2000 00:00:00 GMT"},
        {1771200001, "Mon, 16 Feb 2026 00:00:01 GMT"},  {1773360000, "Fri, 13 Mar 2026 00:00:00 GMT"},
        {1776000059, "Sun, 12 Apr 2026 13:20:59 GMT"},  {1779000000, "Sun, 17 May 2026 06:40:00 GMT"},
        {1781000000, "Tue, 09 Jun 2026 10:13:20 GMT"},  {1784592000, "Tue, 21 Jul 2026 00:00:00 GMT"},
        {1787000000, "Mon, 17 Aug 2026 20:53:20 GMT"},  {1790000000, "Mon, 21 Sep 2026 14:13:20 GMT"},
        {1792500000, "Tue, 20 Oct 2026 12:40:00 GMT"},  {1795254243, "Sat, 21 Nov 2026 09:44:03 GMT"},
        {1794995043, "Wed, 18 Nov 2026 09:44:03 GMT"},  {1798761599, "Thu, 31 Dec 2026 23:59:59 GMT"},
        {1798758000, "Thu, 31 Dec 2026 23:00:00 GMT"},  {1798718340, "Thu, 31 Dec 2026 11:59:00 GMT"},
        {-2, "Wed, 31 Dec 1969 23:59:58 GMT"},          {-2203891201, "Wed, 28 Feb 1900 23:59:59 GMT"},
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
