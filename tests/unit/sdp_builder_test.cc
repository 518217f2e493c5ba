// Session descriptions as they are written: generated, from content texts, for fax.
#include <gtest/gtest.h>

#include "support/decoding.h"
#include "support/encoding.h"

namespace {

using namespace support;

std::string description(const SIP_CODE_MSG &record) {
    const std::string text = encode_request(record).text;
    return text.substr(text.find("\r\n\r\n") + 4);
}

TEST(Description, is_written) {
    for (const auto &[title, members, expected] : encoded_cases(".sdp"))
        EXPECT_EQ(wire(expected), description(record_of(members))) << title;
}

TEST(Descriptions, change_with_their_members) { expect_line_changes("sdp", description); }

TEST(BuildDefaultSdp, gives_telephone_events_a_payload) {
    const struct {
        std::string members;
        std::string changed;
    } rows[] = {
        {"", ""},
        {"sdp.rtpmap[0].a_coder=TE101", ""},
        {"sdp.a_coders[7]=TE101", "sdp rtpmap[0].a_coder=5 rtpmap[0].a_payload=101"},
        {"sdp.a_coders[0]=TE101 | sdp.rtpmap[0].a_coder=ILBC", "sdp rtpmap[1].a_coder=5 rtpmap[1].a_payload=101"},
        {"sdp.a_coders[0]=TE101 | sdp.rtpmap[2].a_coder=TE101", "sdp rtpmap[2].a_payload=101"},
        {"sdp.a_coders[0]=TE101 | sdp.rtpmap[3].a_coder=TE101 | sdp.rtpmap[3].a_payload=-1", ""},
        {"sdp.a_coders[0]=TE101 | sdp.rtpmap[0].a_coder=77 | sdp.rtpmap[1].a_coder=-1 | sdp.rtpmap[2].a_coder=1 | "
         "sdp.rtpmap[3].a_coder=1",
         ""},
    };
    for (const auto &[members, changed] : rows) {
        const SIP_CODE_MSG before = record_of(members);
        SIP_CODE_MSG after = before;
        BuildDefaultSdp(&after.sdp);
        EXPECT_EQ(changes(members_of(before), members_of(after)), changed) << members;
    }
}

} // namespace
