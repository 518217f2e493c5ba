// A record that anyone may have filled, written as a request and as a response.
#include "judge.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>

#include <sipcode/encode.h>

#include "record_text.h"

namespace {

using fuzz::demand;

struct Encoder {
    int (*encode)(char *buffer, SIP_CODE_MSG *record);
    std::size_t size;
    const char *const (&changed)[4]; // members that it may change
};

constexpr const char *changed_by_request[4] = {"callid", "sdp.rtpmap", "callid", "callid"};
constexpr const char *changed_by_response[4] = {"callid", "sdp.rtpmap", "to.tag_use", "via1.addr.port"};
constexpr Encoder encoders[] = {
    {SIP_Encode_Message_Reuqest, SIP_REQUEST_SIZE, changed_by_request},
    {SIP_Encode_Message_Response, SIP_RESPONSE_SIZE, changed_by_response},
};

bool is_method(int method) { return method > SIP_REQUEST_MSG_UNKNOWN && method < SIP_CODE_METHOD_COUNT; }

// The text that the plain encoder writes, empty when it refuses the record.
std::string_view judge_plain(const Encoder &encoder, const SIP_CODE_MSG &given, unsigned char before) {
    static fuzz::Arena record_pages(sizeof(SIP_CODE_MSG));
    static fuzz::Arena text_pages(SIP_REQUEST_SIZE);
    const fuzz::Arena::Side side = fuzz::side_for(before);
    auto &record = *new (record_pages.fill(sizeof(SIP_CODE_MSG), 0, side)) SIP_CODE_MSG(given);
    char *const text = text_pages.fill(encoder.size, before, side);
    const int result = encoder.encode(text, &record);
    record_pages.demand_intact();
    text_pages.demand_intact();
    for (const fuzz::Leaf &leaf : fuzz::leaves()) {
        const auto covers = [&leaf](const char *member) { return fuzz::is_within(member, leaf); };
        demand(fuzz::equal(leaf, given, record) ||
                   std::any_of(std::begin(encoder.changed), std::end(encoder.changed), covers),
               "an encoder changes what it says");
    }
    if (result != 1) {
        demand(result == -1 && !is_method(given.method), "only a method refuses a record");
        demand(std::count(text, text + encoder.size, static_cast<char>(before)) == static_cast<long>(encoder.size),
               "nothing is written for a refused record");
        return {};
    }
    demand(is_method(given.method), "a method is in the table");
    const std::size_t length = strnlen(text, encoder.size);
    demand(length < encoder.size, "a message ends in its buffer");
    return {text, length};
}

void judge(const Encoder &encoder, const SIP_CODE_MSG &record) {
    static char first[SIP_REQUEST_SIZE];
    const std::string_view text(first, judge_plain(encoder, record, 0xA5).copy(first, sizeof first));
    demand(text == judge_plain(encoder, record, 0), "what is written depends on the record alone");
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    static SIP_CODE_MSG record;
    fuzz::read_record({reinterpret_cast<const char *>(data), size}, record);
    for (const Encoder &encoder : encoders)
        judge(encoder, record);
    return 0;
}
