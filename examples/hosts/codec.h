// The codec, as the hosts use it: a text into a record, a record into a text, a byte stream into texts.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <sipcode/code.h>

// False when the message is refused.
bool decode(std::string_view message, SIP_CODE_MSG &record);

// The request or response that the record's method asks for; empty when the codec refuses the record.
std::string encode(SIP_CODE_MSG &record);

enum class Framing { message, keep_alive, incomplete, broken };

struct Frame {
    Framing what;
    std::size_t length; // of the message, or of the line ends that keep a connection alive
};

// What stands at the start of a stream (RFC 3261 section 18.3). A broken one cannot be read on.
Frame frame(std::string_view stream);
