#include "cases.h"

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <sipcode/decode.h>
#include <sipcode/encode.h>
#include <sipcode/safe.h>

#include "messages.h"
#ifdef SIPCODE_BENCH_PEERS
#include "peers/peers.h"
#endif

namespace bench {
namespace {

// One record and one buffer for all cases, as in a host that handles one message after the other.
SIP_CODE_MSG record;
char written[SIP_REQUEST_SIZE];

// The figure includes the zeroing of the record, because every host has to do it before a decode.
measured_case decode_case(const std::string &name, const std::string &text) {
    return {name, text.size(), [own = text]() mutable { decode(own, record); }};
}

// Mixes the sizes of the samples, so that the branch predictor does not learn their order.
class sample_order {
  public:
    explicit sample_order(std::size_t samples) : samples_(samples) {}
    std::size_t next() { return at_ = (at_ + stride) % samples_; }

  private:
    static constexpr std::size_t stride = 5; // shares no factor with the fourteen samples
    std::size_t samples_;
    std::size_t at_ = 0;
};

std::size_t mean_size(const std::vector<message> &messages) {
    std::size_t bytes = 0;
    for (const message &m : messages)
        bytes += m.text.size();
    return bytes / messages.size();
}

measured_case mix_case(const std::vector<message> &messages) {
    return {"decode/mix/sipcode", mean_size(messages),
            [texts = messages, order = sample_order(messages.size())]() mutable {
                decode(texts[order.next()].text, record);
            }};
}

measured_case encode_case(const record_to_encode &source) {
    auto own = std::make_shared<SIP_CODE_MSG>(source.record);
    return {"encode/" + source.name + "/sipcode", encoded(source.record).size(), [own] { encode(*own, written); }};
}

// The entry point for untrusted input: the caller does not zero the record, and a report is filled.
measured_case decode_buffer_case(const std::string &name) {
    static SIP_DECODE_REPORT report;
    const std::string text = sample(name);
    return {"decode-buffer/" + name + "/sipcode", text.size(), [text] {
                if (SIP_Decode_Buffer(text.data(), text.size(), &record, &report) != SIP_DECODE_DONE)
                    std::abort();
            }};
}

// Every header line, once.
measured_case walk_case(const std::string &name) {
    const std::string text = sample(name);
    return {"walk/" + name + "/sipcode", text.size(), [text] {
                SIP_HEADER_WALK walk{};
                while (SIP_Walk_Headers(text.data(), text.size(), &walk) == 1) {
                }
                if (walk.line == 0)
                    std::abort();
            }};
}

measured_case encode_buffer_case(const record_to_encode &source) {
    auto own = std::make_shared<SIP_CODE_MSG>(source.record);
    const auto write = is_request(source.record) ? SIP_Encode_Request_Buffer : SIP_Encode_Response_Buffer;
    return {"encode-buffer/" + source.name + "/sipcode", encoded(source.record).size(), [own, write] {
                if (write(written, sizeof written, own.get()) < 0)
                    std::abort();
            }};
}

// A message without a Call-ID is refused after the splitting and before a decoder stores a member. What is left is the
// copy, the cut into lines and the index of their names.
measured_case split_case(const std::string &name) {
    std::string text = sample(name);
    text.replace(text.find("\r\nCall-ID:"), 10, "\r\nXall-ID:");
    return {"split/" + name + "/sipcode", text.size(), [text]() mutable {
                if (Sip_Decode(text.data(), &record) == 1)
                    std::abort();
            }};
}

// With the CSeq of a CANCEL, everything but the session description is read.
measured_case without_sdp_case(const std::string &name) {
    std::string text = sample(name);
    text.replace(text.find(" INVITE\r\n", text.find("CSeq:")), 9, " CANCEL\r\n");
    return decode_case("without-sdp/" + name + "/sipcode", text);
}

// ------------------------------------------------------------------------------------------------------------ floor
//
// The work that no decode into this record can avoid.

SIP_MSG split_message;

void keep(const void *memory) { asm volatile("" : : "r"(memory) : "memory"); }

#ifdef __SSE2__
std::uint64_t line_ends_of_16(const char *text) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, _mm_set1_epi8('\n'))));
}

std::uint64_t line_ends_of_64(const char *text) {
    return line_ends_of_16(text) | line_ends_of_16(text + 16) << 16 | line_ends_of_16(text + 32) << 32 |
           line_ends_of_16(text + 48) << 48;
}
#endif

