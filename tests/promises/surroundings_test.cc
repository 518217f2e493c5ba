// The surroundings of a call: whatever the host's locale, the bytes are the same; errno stays; nothing grows.
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <fstream>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "workload.h"

namespace promises {
namespace {

Buffers room;

TEST(Promises, errno_is_left_alone) {
    const Silence silence;
    tzset(); // the time zone's file belongs to the C library
    for (const std::string &message : messages()) {
        errno = 4711;
        decode(message, room);
        encode(room);
        scan_and_build(message, room);
        build_identifiers(room);
        ASSERT_EQ(errno, 4711) << message;
    }
}

TEST(Promises, no_locale_reaches_the_bytes) {
    const Silence silence;
    setenv("LOCPATH", SIPCODE_LOCALES, 1);
    const std::uint64_t expected = everything(room);
    ASSERT_EQ(everything(room), expected) << "differs from run to run";
    struct Row {
        const char *name;
        const char *point;
        int lower_i;
    };
    // One with a comma in numbers; one where, besides, an i is no lower-case I.
    for (const Row &row : {Row{"de_DE.UTF-8", ",", 'i'}, Row{"tr_TR.ISO-8859-9", ",", 0xFD}}) {
        ASSERT_NE(std::setlocale(LC_ALL, row.name), nullptr) << row.name;
        EXPECT_STREQ(std::localeconv()->decimal_point, row.point);
        EXPECT_EQ(std::tolower('I'), row.lower_i);
        EXPECT_EQ(everything(room), expected) << row.name;
        std::setlocale(LC_ALL, "C");
    }
}

// Pages of the process that are in memory.
long resident_pages() {
    long size = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return resident;
}

// SIPCODE_MESSAGES tells how many; each is decoded and answered.
TEST(Promises, nothing_grows) {
    const char *const wanted = std::getenv("SIPCODE_MESSAGES");
    const long count = wanted == nullptr ? 300000 : std::atol(wanted);
    std::string bye = messages().front();
    for (const std::string &message : messages())
        if (message.starts_with("BYE ") && message.size() < bye.size())
            bye = message;
    ASSERT_TRUE(bye.starts_with("BYE "));

    long before = 0;
    for (long i = 0; i < count; ++i) {
        if (i == count / 100)
            before = resident_pages();
        ASSERT_EQ(SIP_Decode_Buffer(bye.data(), bye.size(), &room.record, nullptr), SIP_DECODE_DONE);
        room.record.method = SIP_RESPONSE_MSG_200_OK;
        ASSERT_GT(SIP_Encode_Response_Buffer(room.text, sizeof room.text, &room.record), 0);
    }
    const long after = resident_pages();
    const long page = sysconf(_SC_PAGESIZE) / 1024;
    std::printf("%ld messages: %ld KiB in memory before, %ld KiB after\n", count, before * page, after * page);
    EXPECT_LE(after, before + 16);
}

} // namespace
} // namespace promises
