// The two loggers, on spdlog. Each call writes one line to standard error, which begins with its level.
//
//   error: Bad request protocol SIP/2.1             level 0: the sender made an error
//   warning: Too many SIP headers. Ignoring         any other level: the library gave up on something
//
// A program that wants the lines elsewhere, or with time, file and source line, registers a logger of its own named
// "sipcode" with spdlog before the library first logs.
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include "host.h"

namespace {

constexpr const char *logger_name = "sipcode";

// A message of the library shows one text of at most 4095 characters.
constexpr size_t line_size = 8192;

std::shared_ptr<spdlog::logger> find_or_make_logger() {
    if (auto logger = spdlog::get(logger_name))
        return logger;
    auto logger = spdlog::stderr_logger_mt(logger_name);
    logger->set_pattern("%l: %v");
    return logger;
}

// Received text must not start a new line in the log or reach a terminal as a control sequence.
std::string on_one_line(std::string_view text) {
    if (text.ends_with('\n'))
        text.remove_suffix(1);
    std::string line;
    line.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\r')
            line += "\\r";
        else if (c == '\n')
            line += "\\n";
        else if (byte < 0x20 || byte == 0x7f)
            line += fmt::format("\\x{:02x}", byte);
        else
            line += c;
    }
    return line;
}

[[gnu::format(printf, 3, 0)]] void write_line(int level, spdlog::source_loc place, const char *format,
                                              va_list arguments) noexcept {
    static const std::shared_ptr<spdlog::logger> logger = find_or_make_logger();
    char text[line_size] = "";
    if (std::vsnprintf(text, sizeof text, format, arguments) < 0)
        text[0] = '\0';
    logger->log(place, level == 0 ? spdlog::level::err : spdlog::level::warn, on_one_line(text));
}

} // namespace

int Log_Trace_Proc(int level, int, const char *file, int line, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    write_line(level, spdlog::source_loc(file, line, ""), format, arguments);
    va_end(arguments);
    return 0;
}

int MT_Log_Process(int first, int, int, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    write_line(first, spdlog::source_loc(), format, arguments);
    va_end(arguments);
    return 0;
}
