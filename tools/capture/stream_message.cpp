// Where a message ends in a byte stream, see stream_message.h.
#include "stream_message.h"

#include <algorithm>
#include <cctype>

#include "safe.h"

namespace {

bool equals_nocase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

std::string_view trim_end(std::string_view text) { return text.substr(0, text.find_last_not_of(" \t\r\n") + 1); }

// "SIP/2.0", with any version. "SIP/2.0/UDP" is from a Via.
bool is_protocol(std::string_view word) {
    constexpr std::string_view name = "SIP/";
    return equals_nocase(word.substr(0, name.size()), name) &&
           word.find_first_not_of("0123456789.", name.size()) == std::string_view::npos;
}

// A token (RFC 3261 section 25.1). The limit on its length rules out most ends of a body.
bool is_method(std::string_view word) {
    constexpr std::size_t longest_method = 32;
    constexpr std::string_view marks = "-.!%*_+`'~";
    return !word.empty() && word.size() <= longest_method &&
           std::all_of(word.begin(), word.end(), [=](unsigned char c) {
               return std::isalnum(c) != 0 || marks.find(static_cast<char>(c)) != std::string_view::npos;
           });
}

} // namespace

StartLineSearch find_start_line(std::string_view text, std::size_t line) {
    for (std::size_t end = text.find('\n', line); end != std::string_view::npos; end = text.find('\n', line)) {
        if (is_start_line(text.substr(line, end - line)))
            return {true, line};
        line = end + 1;
    }
    return {false, line};
}

std::optional<std::size_t> stream_message_length(std::string_view text) {
    std::size_t length = 0;
    if (SIP_Frame_Stream(text.data(), text.size(), &length) == SIP_FRAME_MORE)
        return std::nullopt;
    if (length == 0) {
        const StartLineSearch next = find_start_line(text, text.find('\n') + 1);
        return next.found ? next.line : text.size();
    }
    length = std::min(length, longest_stream_message);
    return length <= text.size() ? std::optional(length) : std::nullopt;
}

bool is_start_line(std::string_view line) {
    const std::string_view start_line = trim_end(line);
    const std::string_view first_word = start_line.substr(0, start_line.find(' '));
    return is_protocol(first_word) || (is_method(first_word) && first_word.size() < start_line.size() &&
                                       is_protocol(start_line.substr(start_line.find_last_of(' ') + 1)));
}
