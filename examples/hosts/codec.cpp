// The codec, see codec.h. No other file of the hosts calls it to read or write a message.
#include "codec.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include <sipcode/decode.h>
#include <sipcode/encode.h>

namespace {

constexpr std::size_t longest_message = 4095;

constexpr bool is_letter_of(char a, char b) { return (a | 0x20) == (b | 0x20); }

bool is_length_name(std::string_view name) {
    name = name.substr(0, name.find_last_not_of(" \t") + 1);
    const auto is = [name](std::string_view wanted) {
        return std::equal(name.begin(), name.end(), wanted.begin(), wanted.end(), is_letter_of);
    };
    return is("content-length") || is("l");
}

std::optional<std::size_t> number(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    text = text.substr(0, text.find_last_not_of(" \t") + 1);
    std::size_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

std::optional<std::size_t> content_length(std::string_view headers) {
    for (std::size_t end = headers.find("\r\n"); end != std::string_view::npos; end = headers.find("\r\n")) {
        const std::string_view line = headers.substr(0, end);
        const std::size_t colon = line.find(':');
        if (colon != std::string_view::npos && is_length_name(line.substr(0, colon)))
            return number(line.substr(colon + 1));
        headers.remove_prefix(end + 2);
    }
    return std::nullopt;
}

} // namespace

bool decode(std::string_view message, SIP_CODE_MSG &record) {
    std::array<char, longest_message + 1> text;
    *std::copy_n(message.begin(), std::min(message.size(), longest_message), text.begin()) = '\0';
    record = {};
    return Sip_Decode(text.data(), &record) == 1;
}

std::string encode(SIP_CODE_MSG &record) {
    std::array<char, std::max(SIP_REQUEST_SIZE, SIP_RESPONSE_SIZE)> text;
    const bool is_request = record.method < SIP_RESPONSE_MSG_100_TRY;
    const int result = is_request ? SIP_Encode_Message_Reuqest(text.data(), &record)
                                  : SIP_Encode_Message_Response(text.data(), &record);
    return result == 1 ? std::string(text.data()) : std::string();
}

Frame frame(std::string_view stream) {
    if (const std::size_t begin = std::min(stream.find_first_not_of("\r\n"), stream.size()); begin > 0)
        return {Framing::keep_alive, begin};
    const std::size_t end = stream.find("\r\n\r\n");
    if (end == std::string_view::npos)
        return {stream.size() > longest_message ? Framing::broken : Framing::incomplete, 0};
    const std::optional<std::size_t> body = content_length(stream.substr(0, end + 2));
    if (!body || *body > longest_message || end + 4 + *body > longest_message)
        return {Framing::broken, 0};
    const std::size_t length = end + 4 + *body;
    return {stream.size() < length ? Framing::incomplete : Framing::message, length};
}
