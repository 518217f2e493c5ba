// Where a message ends in a byte stream.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

// Longest text that is waited for: a message that states more ends behind this many bytes.
inline constexpr std::size_t longest_stream_message = 1 << 16;

// Length of the message that begins the text with its start line; nothing while more of it is to come. One that does not tell its length ends in
// front of the next start line, or with what is there.
std::optional<std::size_t> stream_message_length(std::string_view text);

struct StartLineSearch {
    bool found;
    std::size_t line; // where it begins; when it was not found, where the last line does, which may still be growing
};

// Looks for a start line among the lines from this one on.
StartLineSearch find_start_line(std::string_view text, std::size_t line);

// Whether the line is one that begins a message: "SIP/2.0 200 OK", "INVITE sip:a@b SIP/2.0", with any status, method, URI and
// version.
bool is_start_line(std::string_view line);
