// Responses: whole messages, what single members change in them, and what becomes of the record.
#include <gtest/gtest.h>

#include "support/clock.h"
#include "support/decoding.h"
#include "support/encoding.h"

namespace {

using namespace support;

constexpr std::time_t november = 1795081443; // Thursday, 19 November 2026, 09:44:03 UTC

TEST(Response, is_written_as_a_whole) {
    const Clock clock(november);
    for (const auto &[title, members, expected] : encoded_cases(".response"))
        EXPECT_EQ(wire(expected), encode_response(record_of(members)).text) << title;
}

TEST(ResponseLines, change_with_members_and_what_is_answered) {
    const Clock clock(november);
    expect_line_changes("response", [](const SIP_CODE_MSG &record) { return encode_response(record).text; });
}

// ---------------------------------------------------------------------------------------------------------------------
// Both encoders

TEST(Encoders, change_the_record_in_few_places) {
    const struct {
        std::string members;
        std::string by_request;
        std::string by_response;
    } rows[] = {
        {"callid=ims-a@b", "callid=a@b", "callid=a@b"},
        {"callid=ims-", "callid=", "callid="},
        {"callid=IMS-a", "", ""},
        {"via_count=2", "", "via1 addr=:5060"},
        {"to.tag_use=1", "", "to tag_use=0"},
        {"to.tag_use=1 | to.tag=t", "", ""},
    };
    for (const auto &[members, by_request, by_response] : rows) {
        const SIP_CODE_MSG record = record_of("method=INVITE | " + members);
        EXPECT_EQ(changes(members_of(record), members_of(encode_request(record).record)), by_request) << members;
        EXPECT_EQ(changes(members_of(record), members_of(encode_response(record).record)), by_response) << members;
    }
}

TEST(Encoders, refuse_methods_outside_the_table) {
    for (const std::string method : {"0", "49", "-2147483648"})
        for (auto *const encode : {encode_request, encode_response}) {
            const SIP_CODE_MSG record = record_of("callid=ims-a | via_count=2 | to.tag_use=1 | method=" + method);
            testing::internal::CaptureStdout();
            const Encoded encoded = encode(record);
            EXPECT_EQ(testing::internal::GetCapturedStdout(),
                      "Encode Method : method = " + method + " is not belong to us defined\n");
            EXPECT_EQ(encoded.result, -1);
            EXPECT_EQ(encoded.text, "(untouched)");
            EXPECT_EQ(changes(members_of(record), members_of(encoded.record)), "callid=a");
        }
}

} // namespace
