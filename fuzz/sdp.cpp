// The session description of an offer: the input is the body.
#include "judge.h"

#include <algorithm>
#include <cstring>

#include <sipcode/encode.h>

namespace {

using fuzz::demand;

constexpr std::string_view offer = "INVITE sip:b@h SIP/2.0\r\n"
                                   "Via: SIP/2.0/UDP h;branch=z9hG4bK1\r\n"
                                   "Call-ID: c\r\n"
                                   "CSeq: 1 INVITE\r\n"
                                   "Content-Type: application/sdp\r\n\r\n";

bool is_codec(e_codec codec) { return codec > UNKONW && codec < SIP_CODE_CODEC_COUNT; }
bool is_dynamic(e_codec codec) { return codec == SPEEX || codec == ILBC || codec == TE101; }
bool is_flag(int flag) { return flag == 0 || flag == 1; }

void judge_session(const SIP_SDP &sdp) {
    demand(is_flag(sdp.a_use) && is_flag(sdp.v_use) && (is_flag(sdp.fax_use) || sdp.fax_use == 2), "flags are 0 or 1");
    demand(sdp.a_media >= 0 && sdp.a_media <= 3, "a direction is one of four");
    demand(sdp.a_ptime >= -9 && sdp.a_ptime <= 99, "a packet time has two characters");

    const auto *const codecs_end = std::find_if_not(std::begin(sdp.a_coders), std::end(sdp.a_coders), is_codec);
    demand(std::count(codecs_end, std::end(sdp.a_coders), UNKONW) == std::end(sdp.a_coders) - codecs_end,
           "codecs are known, and stand without gaps");
    const auto *const rtpmaps_end =
        std::find_if_not(std::begin(sdp.rtpmap), std::end(sdp.rtpmap),
                         [](const CODEC_RTPMAP &entry) { return is_dynamic(entry.a_coder); });
    demand(std::all_of(rtpmaps_end, std::end(sdp.rtpmap),
                       [](const CODEC_RTPMAP &entry) { return entry.a_coder == UNKONW && entry.a_payload == 0; }),
           "payloads are mapped to dynamic codecs, without gaps");
    demand(std::count(sdp.v_coders + 4, std::end(sdp.v_coders), 0) == std::end(sdp.v_coders) - (sdp.v_coders + 4),
           "four video payloads are read");

    demand(sdp.a_use == 1 || (sdp.a_addr.port == 0 && sdp.a_addr.ip[0] == '\0' && codecs_end == sdp.a_coders),
           "without an audio stream it has no address and no codecs");
    constexpr std::string_view directions[] = {"a=sendrecv", "a=sendonly", "a=recvonly", "a=inactive"};
    const std::string_view section = sdp.a_content;
    demand(section.empty() || std::any_of(std::begin(directions), std::end(directions),
                                          [=](std::string_view line) { return section.find(line) != section.npos; }),
           "an audio section has a direction");
}

// The telephone-event codec gets a payload number at most once.
void judge_default(const SIP_SDP &decoded) {
    static fuzz::Arena pages(sizeof(SIP_SDP));
    auto &sdp = *reinterpret_cast<SIP_SDP *>(
        pages.copy({reinterpret_cast<const char *>(&decoded), sizeof decoded}, fuzz::side_for(decoded.a_ptime != 0)));
    BuildDefaultSdp(&sdp);
    pages.demand_intact();
    const SIP_SDP once = sdp;
    BuildDefaultSdp(&sdp);
    demand(std::memcmp(&once, &sdp, sizeof sdp) == 0, "a default is added once");
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    static char message[offer.size() + fuzz::longest_input];
    const std::size_t body = std::min(size, fuzz::longest_input - offer.size());
    std::memcpy(message, offer.data(), offer.size());
    if (body != 0)
        std::memcpy(message + offer.size(), data, body);
    const auto [result, record] = fuzz::decode({message, offer.size() + body});
    demand(result == 1, "no body refuses a message");
    judge_session(record.sdp);
    judge_default(record.sdp);
    return 0;
}
