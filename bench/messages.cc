#include "messages.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <sipcode/decode.h>
#include <sipcode/encode.h>

namespace bench {
namespace {

[[noreturn]] void fail(const std::string &problem) {
    std::fprintf(stderr, "%s\n", problem.c_str());
    std::exit(1);
}

std::string read_file(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    if (!file)
        fail("cannot read " + path.string());
    return text.str();
}

// The beginning of each grown message.
constexpr const char *grown_head = "INVITE sip:1002@switch.example.com:5060 SIP/2.0\r\n"
                                   "Via: SIP/2.0/UDP 192.0.2.20:5062;branch=z9hG4bKnashds8a1b\r\n"
                                   "From: \"1001\" <sip:1001@switch.example.com:5060>;tag=88asd112\r\n"
                                   "Call-ID: 5f2c81d09b3e4a7c@192.0.2.20\r\n"
                                   "CSeq: 102 INVITE\r\n";
constexpr int grown_head_lines = 5;

constexpr const char *grown_body = "v=0\r\n"
                                   "o=- 1 1 IN IP4 192.0.2.20\r\n"
                                   "s=-\r\n"
                                   "c=IN IP4 192.0.2.20\r\n"
                                   "t=0 0\r\n"
                                   "m=audio 16384 RTP/AVP 8\r\n";
constexpr const char *grown_body_line =
    "a=candidate:2 1 UDP 1694498815 203.0.113.40 62170 typ srflx raddr 192.0.2.40 rport 4\r\n";

// Lines that a message collects on its way. The record has members for some of them.
constexpr const char *grown_lines[] = {
    "To: \"1002\" <sip:1002@switch.example.com:5060>",
    "Contact: <sip:1001@192.0.2.20:5062;transport=udp>",
    "Record-Route: <sip:192.0.2.2:5060;lr;ftag=88asd112;did=4c1.b71>",
    "Allow: INVITE, ACK, CANCEL, BYE, OPTIONS, PRACK, UPDATE, INFO",
    "User-Agent: Example Desk Phone 4.2 (0004f2a1b2c3)",
    "Supported: timer,replaces,100rel,norefersub,histinfo",
    "P-Asserted-Identity: \"1001\" <sip:1001@switch.example.com>",
    "Session-Expires: 1800;refresher=uac",
    "X-Trunk-Group: carrier-17.pop-3.example.net;context=+49",
    "X-Billing-Reference: 2021-11-13T23:29:00Z/5f2c81d09b3e4a7c",
    "P-Charging-Vector: icid-value=\"AyretyU0dm+6O2IrT5tAFrbHLso=\"",
    "Accept-Language: en, de;q=0.8, fr;q=0.6, es;q=0.4, it;q=0.2",
};

const char *grown_line(int i) { return grown_lines[static_cast<std::size_t>(i) % std::size(grown_lines)]; }

std::string header_lines(int count) {
    std::string lines;
    for (int i = 0; i < count; ++i)
        lines += std::string(grown_line(i)) + "\r\n";
    return lines;
}

} // namespace

std::string sample(const std::string &name) {
    return read_file(std::filesystem::path(SIPCODE_BENCH_MESSAGES) / (name + ".sip"));
}

std::vector<message> sample_messages() {
    std::vector<message> messages;
    for (const auto &entry : std::filesystem::directory_iterator(SIPCODE_BENCH_MESSAGES))
        messages.push_back({entry.path().stem(), read_file(entry.path())});
    std::sort(messages.begin(), messages.end(),
              [](const message &a, const message &b) { return a.text.size() < b.text.size(); });
    return messages;
}

std::string invite_of_bytes(std::size_t bytes) {
    std::string text = std::string(grown_head) + header_lines(1) + "\r\n" + grown_body;
    while (text.size() < bytes)
        text += grown_body_line;
    text.resize(bytes);
    return text;
}

std::string invite_of_headers(int headers) {
    return std::string(grown_head) + header_lines(headers - grown_head_lines) + "\r\n";
}

void decode(std::string &text, SIP_CODE_MSG &record) {
    std::memset(&record, 0, sizeof record);
    if (Sip_Decode(text.data(), &record) != 1)
        fail("a message of the measurements is refused:\n" + text);
}

namespace {

SIP_CODE_MSG decoded(const std::string &name) {
    SIP_CODE_MSG record;
    std::string text = sample(name);
    decode(text, record);
    return record;
}

// The To keeps its tag, and credentials name the challenge that they answer.
SIP_CODE_MSG ready_to_send(SIP_CODE_MSG record) {
    record.to.tag_use = record.to.tag[0] != '\0';
    if (record.author.use == 1)
        record.author.author_type += 2;
    return record;
}

// A host that answers calls itself has the audio attributes generated from the codecs.
SIP_CODE_MSG with_generated_sdp(SIP_CODE_MSG record) {
    record.sdp.a_conten_nouse = 1;
    record.sdp.a_content[0] = '\0';
    return record;
}

} // namespace

std::vector<record_to_encode> sample_records() {
    std::vector<record_to_encode> records;
    for (const char *name : {"invite-with-sdp", "ok-with-sdp", "register", "bye", "ringing", "notify-message-waiting"})
        records.push_back({name, ready_to_send(decoded(name))});
    records.push_back({"invite-generated-sdp", with_generated_sdp(ready_to_send(decoded("invite-with-sdp")))});
    return records;
}

bool is_request(const SIP_CODE_MSG &record) { return record.method < SIP_RESPONSE_MSG_100_TRY; }

void encode(SIP_CODE_MSG &record, char *out) {
    if (is_request(record))
        SIP_Encode_Message_Reuqest(out, &record);
    else
        SIP_Encode_Message_Response(out, &record);
}

std::string encoded(SIP_CODE_MSG record) {
    std::string text(SIP_REQUEST_SIZE, '\0');
    encode(record, text.data());
    text.resize(std::strlen(text.c_str()));
    return text;
}

} // namespace bench
