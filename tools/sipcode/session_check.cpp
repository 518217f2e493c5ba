// Streams and codecs that the record loses, see session_check.h. The sections that it keeps verbatim do not count.
#include "session_check.h"

#include <algorithm>
#include <cctype>
#include <iterator>
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
    void add(const Range &place, std::string text) { found_.push_back({Loss::dropped, place, std::move(text)}); }

    // "m=audio 4000 RTP/AVP 0 8 101"
    void check_stream(const Range &line) {
        const std::vector<Range> parts = words(message_, {line.begin + 2, line.end});
        const Range value{line.begin + 2, line.end};
        if (parts.size() < 2)
            return;
        if (trial_.is_same_without({&value, 1}, same_streams))
            return add(line, "the record holds nothing of this stream");
        if (trial_.is_same_with_others({&parts[1], 1}, same_streams))
            add(parts[1], "a later stream of the same kind replaces this address and port");
        const std::string_view medium = text_of(message_, parts[0]);
        // From the last, so that the first of two equal ones counts.
        for (std::size_t i = parts.size(); i-- > 3;) {
            if (medium == "audio")
                check_audio_codec(parts[i]);
            else if (medium == "video")
                check_video_payload(parts[i]);
        }
    }

    // A codec is known by its payload number or by its encoding.
    void check_audio_codec(const Range &payload) {
        const std::string_view number = text_of(message_, payload);
        if (!is_number(number))
            return;
        std::vector<Range> places = encodings_of(number);
        const std::string encoding =
            places.empty() ? "" : fmt::format(" ({})", encoding_in(places.front(), number.size()));
        places.push_back(payload);
        if (!trial_.is_same_without(places, same_audio_codecs))
            return;
        trial_.remove(places);
        const bool is_full = trial_.record().sdp.a_coders[std::size(trial_.record().sdp.a_coders) - 1] != UNKONW;
        add(payload, fmt::format("payload {}{} {}", number, encoding,
                                 is_full ? "does not fit in sdp.a_coders" : "is not a codec that the record knows"));
    }

    void check_video_payload(const Range &payload) {
        if (!is_number(text_of(message_, payload)) || !trial_.is_same_without({&payload, 1}, same_video_payloads))
            return;
        trial_.remove({&payload, 1});
        add(payload, fmt::format("payload {} does not fit in sdp.v_coders", text_of(message_, payload)));
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
