// Decodes one message, see message_decoder.h.
#include "message_decoder.h"

#include <string_view>

#include <fmt/core.h>
#include <spdlog/details/null_mutex.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>

#include "console.h"
#include "message_check.h"
#include "safe.h"

namespace {

constexpr std::size_t longest_message = SIP_LONGEST_MESSAGE;

void note_unread_text(const std::string &message, const std::string &place) {
    const std::size_t end = message.find('\0');
    if (end < longest_message)
        print_error(fmt::format("{}: note: the message ends at its NUL, character {}", place, end + 1));
    else if (message.size() > longest_message)
        print_error(fmt::format("{}: note: only the first {} of {} characters are decoded", place, longest_message,
                                message.size()));
}

SIP_DECODE_REPORT decode_silently(const std::string &message, SIP_CODE_MSG &record) {
    const DiscardLibraryPrints discard;
    SIP_DECODE_REPORT report;
    SIP_Decode_Buffer(message.data(), message.size(), &record, &report);
    return report;
}

} // namespace

class MessageDecoder::Log : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
  public:
    void begin(const std::string &place) { place_ = place; }

  private:
    void sink_it_(const spdlog::details::log_msg &message) override {
        const std::string_view line(message.payload.data(), message.payload.size());
        const auto level = spdlog::level::to_string_view(message.level);
        print_error(fmt::format("{}: {}: {}", place_, std::string_view(level.data(), level.size()), line));
    }

    void flush_() override {}

    std::string place_;
};

MessageDecoder::MessageDecoder() : log_(std::make_shared<Log>()) {
    spdlog::register_logger(std::make_shared<spdlog::logger>("sipcode", log_));
}

Decoded MessageDecoder::decode(const std::string &message, const std::string &place) {
    note_unread_text(message, place);
    log_->begin(place);
    Decoded decoded{};
    const SIP_DECODE_REPORT report = decode_silently(message, decoded.record);
    decoded.refusal = refusal_text(report.outcome);
    decoded.cut_values = report.cut_count;
    return decoded;
}
