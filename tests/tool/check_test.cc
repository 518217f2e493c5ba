// Compares the findings of sipcode check with the record that Sip_Decode fills.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/core.h>
#include <gtest/gtest.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

#include "decode.h"
#include "message_check.h"
#include "record.h"

namespace {

namespace fs = std::filesystem;

// Hides what the library logs and prints, unless a test fails.
class Check : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        if (spdlog::get("sipcode") == nullptr)
            spdlog::register_logger(
                std::make_shared<spdlog::logger>("sipcode", std::make_shared<spdlog::sinks::null_sink_st>()));
    }
    void SetUp() override { testing::internal::CaptureStdout(); }
    void TearDown() override {
        const std::string printed = testing::internal::GetCapturedStdout();
        if (HasFailure())
            std::cout << printed;
    }
};

struct Sample {
    std::string name;
    std::string text;
};

const std::vector<Sample> &samples() {
    static const std::vector<Sample> all = [] {
        std::vector<Sample> found;
        for (const char *directory : {SIPCODE_EXAMPLES, SIPCODE_TEST_DATA "/messages"}) {
            for (const fs::directory_entry &entry : fs::directory_iterator(directory)) {
                std::ifstream file(entry.path(), std::ios::binary);
                found.push_back({entry.path().stem(), {std::istreambuf_iterator<char>(file), {}}});
            }
        }
        return found;
    }();
    return all;
}

struct Decoded {
    explicit Decoded(std::string text) : record(std::make_unique<SIP_CODE_MSG>()) {
        result = Sip_Decode(text.data(), record.get());
    }
    bool operator==(const Decoded &other) const {
        return result == other.result && std::memcmp(record.get(), other.record.get(), sizeof *record) == 0;
    }

    std::unique_ptr<SIP_CODE_MSG> record;
    int result;
};

bool has(const std::vector<Finding> &findings, Loss loss) {
    return std::any_of(findings.begin(), findings.end(), [loss](const Finding &found) { return found.loss == loss; });
}

std::string without_line(std::string text, const Range &line) {
    const std::size_t end = text.find('\n', line.end);
    return text.erase(line.begin, end == std::string::npos ? end : end + 1 - line.begin);
}

// ---------------------------------------------------------------------------------------------------------------------

// A message cut at any place is refused exactly if the library refuses it. Without an ignored line the record is the
// same.
TEST_F(Check, SamplesCutAnywhere) {
    ASSERT_GT(samples().size(), 10U);
    for (const Sample &sample : samples()) {
        for (std::size_t size = 0; size <= sample.text.size(); ++size) {
            SCOPED_TRACE(fmt::format("{}, {} bytes", sample.name, size));
            const std::string text = sample.text.substr(0, size);
            const Decoded decoded(text);
            const std::vector<Finding> findings = check_message(text, 1);
            ASSERT_EQ(has(findings, Loss::refused), decoded.result != 1);
            for (const Finding &finding : findings) {
                ASSERT_LE(finding.place.end, text.size());
                ASSERT_LE(finding.place.begin, finding.place.end);
                if (loss_name(finding.loss) == "ignored") {
                    ASSERT_EQ(Decoded(without_line(text, finding.place)), decoded) << finding.text;
                }
            }
        }
    }
}

