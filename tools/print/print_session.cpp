// Prints the streams of a message, see print.h.
#include "print.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/ostream.h>

namespace {

constexpr std::string_view directions[] = {"sendrecv", "sendonly", "recvonly", "inactive"};

// Names on the wire, by e_codec.
constexpr std::string_view codec_names[SIP_CODE_CODEC_COUNT] = {
    "", "PCMA", "PCMU", "G729", "G723", "telephone-event", "GSM", "G726", "G722", "speex", "iLBC", "DVI4"};

std::string address_text(const IPV4_ADDRESS &address) {
    return fmt::format("{}:{}", printable(address.ip), address.port);
}

bool has_payload(e_codec codec) { return codec == SPEEX || codec == ILBC || codec == TE101; }

std::string audio_codecs(const SIP_SDP &sdp) {
    std::vector<CODEC_RTPMAP> payloads(std::begin(sdp.rtpmap), std::end(sdp.rtpmap));
    std::string names;
    for (const e_codec codec : sdp.a_coders) {
        const std::string_view name = codec_wire_name(codec);
        if (name.empty())
            continue;
        names += fmt::format("{}{}", names.empty() ? "" : " ", name);
        const auto of_codec = [codec](const CODEC_RTPMAP &entry) { return entry.a_coder == codec; };
        const auto entry = std::find_if(payloads.begin(), payloads.end(), of_codec);
        if (!has_payload(codec) || entry == payloads.end())
            continue;
        names += fmt::format("({})", entry->a_payload);
        payloads.erase(entry); // the next slot with this codec has the next entry
    }
    return names.empty() ? "no known codec" : names;
}

// "H264" from "a=rtpmap:99 H264/90000" in the section, otherwise the name of a static payload number.
std::string video_codec_name(std::string_view section, int payload) {
    const std::string mark = fmt::format("a=rtpmap:{} ", payload);
    const std::size_t at = section.find(mark);
    if (at != std::string_view::npos) {
        const std::string_view encoding = section.substr(at + mark.size());
        return printable(encoding.substr(0, encoding.find_first_of("/ \r\n")));
    }
    return payload == 34 ? "H263" : payload == 31 ? "H261" : "";
}

std::string video_codecs(const SIP_SDP &sdp) {
    std::string names;
    for (const int payload : sdp.v_coders) {
        if (payload == 0)
            continue;
        const std::string name = video_codec_name(sdp.v_content, payload);
        names += names.empty() ? "" : " ";
        names += name.empty() ? std::to_string(payload) : fmt::format("{}({})", name, payload);
    }
    return names;
}

std::string audio(const SIP_SDP &sdp) {
    std::string line = fmt::format("audio {}  {}", address_text(sdp.a_addr), audio_codecs(sdp));
    if (sdp.a_media >= 0 && sdp.a_media < static_cast<int>(std::size(directions)))
        line += fmt::format("  {}", directions[sdp.a_media]);
    if (sdp.a_ptime > 0)
        line += fmt::format("  {} ms", sdp.a_ptime);
    return line;
}

std::string video(const SIP_SDP &sdp) {
    std::string line = fmt::format("video {}  {}", address_text(sdp.v_addr), video_codecs(sdp));
    const std::string_view section = sdp.v_content;
    for (const std::string_view direction : directions) {
        if (section.find(fmt::format("a={}", direction)) != std::string_view::npos)
            return fmt::format("{}  {}", line, direction);
    }
    return line;
}

std::string fax(const FAX_INFO &fax) {
    std::string line = fmt::format("fax {}  T.38 version {}", address_text(fax.fax_addr), fax.T38FaxVersion);
    if (fax.T38MaxBitRate > 0)
        line += fmt::format("  {} bit/s", fax.T38MaxBitRate);
    for (const std::string_view text : {fax.T38FaxRateManagement, fax.T38FaxUdpEC}) {
        if (!text.empty())
            line += fmt::format("  {}", printable(text));
    }
    return line;
}

} // namespace

std::string_view codec_wire_name(int codec) {
    return codec < 0 || codec >= SIP_CODE_CODEC_COUNT ? "" : codec_names[codec];
}

void print_session(std::ostream &out, const SIP_CODE_MSG &record) {
    const bool is_offer = record.method == SIP_REQUEST_MSG_INVITE || record.method == SIP_REQUEST_MSG_UPDATE;
    const auto print = [&out, is_offer](const std::string &stream) {
        fmt::print(out, "  {}  {}\n", is_offer ? "offer" : "media", stream);
    };
    const SIP_SDP &sdp = record.sdp;
    if (sdp.a_use == 1)
        print(audio(sdp));
    if (sdp.v_use == 1)
        print(video(sdp));
    if (sdp.fax_use == 1 || sdp.fax.udptlport > 0)
        print(fax(sdp.fax));
    if (sdp.fax_use == 2)
        print("fax in the audio stream");
}
