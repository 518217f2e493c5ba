// Decodes one message, see message_decoder.h.
#include "message_decoder.h"

#include <string_view>
#include <utility>

#include <fmt/core.h>
#include <spdlog/details/null_mutex.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

#include "console.h"
#include "message_check.h"

namespace {

constexpr std::size_t longest_message = SIP_LONGEST_MESSAGE;

void note_unread_text(std::string_view message, std::string_view place) {
    const std::size_t end = message.find('\0');
    if (end < longest_message)
        print_error(fmt::format("{}: note: the message ends at its NUL, character {}", place, end + 1));
    else if (message.size() > longest_message)
        print_error(fmt::format("{}: note: only the first {} of {} characters are decoded", place, longest_message,
                                message.size()));
}

void set_log(spdlog::sink_ptr sink) {
    spdlog::register_logger(std::make_shared<spdlog::logger>("sipcode", std::move(sink)));
}

} // namespace

void discard_library_log() { set_log(std::make_shared<spdlog::sinks::null_sink_st>()); }

class MessageDecoder::Log : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
  public:
    void begin(std::string_view place) { place_ = place; }

  private:
    void sink_it_(const spdlog::details::log_msg &message) override {
        const std::string_view line(message.payload.data(), message.payload.size());
        const auto level = spdlog::level::to_string_view(message.level);
        print_error(fmt::format("{}: {}: {}", place_, std::string_view(level.data(), level.size()), line));
    }

    void flush_() override {}

    std::string_view place_;
};

MessageDecoder::MessageDecoder() : log_(std::make_shared<Log>()) { set_log(log_); }

Decoded &MessageDecoder::decode(std::string_view message, std::string_view place) {
    note_unread_text(message, place);
    log_->begin(place);
    SIP_DECODE_REPORT report;
    SIP_Decode_Buffer(message.data(), message.size(), &decoded_.record, &report);
    SIP_Read_Start_Line(message.data(), message.size(), &decoded_.start);
    decoded_.text = message;
    decoded_.refusal = refusal_text(report.outcome);
    decoded_.cut_values = report.cut_count;
    return decoded_;
}
