// Session descriptions as they are read: connection, media lines, codecs, sections, T.38.
#include <gtest/gtest.h>

#include "support/cases.h"

namespace {

using namespace support;

std::string invite(const std::string &content_type) {
    return "INVITE sip:h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\nVia: SIP/2.0/UDP h;branch=b\r\nFrom: sip:f\r\n"
           "To: sip:t\r\n" +
           content_type + "\r\n\r\n";
}

// What differs in sdp: "a_use=1 a_coders=2,1 a_addr=h:4000 rtpmap=10:97".
std::string shown(const Members &before, const Members &after) {
    std::string list;
    std::string last;
    for (std::size_t i = 0; i < after.size(); ++i) {
        const auto &[path, value] = after[i];
        if (!path.starts_with("sdp.") || value == before[i].second)
            continue;
        const bool is_second = path.ends_with(".port") || path.ends_with(".a_payload");
        const std::string name = path.substr(4, path.find_first_of("[", 4) - 4);
        const std::string member = name.ends_with(".ip") ? name.substr(0, name.size() - 3) : name;
        if (is_second)
            list += ":" + value.value_or("?");
        else if (member == last)
            list += "," + value.value_or("?");
        else
            list += (list.empty() ? "" : " ") + member + (value ? "=" + *value : " untouched");
        last = member.substr(0, member.find(".port"));
    }
    return list;
}

class Offer : public testing::TestWithParam<FramedCase> {};

TEST_P(Offer, is_read) {
    const FramedCase &row = GetParam();
    const std::string text = row.frame->text(row.text);
    const Decoded decoded = decode(text);
    EXPECT_EQ(row.changes, shown(row.frame->base(), decoded.members)) << text;
    EXPECT_EQ(lines(entries(row.log)), lines(decoded.log)) << text;
    EXPECT_EQ(decode(text, zero)["xml_buf"], lines({text.substr(text.find("\r\n\r\n") + 4)})) << "kept whole";
    expect_whole_members(text);
}

const std::string type = "Content-Type: application/sdp";
const std::string undecided = "a_media untouched"; // what a description that is given up does not store

// A media line that ends the body has no section.
const Frame anything{invite(type), "", "c=IN IP4 h"};
const Case connections[] = {
    {"= without a letter", "=sendonly\nc=IN IP4 h\n=", ""},
    {"an empty line, then another", "c= \nC=IN IP4 h\nm=audio 1", "a_use=1 a_addr=h:1"},
    {"IPv6", "c=IN IP6 ::1\nc=IN IP4 h\nm=audio 1", undecided, "0 Invalid host in c= line, 'IN IP6 ::1'"},
    {"white space", "c= IN\t \tIP4h x\nm=audio 1", "a_use=1 a_addr=h:1"},
    {"two", "c=IN IP4 i\nc=IN IP4 h\nm=audio 1", "a_use=1 a_addr=i:1"},
};
INSTANTIATE_TEST_SUITE_P(Connection, Offer, in_frame(anything, connections), Title());

const std::string two_ports =
    "0 SDP offered 2 ports for media, not supported by Korvadex softswitch. Will try anyway...";
const std::string unsupported = "0 Unsupported SDP media type in offer: ";

const Frame with_connection{invite(type) + "c=IN IP4 h\r\n", "", ""};
const Case media[] = {
    {"audio", "m=audio 4000 RTP/AVP 0 8 18 101", "a_use=1 a_coders=2,1,3 a_addr=h:4000"},
    {"other static payloads", "m=audio 1 RTP/AVP 4 3 2 9 5 6", "a_use=1 a_coders=4,6,7,8,11,11 a_addr=h:1"},
    {"unknown payloads", "m=audio 1 RTP/AVP 1 7 19 -8 " + std::string(30, '9') + " 97 8",
     "a_use=1 a_coders=1 a_addr=h:1"},
    {"nine codecs and no number", "a=rtpmap:97 ilbc/8000\nm=audio 1 RTP/AVP 8 8 8 8 8 8 8 8 8 x",
     "a_use=1 a_coders=1,1,1,1,1,1,1,1 a_addr=h:1 rtpmap=10:97"},
    {"no number ends the reading", "a=rtpmap:97 ilbc/8000\na=sendonly\nm=audio 1 RTP/AVP 0 x 8\nm=video 2 RTP/AVP 1",
     "a_use=1 a_coders=2 a_addr=h:1 a_media untouched", "1 Error in codec string 'x 8'"},
    {"port of 30 digits", "m=audio " + std::string(30, '9') + " RTP/AVP 0", "a_use=1 a_coders=2 a_addr=h:-1"},
    {"secure profile", "m=audio 1 RTP/SAVP 0", "a_use=1 a_coders=2 a_addr=h:1"},
    {"no blank behind the profile", "m=audio 1 RTP/AVP8 0", "a_use=1 a_coders=1,2 a_addr=h:1"},
    {"comma behind the profile", "m=audio 1 RTP/AVP,0", "a_use=1 a_addr=h:1 a_media untouched",
     "1 Error in codec string ',0'"},
    {"profile that goes on", "m=audio 1 RTP/AVPF,x 0\nm=audio 1 RTP/AVP/TCP 8",
     "a_use=1 a_coders=2,1 a_content=a=sendrecv\\r\\n a_addr=h:1"},
    {"no profile", "m=audio 1 0 8", "a_use=1 a_addr=h:1"},
    {"two ports", "m=audio 4000/2 RTP/AVP 0\nm=x\nm=video 1 RTP/AVP",
     "a_use=1 v_use=1 a_coders=2 a_content=a=sendrecv\\r\\n a_addr=h:4000 v_addr=h:1",
     two_ports + "\n" + unsupported + "x\n" + two_ports + "\n" + two_ports},
    {"second audio line", "a=rtpmap:97 ilbc/8000\nm=audio 1 RTP/AVP 0\nm=audio 2 RTP/AVP 8",
     "a_use=1 a_coders=2,1,10 a_content=a=sendrecv\\r\\n a_addr=h:2 rtpmap=10:97"},
    {"other media", "m=application 9 UDP/BFCP *\nm=AUDIO 1\nm=audi 1\nm= \nm=audio 1", "a_use=1 a_addr=h:1",
     unsupported + "application 9 UDP/BFCP *\n" + unsupported + "AUDIO 1\n" + unsupported + "audi 1"},

    {"dynamic codecs",
     "A=rtpmap:97 iLBC/8000\na=rtpmap: 98\tSPEEX/8000 x\na=rtpmap:101telephone-EVENT/8000\nm=audio 1 RTP/AVP 97 0",
     "a_use=1 a_coders=2,10,9,5 a_addr=h:1 rtpmap=10:97,9:98,5:101"},
    {"codecs that are none",
     "a=rtpmap:1 speex/16000\na=rtpmap:2 speex/8000/1\na=rtpmap:3 speex\na=RTPMAP:4 speex/8000\na=rtpmap:x speex/8000\n"
     "a=rtpmap:5\nb=rtpmap:6 speex/8000\na=rtpmap:7 " +
         letters(300) + "\nm=audio 1",
     "a_use=1 a_addr=h:1"},
    {"codec behind one that is none", "a=x\na=rtpmap:1 speex/16000\na=rtpmap:2 speex/8000\nm=audio 1",
     "a_use=1 a_coders=9 a_addr=h:1 rtpmap=9:2"},
    {"more dynamic codecs than slots",
     repeat(3, "a=rtpmap:97 ilbc/8000\n") + repeat(7, "a=rtpmap:98 speex/8000\n") + "m=audio 1 RTP/AVP 0 8",
     "a_use=1 a_coders=2,1,10,10,10,9,9,9 a_addr=h:1 rtpmap=10:97,10:97,10:97,9:98"},

    {"video", "m=video 4002 RTP/AVPF 99 0 -1 34 x", "v_use=1 v_coders=99,0,-1,34 v_addr=h:4002"},
    {"no number in video", "m=video 1 RTP/AVP 99 x", "v_use=1 v_coders=99 v_addr=h:1 a_media untouched",
     "0 Error in codec string 'x'"},

    {"fax",
     "m=image 5000 udptl t38\na=T38FaxVersion:0\na=T38MaxBitRate: 14400\na=T38FaxFillBitRemoval:1x\n"
     "a=T38FaxTranscodingMMR:-2\n"
     "a=T38FaxTranscodingJBIG:3\na=T38FaxRateManagement:transferredTCF\na=T38FaxMaxBuffer:200\n"
     "a=T38FaxMaxDatagram:72\nA=T38FaxUdpEC: t38 x",
     "fax_use=1 fax.udptlport=5000 fax.T38FaxMaxBuffer=200 fax.T38MaxBitRate=14400 fax.T38FaxVersion=0 "
     "fax.T38FaxMaxDatagram=72 "
     "fax.T38FaxFillBitRemoval=1 fax.T38FaxTranscodingMMR=-2 fax.T38FaxTranscodingJBIG=3 "
     "fax.T38FaxRateManagement=transferredTCF "
     "fax.T38FaxUdpEC=t38 fax.fax_addr=h:5000"},
    {"fax attributes without a value",
     "a=T38FaxFillBitRemoval\na=T38FaxTranscodingMMR:\na=T38FaxTranscodingJBIG:x\na=T38FaxUdpEC:\n"
     "a=T38FaxRateManagement: \n"
     "a=t38faxversion:1\na=T38FaxVersion :1\na=xT38FaxVersion:1\nm=image 1",
     "fax_use=1 fax.udptlport=1 fax.fax_addr=h:1"},
    {"other media in place of a fax", "a=T38FaxVersion:1\nm=5 udptl t38\nm=image x udptl t38", "",
     unsupported + "5 udptl t38\n" + unsupported + "image x udptl t38"},
    {"fax of a negative port", "a=T38FaxVersion:1\nm=image -1 x", "fax_use=1 fax.udptlport=-1 fax.fax_addr=h:-1"},
    {"silence suppression", "m=image 1 udptl t38\nx a=SilcenceSupp:off", "fax_use=2 fax.udptlport=1 fax.fax_addr=h:1"},

    {"silence suppression of the standard", "a=silenceSupp:off\na=silcenceSupp:off", ""},
    {"packet time of three digits", "x a=ptime:160", "a_ptime=16"},
    {"packet time of one digit", "a=ptime:5\na=ptime:20", "a_ptime=5"},
    {"receive only", "x a=recvonlyx", "a_media=2"},
    {"send only leads receive only", "a=recvonly\na=inactive\na=sendonly", "a_media=1"},

    {"sections", "a=sendonly\nm=audio 1\na=x\nm=video 2\na=y",
     "a_use=1 v_use=1 a_content=a=x\\r\\na=sendonly\\r\\n v_content=a=y a_addr=h:1 v_addr=h:2 a_media=1"},
    {"section that is inactive", "a=inactive\nm=audio 1\n", "a_use=1 a_content=a=inactive\\r\\n a_addr=h:1 a_media=3"},
    {"section up to any m", "m=audio 1\na=itm=1\na=y", "a_use=1 a_content=a=ita=sendrecv\\r\\n a_addr=h:1"},
    {"marks on the media line", "m=audio 1 m=a=sendonly\na=x\nm=video 2",
     "a_use=1 v_use=1 a_content=a=x\\r\\na=sendonly\\r\\n a_addr=h:1 v_addr=h:2 a_media=1"},
    {"section of no media line", "x m=audio\n\nm=VIDEO 1", "a_content=\\r\\na=sendrecv\\r\\n", unsupported + "VIDEO 1"},
    {"video with a connection", "m=video 1\nc=IN IP4 " + letters(30) + "\na=y",
     "v_use=1 v_content=c=IN IP4 " + letters(30) + "\\r\\na=y v_addr=" + letters(23) + ":1"},
};
INSTANTIATE_TEST_SUITE_P(Media, Offer, in_frame(with_connection, media), Title());

const Frame line_feeds{invite(type) + "c=IN IP4 h\n", "", "", stale, true};
const Case of_line_feeds[] = {
    {"section behind CR LF", "m=audio 1\na=x\r\na=y", "a_use=1 a_content=a=ya=sendrecv\\r\\n a_addr=h:1"},
};
INSTANTIATE_TEST_SUITE_P(LineFeeds, Offer, in_frame(line_feeds, of_line_feeds), Title());

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
