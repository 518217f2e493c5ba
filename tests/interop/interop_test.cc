// Other parsers read what the encoders write. In every message, three SIP stacks find the fields of the record. tshark
// finds a list of facts, nothing malformed and nothing to warn of.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <sstream>
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

// Changes a received record as a host does before it sends it: method or status, transport, answer to a challenge.
void make_ready_to_send(SIP_CODE_MSG &record, int method, std::size_t number) {
    if (!is_request(record))
        record.uri = {{}, record.to.addr, {}};
    std::memcpy(record.uri.user, record.to.user, sizeof record.uri.user);
    record.method = method;
    if (is_request(record))
        record.cseq.method = method;
    record.trans_type = static_cast<TRANS_TYPE_E>(number % 3);
    record.to.tag_use = record.to.tag[0] != '\0';
    record.author.use = is_request(record) ? record.author.use : 0;
    record.authen.use = is_request(record) ? 0 : record.authen.use;
    if (!is_request(record) && record.message_summary.use == 1)
        record.content.use = 0; // a response carries no summary
    if (record.author.use == 1)
        record.author.author_type += 2; // the challenge that is answered
}

constexpr IPV4_ADDRESS host_name = {"host.example.net", 5060};

// Sets what no sample holds. One message in five has host names instead of addresses, one session in seven is a fax.
// Every second message has phone numbers, credentials with a nonce count, and codec lines made by the library.
void complete(SIP_CODE_MSG &record, std::size_t number) {
    if (number % 5 == 1)
        record.uri.dns = record.from.dns = record.to.dns = {1, "host.example.net"};
    record.rack = {1, 102, SIP_REQUEST_MSG_INVITE};
    record.rseq = {1, 7};
    record.require = {1, "100rel"};
    record.replaces = {1, "425928@192.0.2.7;to-tag=7743;from-tag=6472"};
    record.p_early_media = {1, "supported"};
    record.p_passerted_identity = {1, "1007", "", {"192.0.2.7", 5070}};
    record.history_info[0] = {1, "1008", {"192.0.2.8", 5060}, 1, "480"};
    record.history_info[1] = {1, "1009", {"192.0.2.9", 5060}, 2, ""};
    record.requst_uri = {1, "1010", "tag10", {"192.0.2.10", 5060}};
    std::strcpy(record.refer_to.refertocontent, "method=INVITE");
    if (number % 7 == 1 && record.sdp.a_use == 1) {
        record.sdp = {};
        record.sdp.fax_use = 1;
        record.sdp.fax = {40000, 0, 14400, 0, 400, 0, 0, 0, "transferredTCF", "t38UDPRedundancy", {"192.0.2.7", 40000}};
    }
    if (number % 2 != 0)
        return;
    record.user_phone = 1;
    std::strcpy(record.author.qop, "auth");
    std::strcpy(record.author.cnonce, "0a4f113b");
    record.author.noncecount = 26;
    if (record.sdp.a_use == 1) {
        record.sdp.a_conten_nouse = 1;
        record.sdp.a_content[0] = '\0';
        record.sdp.a_media = static_cast<int>(number / 2 % 4);
    }
}

// Every sample with every method, or with every status.
std::vector<Written> written_messages() {
    std::vector<Written> written;
    for (message &sample : sample_messages()) {
        SIP_CODE_MSG received;
        testing::internal::CaptureStdout(); // the library prints the video section
        decode(sample.text, received);
        testing::internal::GetCapturedStdout();
        for (int method = SIP_REQUEST_MSG_REGISTER; method < SIP_CODE_METHOD_COUNT; ++method) {
            SIP_CODE_MSG record = received;
            make_ready_to_send(record, method, written.size());
            complete(record, written.size());
            write(sample.name + " as " + decode_methods[method].text, record, written);
        }
    }
    return written;
}

// The fields of the record that are written: some messages have no place for a user, a tag, credentials or a session.
std::string said_by(SIP_CODE_MSG record) {
    const bool to_the_address = record.method == SIP_REQUEST_MSG_ACK || record.method == SIP_REQUEST_MSG_BYE;
    if (record.method == SIP_REQUEST_MSG_REGISTER || (to_the_address && record.uri.dns.use == 1))
        record.uri.user[0] = '\0';
    if (record.uri.dns.use == 1) {
        record.from.addr = record.to.addr = host_name;
        record.uri.addr = to_the_address ? record.uri.addr : host_name;
    }
    if (record.to.tag_use != 1)
        record.to.tag[0] = '\0';
    if (record.author.use != 1)
        record.author = {};
    if (record.content.use != 1)
        record.sdp = {};
    return shown(fields_of(record));
}