// Without a header line that has no finding, or with another value in it, the record is a different one.
TEST_F(Check, WhatIsNotToldOfIsRead) {
    for (const Sample &sample : samples()) {
        const Decoded decoded(sample.text);
        if (decoded.result != 1)
            continue;
        const std::vector<Finding> findings = check_message(sample.text, 1);
        const std::size_t headers = sample.text.find("\r\n") + 2;
        for (std::size_t begin = headers; sample.text[begin] != '\r';) {
            const Range line{begin, sample.text.find("\r\n", begin)};
            begin = line.end + 2;
            const std::string content = sample.text.substr(line.begin, line.end - line.begin);
            SCOPED_TRACE(sample.name + ": " + content);
            const bool is_told = std::any_of(findings.begin(), findings.end(), [&line](const Finding &finding) {
                return loss_name(finding.loss) == "ignored" && finding.place.begin == line.begin;
            });
            if (is_told || content.starts_with("Content-Length"))
                continue;
            std::string other = sample.text;
            other.replace(line.begin, line.end - line.begin, content.substr(0, content.find(':')) + ": 77");
            EXPECT_FALSE(Decoded(without_line(sample.text, line)) == decoded && Decoded(other) == decoded);
        }
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// One of each

std::string told(const std::string &text) {
    std::string lines;
    for (const Finding &finding : check_message(text, 1))
        lines += fmt::format("{}:{}: {}: {}\n", line_number(text, finding.place.begin, 1),
                             text.substr(finding.place.begin, 12), loss_name(finding.loss), finding.text);
    return lines;
}

const std::string invite = "INVITE sip:b@h SIP/2.0\n";
const std::string needed = "Call-ID: c\nCSeq: 1 INVITE\n";
const std::string head = invite + needed + "Via: SIP/2.0/UDP h;branch=1\n";
const std::string session = head + "Content-Type: application/sdp\n\nv=0\nc=IN IP4 h\n";

std::string repeated(const std::string &text, int count) {
    std::string all;
    while (count-- > 0)
        all += text;
    return all;
}

struct Case {
    const char *title;
    std::string message;
    std::string told;
};

const Case cases[] = {
    {"nothing lost", head + "Expires: 3600\nMax-Forwards: 0\nContent-Length: 7\nl: 7\n\n", ""},

    // refused
    {"no start line", "", "1:: refused: no usable start line\n"},
    {"blank before the colon of the only Call-ID", invite + "Call-ID : c\nCSeq: 1 INVITE\n\n",
     "2:Call-ID : c\n: ignored: it has a blank before the colon\n4:\n: refused: no Call-ID\n"},

    // unread, unknown
    {"NUL", head + std::string("\n\0x", 3), "6:" + std::string(1, '\0') + "x: unread: the message ends at its NUL\n"},
    {"too long", head + "\n" + std::string(4200 - head.size() - 1, 'b'),
     "6:bbbbbbbbbbbb: unread: 4200 characters, 4095 are read\n"},
    {"unknown status", "SIP/2.0 499 No\n" + head.substr(invite.size()) + "\n",
     "1:499 No\nCall-: unknown: no identifier for 499, taken as 480 Temporarily Unavailable\n"},

    {"status that has no identifier and no stand-in", "SIP/2.0 301 Moved\n" + head.substr(invite.size()) + "\n",
     "1:301 Moved\nCa: unknown: no identifier for \"301\"\n"},

    // ignored
    {"repeated", head + "From: <sip:a@b>\nFrom: <sip:c@d>\nf: <sip:e@f>\n\n",
     "6:From: <sip:c: ignored: From repeats line 5, which counts\n"
     "7:f: <sip:e@f>: ignored: f repeats line 5, which counts\n"},
    {"blank before the colon", head + "From : <sip:a@b>\nVia : SIP/2.0/UDP i\n\n",
     "5:From : <sip:: ignored: it has a blank before the colon\n"
     "6:Via : SIP/2.: ignored: it has a blank before the colon\n"},
    {"no colon, and a CR in a line", head + "Event\nEvent: reg\rlost\r\n\n",
     "5:Event\nEvent:: ignored: it has no colon\n"
     "6:lost\r\n\n: dropped: the codec reads this line only up to its CR\n"},
    {"continued without and with a comma", head + "Event: reg\n ;id=1\nUser-Agent: a,\r\n b\n\n",
     "6: ;id=1\nUser-: ignored: "
     "it begins with a blank and continues a line that does not end in a comma and CR LF\n"},
    {"line after the 63rd", head + repeated("Content-Length: 1\n", 59) + "Event: reg\nTo: <sip:a@b>\n\n",
     "64:Event: reg\nT: ignored: it comes after the first 63 lines\n"
     "65:To: <sip:a@b: ignored: it comes after the first 63 lines\n"},

    // dropped
    {"three Vias", head + "v: SIP/2.0/UDP i, SIP/2.0/UDP j\n\n",
     "4:SIP/2.0/UDP : dropped: 3 Vias: if there are more than 2, the record holds none\n"
     "5:SIP/2.0/UDP : dropped: 3 Vias: if there are more than 2, the record holds none\n"
     "5:SIP/2.0/UDP : dropped: 3 Vias: if there are more than 2, the record holds none\n"},
    {"second Contact, fifth History-Info",
     head + "Contact: <sip:a@b>, <sip:c@d>\nHistory-Info: " + repeated("<sip:a@b>,", 4) + "<sip:e@f>\n\n",
     "5:<sip:c@d>\nHi: dropped: the record holds nothing of \"<sip:c@d>\"\n"
     "6:<sip:e@f>\n\n: dropped: the record holds nothing of \"<sip:e@f>\"\n"},
    {"parameters of credentials", head + "Authorization: Digest realm=\"r\", cnonce=\"c\", nonce=\"n\"\n\n",
     "5:cnonce=\"c\", : dropped: the record holds nothing of \"cnonce=\\\"c\\\"\"\n"},
    {"codecs",
     session + "m=audio 9 RTP/AVP 0 111 97 101\na=rtpmap:111 opus/48000\na=rtpmap:97 iLBC/8000\n"
               "a=rtpmap:101 telephone-event/8000\n",
     "9:111 97 101\na: dropped: payload 111 (opus/48000) is not a codec that the record knows\n"},
    {"nine codecs", session + "m=audio 9 RTP/AVP 0 8 18 4 3 2 9 5 97\na=rtpmap:97 iLBC/8000\n",
     "9:97\na=rtpmap:: dropped: payload 97 (iLBC/8000) does not fit in sdp.a_coders\n"},
    {"five video payloads", session + "m=video 9 RTP/AVP 96 97 98 99 34\n",
     "9:34\n: dropped: payload 34 does not fit in sdp.v_coders\n"},
    {"streams", session + "m=audio 8 RTP/AVP 0\nm=text 7 RTP/AVP 98\nm=audio 9 RTP/AVP 8\n",
     "9:8 RTP/AVP 0\n: dropped: a later stream of the same kind replaces this address and port\n"
     "10:m=text 7 RTP: dropped: the record holds nothing of this stream\n"},

    // cut
    {"cut", head + "To: <sip:" + std::string(32, 'u') + "@h>;tag=t\n\n",
     "5:uuuuuuuuuuuu: cut: to.user keeps 31 of 32 characters\n"},
    {"cut before it is read", head + "To: <sip:a@h>;x=" + std::string(300, 'x') + "\n\n",
     "5:<sip:a@h>;x=: cut: 312 characters, 255 are read\n"},
    {"cut of two lines", head + "Record-Route: <sip:h>\nRecord-Route: <sip:" + std::string(125, 'r') + ">\n\n",
     "6:<sip:rrrrrrr: cut: record_route.content keeps 127 of 139 characters\n"},
};

TEST_F(Check, Cases) {
    for (const Case &row : cases) {
        SCOPED_TRACE(row.title);
        EXPECT_EQ(told(row.message), row.told);
    }
}

} // namespace
