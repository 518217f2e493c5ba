// Where a message ends in a byte stream.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

// Longest text that is waited for: a message that states more ends behind this many bytes.
inline constexpr std::size_t longest_stream_message = 1 << 16;

// Length of the message that begins the text, its body by Content-Length; nothing while the text may still go on.
std::optional<std::size_t> stream_message_length(std::string_view text);

// Whether the line is one that begins a message: "SIP/2.0 200 OK", "INVITE sip:a@b SIP/2.0", with any status, method, URI and
// version.
bool is_start_line(std::string_view line);