TEST(Interop, stacks_read_what_the_record_holds) {
    for (const Written &one : written_messages()) {
        if (one.record.sdp.fax_use == 1)
            continue; // the readers know audio and video
        for (const peer *p : peers)
            EXPECT_EQ(said_by(one.record), fields_read_by(*p, one.text)) << one.name << ", read by " << p->name << '\n'
                                                                         << one.text;
    }
}

// A packet is the name of the dissector that must read it, and a message.
void write_capture(const std::string &file, const std::vector<Written> &messages) {
    const std::string dissector("\0\x0c\0\4sip\0\0\0\0\0", 12);
    const std::unique_ptr<pcap_t, void (*)(pcap_t *)> format(pcap_open_dead(DLT_WIRESHARK_UPPER_PDU, 65535),
                                                             pcap_close);
    pcap_dumper_t *const dumper = pcap_dump_open(format.get(), file.c_str());
    ASSERT_NE(dumper, nullptr) << pcap_geterr(format.get());
    for (const Written &one : messages) {
        const std::string packet = dissector + one.text;
        const auto length = static_cast<bpf_u_int32>(packet.size());
        const pcap_pkthdr header{{}, length, length};
        pcap_dump(reinterpret_cast<u_char *>(dumper), &header, reinterpret_cast<const u_char *>(packet.data()));
    }
    pcap_dump_close(dumper);
}

std::vector<std::string> split(const std::string &text, char separator) {
    std::vector<std::string> parts;
    std::istringstream rest(text);
    for (std::string part; std::getline(rest, part, separator);)
        parts.push_back(part);
    return parts;
}

// A line of tab-separated fields for each packet that passes the filter: its number, then all values of each field.
std::vector<std::string> tshark(const std::string &capture, const std::string &filter, const std::string &fields) {
    const std::string command = TSHARK " -n -r " + capture + " -T fields -E aggregator='|' -Y '" + filter +
                                "' -e frame.number" + fields + " 2>/dev/null";
    std::string output;
    const std::unique_ptr<FILE, int (*)(FILE *)> pipe(popen(command.c_str(), "r"), pclose);
    char block[4096];
    while (const std::size_t length = std::fread(block, 1, sizeof block, pipe.get()))
        output.append(block, length);
    return split(output, '\n');
}

std::string in_quotes(const std::string &text) { return '"' + text + '"'; }

// A field that tshark reads, in how many messages it does, and its value. An empty value is not compared.
struct Fact {
    const char *field;
    std::size_t messages;
    std::string value;
};

