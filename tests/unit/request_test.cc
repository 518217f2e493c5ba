// Requests: whole messages, and what single members and methods change in them.
#include <gtest/gtest.h>

#include "support/clock.h"
#include "support/encoding.h"
#include "support/recording_host.h"

namespace {

using namespace support;

TEST(Request, is_written_as_a_whole) {
    const Clock clock(1795081443); // Thursday, 19 November 2026, 09:44:03 UTC
    for (const auto &[title, members, expected] : encoded_cases(".request"))
        EXPECT_EQ(wire(expected), encode_request(record_of(members)).text) << title;
}

TEST(RequestLines, change_with_members_and_methods) {
    expect_line_changes("request", [](const SIP_CODE_MSG &record) { return encode_request(record).text; });
}

// The host decides how event packages compare.
TEST(RequestLines, follow_the_comparison_of_the_host) {
    const SIP_CODE_MSG record = record_of("method=SUBSCRIBE | event.content=REG");
    EXPECT_EQ(encode_request(record).text.find("Accept"), std::string::npos);
    host().folds_case = true;
    EXPECT_NE(encode_request(record).text.find("Accept: application/reginfo+xml"), std::string::npos);
    host().folds_case = false;
}

// Small numbers take another path than large ones.
TEST(RequestLines, hold_numbers_of_every_length) {
    for (const std::string number : {"1", "9", "10", "99", "101", "999", "1000", "1009", "9999", "10203", "99999",
                                     "100000", "2147483647", "-1", "-99999", "-2147483648"}) {
        const SIP_CODE_MSG record = record_of("method=INVITE | cseq.seq=" + number + " | cseq.method=INVITE");
        EXPECT_NE(encode_request(record).text.find("\r\nCSeq: " + number + " INVITE\r\n"), std::string::npos) << number;
    }
}

} // namespace
