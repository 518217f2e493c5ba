// The codec as the hosts use it: text to record, record to text, byte stream to messages.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <sipcode/code.h>

// A received message: its record, and what the record leaves out.
struct Received : SIP_CODE_MSG {
    int status = 0;             // of a response, even if the codec has no identifier for it; 0 for a request
    std::string supported_tags; // the option tags of all lines, separated by commas
    std::string required_tags;
};

// Returns false if the message is refused.
bool decode(std::string_view message, Received &received);

// Reads a session description alone. Returns false if the codec finds no stream in it.
bool decode_session(std::string_view description, SIP_SDP &sdp);

// The request or response, by the record's method. Empty if the codec refuses the record.
std::string encode(SIP_CODE_MSG &record);

enum class Framing { message, keep_alive, incomplete, broken };

struct Frame {
    Framing what;
    std::size_t length; // of the message, or of the keep-alive line ends
};

// What a stream begins with (RFC 3261 section 18.3). Reading cannot go on after a broken one.
Frame frame(std::string_view stream);
