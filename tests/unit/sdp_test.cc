// Sections of session descriptions, and the content type that makes a body one.
#include <gtest/gtest.h>

#include "support/decoding.h"

namespace {

using namespace support;

std::string invite(const std::string &content_type) {
    return "INVITE sip:h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\nVia: SIP/2.0/UDP h;branch=b\r\nFrom: sip:f\r\n"
           "To: sip:t\r\n" +
           content_type + "\r\n\r\n";
}

const std::string type = "Content-Type: application/sdp";
// Whole lines are kept, and there is room for a direction.
TEST(SdpSection, is_cut_between_lines) {
    const std::string sendrecv = "a=sendrecv\r\n";
    const auto line = [](std::size_t size) { return "b=" + letters(size - 4) + "\r\n"; };
    const struct {
        std::string section;
        std::string audio;
        std::string video;
    } rows[] = {
        {line(499), line(499) + sendrecv, line(499)},
        {line(500), sendrecv, line(500)},
        {sendrecv + line(499), sendrecv + line(499), sendrecv + line(499)},
        {sendrecv + line(487) + line(13), sendrecv + line(487), sendrecv + line(487)},
        {sendrecv + line(488) + line(12), sendrecv, sendrecv},
        {line(488) + line(12) + sendrecv, line(488) + sendrecv, line(488)},
        {line(100) + line(411), line(100) + sendrecv, line(100) + line(411)},
        {line(100) + line(412), line(100) + sendrecv, line(100)},
        {letters(511), sendrecv, letters(511)},
    };
    for (const auto &[section, audio, video] : rows) {
        const std::string body = invite(type) + "c=IN IP4 h\r\nm=";
        const std::string end = "m=x";
        EXPECT_EQ(decode(body + "audio 1\r\n" + section + end)["sdp.a_content"], lines({audio})) << section;
        EXPECT_EQ(decode(body + "video 1\r\n" + section + end)["sdp.v_content"], lines({video})) << section;
    }
}

TEST(SdpSection, of_video_is_printed) {
    testing::internal::CaptureStdout();
    decode(invite(type) + "c=IN IP4 h\r\nm=audio 1\r\na=x\r\n");
    decode(invite(type) + "c=IN IP4 h\r\nm=video 1\r\na=%n\r\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "sdp video content=\na=%n\r\n\n");
}

TEST(Sdp, belongs_to_its_content_type) {
    const auto is_read = [](const std::string &header) {
        return decode(invite(header) + "c=IN IP4 h\r\nm=audio 1 RTP/AVP 0", zero)["sdp.a_use"] == "1";
    };
    for (const std::string header : {"C:APPLICATION/SDP", "content-type: application/sdpx;a=b"})
        EXPECT_TRUE(is_read(header)) << header;
    for (const std::string header : {"c: text/plain", "c: application/sd", "c: multipart/mixed;application/sdp",
                                     "Content-Type:\r\nc: application/sdp", "Content-Length: 1"})
        EXPECT_FALSE(is_read(header)) << header;
}

} // namespace
