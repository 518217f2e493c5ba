// One message through Sip_Decode, see message_decoder.h.
#include "message_decoder.h"

#include <string_view>

#include <fmt/core.h>
#include <spdlog/details/null_mutex.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>

#include "decode.h"
#include "library_prints.h"
#include "progress.h"

namespace {

constexpr std::size_t longest_message = 4095;

// What the library logs in front of a refusal. Other refusals are silent.
struct LoggedRefusal {
    std::string_view line;
    std::string_view reason;
};
constexpr LoggedRefusal logged_refusals[] = {
    {"bogus uri in <>", "the request URI stands in angle brackets"},
    {"Bad request protocol", "the request line does not end in SIP/2.0"},
    {"Decode CALL-ID", "no Call-ID"},
    {"Decode Cseq : there is no cseq header", "no CSeq"},
    {"Decode Cseq : there is no seq", "no number in the CSeq"},
};

void note_what_is_left_out(const std::string &message, const std::string &place) {
    const std::size_t end = message.find('\0');
    if (end < longest_message)
        tell(fmt::format("{}: note: the message ends at its NUL, character {}", place, end + 1));
    else if (message.size() > longest_message)
        tell(fmt::format("{}: note: decoded from its first {} characters of {}", place, longest_message,
                         message.size()));
}

bool decode_silently(char *message, SIP_CODE_MSG &record) {
    const DiscardLibraryPrints discard;
    return Sip_Decode(message, &record) == 1;
}

} // namespace

class MessageDecoder::Log : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
  public:
    void begin(const std::string &place) {
        place_ = place;
        refusal_ = {};
    }

    std::string_view refusal() const { return refusal_; }

  private:
    void sink_it_(const spdlog::details::log_msg &message) override {
        const std::string_view line(message.payload.data(), message.payload.size());
        const auto level = spdlog::level::to_string_view(message.level);
        tell(fmt::format("{}: {}: {}", place_, std::string_view(level.data(), level.size()), line));
        for (const LoggedRefusal &logged : logged_refusals) {
            if (line.starts_with(logged.line))
                refusal_ = logged.reason;
        }
    }

    void flush_() override {}

    std::string place_;
    std::string_view refusal_;
};

MessageDecoder::MessageDecoder() : log_(std::make_shared<Log>()) {
    spdlog::register_logger(std::make_shared<spdlog::logger>("sipcode", log_));
}

Decoded MessageDecoder::decode(std::string message, const std::string &place) {
    // The library sets the count before it refuses a message for having no Via; in any other refusal this one is left.
    constexpr int not_counted = -1;

    note_what_is_left_out(message, place);
    log_->begin(place);
    Decoded decoded{};
    decoded.record.via_count = not_counted;
    if (decode_silently(message.data(), decoded.record))
        return decoded;
    if (!log_->refusal().empty())
        decoded.refusal = log_->refusal();
    else if (decoded.record.via_count == not_counted)
        decoded.refusal = "no usable start line, or no header line behind it";
    else
        decoded.refusal = "no Via";
    if (decoded.record.via_count == not_counted)
        decoded.record.via_count = 0;
    return decoded;
}