// The line ends of a text, 64 characters at a time with SSE2.
std::size_t find_line_ends(const char *text, std::size_t length, const char **ends) {
    std::size_t n = 0;
    std::size_t at = 0;
#ifdef __SSE2__
    for (; at + 64 <= length; at += 64)
        for (std::uint64_t found = line_ends_of_64(text + at); found != 0; found &= found - 1)
            ends[n++] = text + at + std::countr_zero(found);
#endif
    for (; at < length; ++at)
        if (text[at] == '\n')
            ends[n++] = text + at;
    return n;
}

void add_floor(std::vector<measured_case> &cases) {
    const std::string text = sample("invite-with-sdp");
    const auto zero_record = [] {
        std::memset(&record, 0, sizeof record);
        keep(&record);
    };
    const auto zero_split_message = [] {
        std::memset(&split_message, 0, sizeof split_message);
        keep(&split_message);
    };
    const auto copy_text = [text] {
        std::memcpy(split_message.data, text.data(), text.size() + 1);
        keep(split_message.data);
    };
    const auto line_ends = [text] {
        static const char *ends[sizeof split_message.data];
        find_line_ends(text.data(), text.size(), ends);
        keep(ends);
    };
    cases.push_back({"floor/zero-record/sipcode", sizeof record, zero_record});
    cases.push_back({"floor/zero-split-message/sipcode", sizeof split_message, zero_split_message});
    cases.push_back({"floor/copy-text/sipcode", text.size(), copy_text});
    cases.push_back({"floor/line-ends/sipcode", text.size(), line_ends});
    cases.push_back({"floor/all/sipcode", text.size(), [=] {
                         zero_record();
                         zero_split_message();
                         copy_text();
                         line_ends();
                     }});
}

void add_growth(std::vector<measured_case> &cases) {
    for (const std::size_t bytes : {400U, 800U, 1600U, 2400U, 3200U, 4095U})
        cases.push_back(decode_case("growth/" + std::to_string(bytes) + "-bytes/sipcode", invite_of_bytes(bytes)));
    for (const int headers : {5, 10, 20, 40, 63})
        cases.push_back(
            decode_case("growth/" + std::to_string(headers) + "-headers/sipcode", invite_of_headers(headers)));
}

// ------------------------------------------------------------------------------------------------------------ peers

#ifdef SIPCODE_BENCH_PEERS
void keep_fields(const fields &f) { keep(&f); }

measured_case mix_case_of(const peer &p, const std::vector<message> &messages) {
    std::vector<reader> readers;
    for (const message &m : messages)
        readers.push_back(p.reader_of(m.text));
    return {std::string("decode/mix/") + p.name, mean_size(messages),
            [readers, order = sample_order(messages.size())]() mutable { readers[order.next()](keep_fields); }};
}

void add_peer(const peer &p, std::vector<measured_case> &cases) {
    const std::vector<message> messages = sample_messages();
    for (const message &m : messages)
        cases.push_back(
            {"decode/" + m.name + "/" + p.name, m.text.size(), [read = p.reader_of(m.text)] { read(keep_fields); }});
    cases.push_back(mix_case_of(p, messages));
    for (const record_to_encode &source : sample_records()) {
        const std::string text = encoded(source.record);
        cases.push_back({"encode/" + source.name + "/" + p.name, text.size(),
                         [print = p.printer_of(text)] { keep(print().data()); }});
    }
}

void add_peers(std::vector<measured_case> &cases) {
    check_peers();
    for (const peer *p : peers)
        add_peer(*p, cases);
}
#endif

} // namespace

std::vector<measured_case> all_cases() {
    // The library prints the video section of each session description that it reads.
    if (std::freopen("/dev/null", "w", stdout) == nullptr)
        std::abort();
    std::vector<measured_case> cases;
    const std::vector<message> messages = sample_messages();
    for (const message &m : messages)
        cases.push_back(decode_case("decode/" + m.name + "/sipcode", m.text));
    cases.push_back(mix_case(messages));
    for (const record_to_encode &source : sample_records()) {
        cases.push_back(encode_case(source));
        cases.push_back(encode_buffer_case(source));
    }
    for (const char *name : {"invite-with-sdp", "ok-with-sdp", "register", "bye"})
        cases.push_back(decode_buffer_case(name));
    cases.push_back(walk_case("invite-with-sdp"));
    for (const char *name : {"invite-with-sdp", "invite-two-streams"}) {
        cases.push_back(split_case(name));
        cases.push_back(without_sdp_case(name));
    }
    add_floor(cases);
    add_growth(cases);
#ifdef SIPCODE_BENCH_PEERS
    add_peers(cases);
#endif
    return cases;
}

} // namespace bench