std::vector<Fact> facts_of(const Written &message) {
    using std::to_string;
    const SIP_CODE_MSG &r = message.record;
    const char *const transports[] = {"UDP", "TCP", "TLS"};
    const char *const directions[] = {"sendrecv", "sendonly", "recvonly", "inactive"};
    const std::string transport = transports[r.trans_type];
    const std::string party = std::string("<sip:") + r.from.user + '@';
    const std::string host = r.from.dns.use == 1 ? r.from.dns.dnsname : r.from.addr.ip;
    const bool is_fax = r.sdp.fax_use == 1;
    const int expires = r.method == SIP_REQUEST_MSG_SUBCRIBE ? std::max(900, r.expire.expires) : r.expire.expires;
    return {
        {"sip.Via.transport", 658, transport},
        {"sip.contact.param", 517, "transport=" + transport},
        {"sip.contact.parameter", 2, "expires=" + to_string(expires)},
        {"sip.to.param", 322, "user=phone"},
        {"sip.from.param", 322, "user=phone"},
        {"sip.from.display.info", 658, in_quotes(r.from.user)},
        {"sip.ppi.user", 6, r.from.user},
        {"sip.pai.addr", 196, "sip:1007@192.0.2.7:5070"},
        {"sip.History-Info", 196,
         R"(<sip:1008@192.0.2.8:5060;cause=480>;index=1,\r\n <sip:1009@192.0.2.9:5060>;index=2)"},
        {"sip.Record-Route", 132, r.record_route.content},
        {"sip.Route", 56, r.record_route.content},
        {"sip.Expires", 658, to_string(expires)},
        {"sip.Session-Expires", 12,
         to_string(r.session_expires.sessionexpires) + ";refresher=" + r.session_expires.refresher},
        {"sip.Min-SE", 4, to_string(r.min_se.minse)},
        {"sip.Max-Forwards", 196, "70"},
        {"sip.RSeq", 658, to_string(r.rseq.RSeq)},
        {"sip.RAck", 658, "1 102 INVITE"},
        {"sip.Supported", 204, r.supported.SUPPORTED},
        {"sip.Require", 658, r.require.REQUIRE},
        {"sip.Allow", 34, ""},
        {"sip.Accept", 2, ""},
        {"sip.Event", 28, r.event.content},
        {"sip.Subscription-State", 1, r.subscription_state.content},
        {"sip.Alert-Info", 14, r.alert.alertinfo},
        {"sip.Call-Info", 47, party + r.from.addr.ip + ':' + to_string(r.from.addr.port) + ">;" + r.call_info.content},
        {"sip.Replaces", 14, r.replaces.content},
        {"sip.Referred-by", 14, party + host + ";user=phone>"},
        {"sip.Refer-To", 14, "<sip:1003@" + host + ";user=phone;method=INVITE>"},
        {"sip.P-Early-Media", 14, r.p_early_media.content},
        {"sip.User-Agent", 140, r.user_agent.useragent},
        {"sip.Date", 12, ""},
        {"sip.auth.algorithm", 61, "MD5"},
        {"sip.auth.qop", 14, r.author.qop},
        {"sip.auth.nc", 14, "0000001a"},
        {"sip.auth.cnonce", 14, in_quotes(r.author.cnonce)},
        {"sip.Content-Type", 202, r.content.type},
        {"sip.Content-Length", 658, to_string(message.text.size() - message.text.find("\r\n\r\n") - 4)},
        {"sdp.mime.type", 121, "PCMA"}, // offered by all samples
        {"sdp.media_attr", 141, is_fax ? "T38MaxBitRate:14400" : directions[r.sdp.a_media]},
        {"sdp.media_attribute.value", 141, is_fax ? "t38UDPRedundancy" : to_string(r.sdp.a_ptime)},
    };
}

class Tshark : public testing::Test {
  protected:
    Tshark() { write_capture(capture_, messages_); }
    ~Tshark() override { std::filesystem::remove(capture_); }

    const Written &message_of(const std::string &line) const { return messages_.at(std::stoul(line) - 1); }

    const std::vector<Written> messages_ = written_messages();
    const std::string capture_ = testing::TempDir() + "interop-" + std::to_string(getpid()) + ".pcap";
};

TEST_F(Tshark, finds_nothing_malformed) {
    const std::string malformed = "_ws.malformed || _ws.expert.severity >= \"Warning\"";
    for (const std::string &line : tshark(capture_, malformed, " -e _ws.expert.message"))
        ADD_FAILURE() << line << '\n' << message_of(line).name << '\n' << message_of(line).text;
}

// Counts the fields that tshark read in a message, and compares their values.
void count_facts(const std::string &line, const Written &message, std::vector<std::size_t> &counts) {
    const std::vector<std::string> columns = split(line, '\t');
    const std::vector<Fact> facts = facts_of(message);
    for (std::size_t i = 0; i < facts.size() && i + 1 < columns.size(); ++i) {
        const std::vector<std::string> values = split(columns[i + 1], '|');
        if (values.empty())
            continue;
        ++counts[i];
        if (!facts[i].value.empty() && std::count(values.begin(), values.end(), facts[i].value) == 0)
            ADD_FAILURE() << facts[i].field << " is " << columns[i + 1] << ", not " << facts[i].value << '\n'
                          << message.name << '\n'
                          << message.text;
    }
}

TEST_F(Tshark, reads_the_facts) {
    const std::vector<Fact> facts = facts_of(messages_.front());
    std::string fields;
    for (const Fact &fact : facts)
        fields += std::string(" -e ") + fact.field;
    std::vector<std::size_t> counts(facts.size());
    for (const std::string &line : tshark(capture_, "sip", fields))
        count_facts(line, message_of(line), counts);
    for (std::size_t i = 0; i < facts.size(); ++i)
        EXPECT_EQ(counts[i], facts[i].messages) << facts[i].field;
}

} // namespace
