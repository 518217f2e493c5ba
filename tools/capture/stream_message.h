// Where a message ends in a byte stream.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

// The longest message that is waited for. One that states a greater length ends after this many bytes.
inline constexpr std::size_t longest_stream_message = 1 << 16;

// Length of the message whose start line begins the text. Returns nothing if the message is not complete yet. A message
// that states no length ends before the next start line, or at the end of the text.
std::optional<std::size_t> stream_message_length(std::string_view text);

struct StartLineSearch {
    bool found;
    std::size_t line; // where it begins; if it was not found, where the last line begins, which may be incomplete
};

// Looks for a start line, from this line on.
StartLineSearch find_start_line(std::string_view text, std::size_t line);

// Whether the line looks like a start line: "SIP/2.0 200 OK" or "INVITE sip:a@b SIP/2.0", with any status, method, URI
// and version.
bool is_start_line(std::string_view line);
