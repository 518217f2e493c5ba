// What the encoders write, read by others: three SIP stacks find in every message the fields that its record holds, and tshark
// finds nothing malformed and warns of nothing.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <pcap/pcap.h>
#include <sipcode/encode.h>
#include <sipcode/safe.h>
#include <unistd.h>

#include "messages.h"
#include "peers/peers.h"

namespace {

using namespace bench;

struct Written {
    std::string name;
    SIP_CODE_MSG record;
    std::string text;
};

void write(const std::string &name, const SIP_CODE_MSG &record, std::vector<Written> &written) {
    SIP_CODE_MSG consumed = record;
    std::string text(SIP_REQUEST_SIZE, '\0');
    const auto write_message = is_request(record) ? SIP_Encode_Request_Buffer : SIP_Encode_Response_Buffer;
    const int length = write_message(text.data(), text.size(), &consumed);
    ASSERT_GT(length, 0) << name;
    text.resize(static_cast<std::size_t>(length));
    written.push_back({name, record, text});
}

// A received record with what a host changes before it sends it: its own answer to a challenge, its own tag, another transport.
SIP_CODE_MSG ready_to_send(SIP_CODE_MSG record, int method) {
    if (!is_request(record))
        record.uri = {{}, record.to.addr, {}};
    std::memcpy(record.uri.user, record.to.user, sizeof record.uri.user);
    record.method = method;
    if (is_request(record))
        record.cseq.method = method;
    record.trans_type = static_cast<TRANS_TYPE_E>(method % 3);
    record.to.tag_use = record.to.tag[0] != '\0';
    record.history_info[0].use = 0; // received without a host
    record.author.use = is_request(record) ? record.author.use : 0;
    record.authen.use = is_request(record) ? 0 : record.authen.use;
    if (!is_request(record) && record.message_summary.use == 1)
        record.content.use = 0; // a response carries no summary
    if (record.author.use == 1)
        record.author.author_type += 2; // the challenge that is answered
    record.korvadex[0] = record.callparty.user[0] = '\0';
    return record;
}

// Every sample with every method, or with every status.
std::vector<Written> written_messages() {
    std::vector<Written> written;
    for (message &sample : sample_messages()) {
        SIP_CODE_MSG received;
        testing::internal::CaptureStdout(); // the library prints the video section of a session description
        decode(sample.text, received);
        testing::internal::GetCapturedStdout();
        for (int method = SIP_REQUEST_MSG_REGISTER; method < SIP_CODE_METHOD_COUNT; ++method) {
            SIP_CODE_MSG record = ready_to_send(received, method);
            if (method % 2 == 0 && record.sdp.a_use == 1) { // lines made from the codecs instead of the received ones
                record.sdp.a_conten_nouse = 1;
                record.sdp.a_content[0] = '\0';
            }
            write(sample.name + " as " + decode_methods[method].text, record, written);
        }
    }
    return written;
}

// What the message must say; where the line has no place for a member, not what the record holds.
std::string said_by(SIP_CODE_MSG record) {
    if (record.method == SIP_REQUEST_MSG_REGISTER)
        record.uri.user[0] = '\0';
    if (record.to.tag_use != 1)
        record.to.tag[0] = '\0';
    if (record.author.use != 1)
        record.author = {};
    if (record.content.use != 1)
        record.sdp = {};
    return shown(fields_of(record));
}

std::string read_by(const peer &p, const std::string &text) {
    std::string fields_read;
    p.reader_of(text)([&fields_read](const fields &f) { fields_read = shown(f); });
    return fields_read;
}

TEST(Interop, stacks_read_what_the_record_holds) {
    for (const Written &one : written_messages())
        for (const peer *p : peers)
            EXPECT_EQ(said_by(one.record), read_by(*p, one.text)) << one.name << ", read by " << p->name << '\n'
                                                                  << one.text;
}

// IPv4 and UDP in front of a message, on the SIP port of the loopback address. Checksums are left out.
std::string datagram(const std::string &text) {
    const auto big_endian = [](std::size_t number) {
        return std::string{static_cast<char>(number >> 8), static_cast<char>(number)};
    };
    const std::string loopback("\x7f\x00\x00\x01", 4);
    const std::string port = big_endian(5060);
    return std::string("\x45\x00", 2) + big_endian(20 + 8 + text.size()) +
           std::string("\x00\x00\x00\x00\x40\x11\x00\x00", 8) + loopback + loopback + port + port +
           big_endian(8 + text.size()) + std::string(2, '\0') + text;
}

void write_capture(const std::string &file, const std::vector<Written> &messages) {
    const std::unique_ptr<pcap_t, void (*)(pcap_t *)> format(pcap_open_dead(DLT_RAW, 65535), pcap_close);
    pcap_dumper_t *const dumper = pcap_dump_open(format.get(), file.c_str());
    ASSERT_NE(dumper, nullptr) << pcap_geterr(format.get());
    for (const Written &one : messages) {
        const std::string packet = datagram(one.text);
        const auto length = static_cast<bpf_u_int32>(packet.size());
        const pcap_pkthdr header{{}, length, length};
        pcap_dump(reinterpret_cast<u_char *>(dumper), &header, reinterpret_cast<const u_char *>(packet.data()));
    }
    pcap_dump_close(dumper);
}

// The packets that the filter takes, a line each: number and remarks.
std::vector<std::string> tshark(const std::string &capture, const std::string &filter) {
    const std::string command =
        TSHARK " -n -r " + capture + " -Y '" + filter + "' -T fields -e frame.number -e _ws.expert.message 2>/dev/null";
    std::vector<std::string> lines;
    const std::unique_ptr<FILE, int (*)(FILE *)> pipe(popen(command.c_str(), "r"), pclose);
    char line[1000];
    while (pipe != nullptr && std::fgets(line, sizeof line, pipe.get()) != nullptr)
        lines.emplace_back(line);
    return lines;
}

TEST(Interop, tshark_finds_nothing_malformed) {
    const std::vector<Written> messages = written_messages();
    const std::string capture = testing::TempDir() + "interop-" + std::to_string(getpid()) + ".pcap";
    write_capture(capture, messages);
    EXPECT_EQ(tshark(capture, "sip.CSeq.seq").size(), messages.size());
    for (const std::string &line : tshark(capture, "_ws.malformed || _ws.expert.severity >= \"Warning\""))
        ADD_FAILURE() << line << messages.at(std::stoul(line) - 1).name << '\n'
                      << messages.at(std::stoul(line) - 1).text;
    std::filesystem::remove(capture);
}

} // namespace
