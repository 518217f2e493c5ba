// Offer and answer, see session.h.
//
// One record mixes the streams of a kind, and does not keep their order or the direction of each. So every stream is
// decoded alone, and its media line and direction are read from its text.
#include "session.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <string_view>

#include <fmt/format.h>
#include <strings.h>

#include "codec.h"
#include "records.h"

namespace {

// ------------------------------------------------------------------------------------------------- text of the streams

struct Description {
    std::string_view session; // the lines before the first stream
    std::vector<std::string_view> streams;
};

Description split(std::string_view body) {
    constexpr std::string_view mark = "\nm=";
    Description found;
    std::size_t end = body.find(mark);
    found.session = body.substr(0, end);
    while (end != std::string_view::npos) {
        const std::size_t begin = end + 1;
        end = body.find(mark, begin);
        found.streams.push_back(body.substr(begin, end == std::string_view::npos ? end : end - begin));
    }
    return found;
}

std::vector<std::string_view> lines_of(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        lines.push_back(line.substr(0, line.find('\r')));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

bool has_line(std::string_view text, std::string_view wanted) {
    const auto lines = lines_of(text);
    return std::find(lines.begin(), lines.end(), wanted) != lines.end();
}

// "m=audio 4000 RTP/AVP 0"
bool is_stream(std::string_view text, std::string_view medium) {
    const std::string_view line = lines_of(text).front();
    return line.starts_with(fmt::format("m={} ", medium)) && line.find(" RTP/AVP ") != std::string_view::npos;
}

SIP_SDP decode_stream(const Description &offer, std::string_view stream) {
    SIP_SDP sdp;
    decode_session(fmt::format("{}\n{}", offer.session, stream), sdp);
    return sdp;
}

// The media line with port 0, which declines the stream.
std::string declined(std::string_view stream) {
    const std::string_view line = lines_of(stream).front();
    const std::size_t port = std::min(line.find(' '), line.size());
    const std::size_t profile = std::min(line.find(' ', port + 1), line.size());
    return fmt::format("{} 0{}\r\n", line.substr(0, port), line.substr(profile));
}

// ----------------------------------------------------------------------------------------------------------- direction

enum Flow : unsigned { none = 0, sends = 1, receives = 2, both = 3 };

constexpr std::string_view direction_names[] = {"a=sendrecv", "a=sendonly", "a=recvonly", "a=inactive"};
constexpr unsigned flows[] = {both, sends, receives, none};

std::optional<unsigned> flow_in(std::string_view text) {
    for (std::size_t i = 0; i < std::size(direction_names); ++i)
        if (has_line(text, direction_names[i]))
            return flows[i];
    return std::nullopt;
}

// Index of the direction that answers a stream. What the other side sends is received. Nothing is sent to a side that
// does not receive or has no address.
int answer_direction(const Description &offer, std::string_view stream) {
    unsigned flow = flow_in(stream).value_or(flow_in(offer.session).value_or(both));
    constexpr std::string_view no_address = "c=IN IP4 0.0.0.0";
    const bool own_address = stream.find("\nc=") != std::string_view::npos;
    if (has_line(own_address ? stream : offer.session, no_address))
        flow &= ~unsigned{receives};
    const unsigned answer = ((flow & sends) != 0U ? receives : none) | ((flow & receives) != 0U ? sends : none);
    return static_cast<int>(std::find(std::begin(flows), std::end(flows), answer) - std::begin(flows));
}

// --------------------------------------------------------------------------------------------------------------- audio

const CODEC_RTPMAP *find_payload(const SIP_SDP &sdp, e_codec codec) {
    const auto *const found = std::find_if(std::begin(sdp.rtpmap), std::end(sdp.rtpmap),
                                           [codec](const CODEC_RTPMAP &entry) { return entry.a_coder == codec; });
    return found != std::end(sdp.rtpmap) ? found : nullptr;
}

// Follows the lines that the encoder writes for the codecs.
std::string describe_events(int payload) { return fmt::format("a=fmtp:{} 0-15\r\n", payload); }

// Takes the first codec in common, with the payload numbers of the offer. Returns false if there is none: the stream is
// declined.
bool answer_audio(const Description &text, const Media &media, SIP_SDP &sdp, std::string &attributes) {
    const SIP_SDP offer = decode_stream(text, text.streams[0]);
    const auto can_play = [&media](e_codec codec) {
        return std::find(media.codecs.begin(), media.codecs.end(), codec) != media.codecs.end();
    };
    const auto *const codec = std::find_if(std::begin(offer.a_coders), std::end(offer.a_coders), can_play);
    const bool can_answer = codec != std::end(offer.a_coders);
    sdp.a_use = 1;
    sdp.a_conten_nouse = 1;
    set_text(sdp.a_addr.ip, media.ip);
    sdp.a_addr.port = can_answer && offer.a_addr.port != 0 ? media.port : 0;
    sdp.a_ptime = offer.a_ptime;
    sdp.a_media = answer_direction(text, text.streams[0]);
    sdp.a_coders[0] = can_answer ? *codec : G711_A; // a media line needs a payload, even with port 0
    if (!can_answer)
        return false;
    if (const CODEC_RTPMAP *const entry = find_payload(offer, *codec))
        sdp.rtpmap[0] = *entry;
    if (const CODEC_RTPMAP *const events = find_payload(offer, TE101)) {
        sdp.a_coders[1] = TE101;
        sdp.rtpmap[1] = *events;
        attributes = describe_events(events->a_payload);
    }
    return true;
}

// --------------------------------------------------------------------------------------------------------------- video

constexpr std::string_view video_codecs[] = {"H264/90000", "H263/90000", "H263-1998/90000", "H261/90000"};

bool can_show(std::string_view stream, int payload) {
    return std::any_of(std::begin(video_codecs), std::end(video_codecs), [&](std::string_view codec) {
        return has_line(stream, fmt::format("a=rtpmap:{} {}", payload, codec));
    });
}

// The attributes of one payload in the offer.
std::string payload_lines(std::string_view stream, int payload) {
    std::string kept;
    for (const std::string_view line : lines_of(stream))
        if (line.starts_with(fmt::format("a=rtpmap:{} ", payload)) ||
            line.starts_with(fmt::format("a=fmtp:{} ", payload)))
            kept += fmt::format("{}\r\n", line);
    return kept;
}

// Takes the first codec in common. Returns false if the stream has none, or if it was declined by its sender.
bool answer_video(const Description &text, std::string_view stream, const Media &media, SIP_SDP &sdp,
                  std::string &attributes) {
    if (!is_stream(stream, "video"))
        return false;
    const SIP_SDP offer = decode_stream(text, stream);
    const auto *const payload = std::find_if(std::begin(offer.v_coders), std::end(offer.v_coders),
                                             [stream](int number) { return can_show(stream, number); });
    if (offer.v_addr.port == 0 || payload == std::end(offer.v_coders))
        return false;
    attributes =
        fmt::format("{}{}\r\n", payload_lines(stream, *payload), direction_names[answer_direction(text, stream)]);
    sdp.v_use = 1;
    set_text(sdp.v_addr.ip, media.ip);
    sdp.v_addr.port = media.port + 2;
    sdp.v_coders[0] = *payload;
    return true;
}

} // namespace

// The encoder writes an audio stream, its attributes, a video stream, its attributes. Declined streams fit in after the
// attributes of either, but not before the audio stream.
bool answer_offer(std::string_view offer, const Media &media, SIP_SDP &sdp) {
    const Description text = split(offer);
    if (text.streams.empty() || !is_stream(text.streams[0], "audio"))
        return false;
    std::string after_audio;
    std::string after_video;
    const bool has_audio = answer_audio(text, media, sdp, after_audio);
    for (std::size_t i = 1; i < text.streams.size(); ++i)
        if (sdp.v_use == 1)
            after_video += declined(text.streams[i]);
        else if (!answer_video(text, text.streams[i], media, sdp, after_video))
            after_audio += declined(text.streams[i]);
    if (after_audio.size() >= sizeof sdp.a_content || after_video.size() >= sizeof sdp.v_content)
        return false;
    set_text(sdp.a_content, after_audio);
    set_text(sdp.v_content, after_video);
    return has_audio || sdp.v_use == 1;
}

SIP_SDP make_offer(const Media &media) {
    SIP_SDP sdp{};
    sdp.a_use = 1;
    sdp.a_conten_nouse = 1;
    set_text(sdp.a_addr.ip, media.ip);
    sdp.a_addr.port = media.port;
    constexpr e_codec codecs[] = {G711_A, G711_U, TE101};
    constexpr int telephone_events = 101;
    std::copy(std::begin(codecs), std::end(codecs), sdp.a_coders);
    sdp.rtpmap[0] = {TE101, telephone_events};
    set_text(sdp.a_content, describe_events(telephone_events));
    return sdp;
}

Body body_of(const SIP_CODE_MSG &message) {
    constexpr std::string_view session = "application/sdp";
    if (std::string_view(message.xml_buf).find_first_not_of(" \t\r\n") == std::string_view::npos)
        return Body::none;
    return strncasecmp(message.content.type, session.data(), session.size()) == 0 ? Body::session : Body::other;
}

void set_session(SIP_CODE_MSG &message, const SIP_SDP &sdp, long version) {
    message.sdp = sdp;
    message.sdp.o_sec = version;
    message.content.use = 1;
    set_text(message.content.type, "application/sdp");
}
