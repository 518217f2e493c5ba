// Streams and codecs that the record loses, see session_check.h. The sections that it keeps verbatim do not count.
#include "session_check.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <iterator>
#include <span>
#include <string>

#include <fmt/core.h>

namespace {

template <typename Element, std::size_t size>
bool same_elements(const Element (&a)[size], const Element (&b)[size]) {
    return std::equal(std::begin(a), std::end(a), std::begin(b));
}

bool same_audio_codecs(const SIP_CODE_MSG &a, const SIP_CODE_MSG &b) {
    return same_elements(a.sdp.a_coders, b.sdp.a_coders);
}

bool same_video_payloads(const SIP_CODE_MSG &a, const SIP_CODE_MSG &b) {
    return same_elements(a.sdp.v_coders, b.sdp.v_coders);
}

bool same_address(const IPV4_ADDRESS &a, const IPV4_ADDRESS &b) {
    return a.port == b.port && std::string_view(a.ip) == std::string_view(b.ip);
}

bool same_streams(const SIP_CODE_MSG &a, const SIP_CODE_MSG &b) {
    return a.sdp.a_use == b.sdp.a_use && a.sdp.v_use == b.sdp.v_use && a.sdp.fax_use == b.sdp.fax_use &&
           same_address(a.sdp.a_addr, b.sdp.a_addr) && same_address(a.sdp.v_addr, b.sdp.v_addr) &&
           same_address(a.sdp.fax.fax_addr, b.sdp.fax.fax_addr) && same_audio_codecs(a, b) && same_video_payloads(a, b);
}

bool is_number(std::string_view word) {
    return !word.empty() && std::all_of(word.begin(), word.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

class SessionCheck {
  public:
    SessionCheck(std::string_view message, const SIP_SLICE &body, Trial &trial, std::vector<Finding> &found)
        : message_(message), lines_(plain_lines(message, {body.at, body.at + body.length})), trial_(trial),
          found_(found) {}

    void run() {
        const auto begins_session = [this](const Range &line) { return text_of(message_, line).starts_with("v=0"); };
        if (std::none_of(lines_.begin(), lines_.end(), begins_session))
            return;
        for (const Range &line : lines_) {
            if (text_of(message_, line).starts_with("m="))
                check_stream(line);
        }
    }

  private:
    void add(Loss loss, const Range &place, std::string text, std::string_view subject) {
        found_.push_back({loss, place, std::move(text), std::string(subject)});
    }

    // "m=audio 4000 RTP/AVP 0 8 101"
    void check_stream(const Range &line) {
        const Range value{line.begin + 2, line.end};
        const std::vector<Range> parts = words(message_, value);
        if (parts.size() < 2)
            return;
        const std::string_view medium = text_of(message_, parts[0]);
        const bool is_shown = is_only_stream(medium) && shows_port(medium, parts[1]);
        if (!is_shown && trial_.is_same_without({&value, 1}, same_streams))
            return add(Loss::stream, line, "the record holds nothing of this stream", medium);
        if (!is_shown && trial_.is_same_with_others({&parts[1], 1}, same_streams))
            add(Loss::stream, parts[1], "a later stream of the same kind replaces this address and port", medium);
        if (is_shown && shows_payloads(medium, parts))
            return;
        // From the last, so that the first of two equal ones counts.
        for (std::size_t i = parts.size(); i-- > 3;) {
            if (medium == "audio")
                check_audio_codec(parts[i]);
            else if (medium == "video")
                check_video_payload(parts[i]);
        }
    }

    // ---- what the record shows without a trial

    bool is_only_stream(std::string_view medium) const {
        const std::string beginning = fmt::format("m={} ", medium);
        return 1 == std::count_if(lines_.begin(), lines_.end(),
                                  [&](const Range &line) { return text_of(message_, line).starts_with(beginning); });
    }

    bool shows_port(std::string_view medium, const Range &port) const {
        const SIP_SDP &sdp = trial_.record().sdp;
        const int read = medium == "audio" ? sdp.a_addr.port : medium == "video" ? sdp.v_addr.port : 0;
        return read != 0 && number_in(port) == read;
    }

    // Each payload fills a slot of its own, so none is lost if there are as many slots.
    bool shows_payloads(std::string_view medium, std::span<const Range> parts) const {
        constexpr std::size_t before = 3; // medium, port and profile
        if (parts.size() <= before)
            return true;
        parts = parts.subspan(before);
        if (!std::all_of(parts.begin(), parts.end(), [this](const Range &part) { return number_in(part) >= 0; }))
            return false;
        return medium == "audio" ? shows_audio_codecs(parts) : shows_video_payloads(parts);
    }

    // A payload has its slot by its number, or by its encoding if that is dynamic.
    bool shows_audio_codecs(std::span<const Range> payloads) const {
        constexpr int first_dynamic = 96;
        const SIP_SDP &sdp = trial_.record().sdp;
        const auto is_used = [](const CODEC_RTPMAP &entry) { return entry.a_coder != UNKONW; };
        const auto *const end = std::find_if_not(std::begin(sdp.rtpmap), std::end(sdp.rtpmap), is_used);
        const bool are_dynamic = std::all_of(
            std::begin(sdp.rtpmap), end, [](const CODEC_RTPMAP &entry) { return entry.a_payload >= first_dynamic; });
        const auto has_encoding = [&](const Range &payload) {
            return std::any_of(std::begin(sdp.rtpmap), end, [number = number_in(payload)](const CODEC_RTPMAP &entry) {
                return entry.a_payload == number;
            });
        };
        const auto free_slots = std::count(std::begin(sdp.a_coders), std::end(sdp.a_coders), UNKONW);
        const auto by_number = std::ssize(sdp.a_coders) - free_slots - (end - std::begin(sdp.rtpmap));
        return free_slots != 0 && end != std::end(sdp.rtpmap) && are_dynamic &&
               by_number == std::ssize(payloads) - std::count_if(payloads.begin(), payloads.end(), has_encoding);
    }

    bool shows_video_payloads(std::span<const Range> payloads) const {
        const SIP_SDP &sdp = trial_.record().sdp;
        return payloads.size() < std::size(sdp.v_coders) && sdp.v_coders[payloads.size()] == 0 &&
               sdp.v_coders[payloads.size() - 1] != 0;
    }

    // -1 if it is not a number of at most nine digits.
    int number_in(const Range &range) const {
        constexpr std::size_t longest = 9;
        const std::string_view word = text_of(message_, range);
        int number = -1;
        if (is_number(word) && word.size() <= longest)
            std::from_chars(word.begin(), word.end(), number);
        return number;
    }

    // ---- what trials find

    // A codec is known by its payload number or by its encoding.
    void check_audio_codec(const Range &payload) {
        const std::string_view number = text_of(message_, payload);
        if (!is_number(number))
            return;
        std::vector<Range> places = encodings_of(number);
        const std::string_view encoding = places.empty() ? "" : encoding_in(places.front(), number.size());
        places.push_back(payload);
        if (!trial_.is_same_without(places, same_audio_codecs))
            return;
        trial_.remove(places);
        const bool is_full = trial_.record().sdp.a_coders[std::size(trial_.record().sdp.a_coders) - 1] != UNKONW;
        add(Loss::codec, payload,
            fmt::format("payload {}{}{}{} {}", number, encoding.empty() ? "" : " (", encoding,
                        encoding.empty() ? "" : ")",
                        is_full ? "does not fit in sdp.a_coders" : "is not a codec that the record knows"),
            encoding.empty() ? fmt::format("payload {}", number) : std::string(encoding));
    }

    void check_video_payload(const Range &payload) {
        if (!is_number(text_of(message_, payload)) || !trial_.is_same_without({&payload, 1}, same_video_payloads))
            return;
        trial_.remove({&payload, 1});
        add(Loss::codec, payload, fmt::format("payload {} does not fit in sdp.v_coders", text_of(message_, payload)),
            fmt::format("video payload {}", text_of(message_, payload)));
    }

    // Values of the lines "a=rtpmap:97 iLBC/8000" for a payload.
    std::vector<Range> encodings_of(std::string_view number) const {
        std::vector<Range> found;
        const std::string beginning = fmt::format("a=rtpmap:{} ", number);
        for (const Range &line : lines_) {
            if (text_of(message_, line).starts_with(beginning))
                found.push_back({line.begin + 2, line.end});
        }
        return found;
    }

    std::string_view encoding_in(const Range &value, std::size_t number_size) const {
        constexpr std::size_t name_size = std::string_view("rtpmap: ").size();
        return text_of(message_, value).substr(name_size + number_size);
    }

    std::string_view message_;
    std::vector<Range> lines_;
    Trial &trial_;
    std::vector<Finding> &found_;
};

} // namespace

void find_dropped_of_session(std::string_view message, Trial &trial, std::vector<Finding> &found) {
    SIP_SLICE body;
    if (SIP_Find_Body(message.data(), message.size(), &body) == 1)
        SessionCheck(message, body, trial, found).run();
}
