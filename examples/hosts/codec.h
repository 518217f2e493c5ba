// The codec as the hosts use it: text to record, record to text, byte stream to messages.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <sipcode/code.h>

// Returns false if the message is refused.
bool decode(std::string_view message, SIP_CODE_MSG &record);

// The request or response, by the record's method. Empty if the codec refuses the record.
std::string encode(SIP_CODE_MSG &record);

enum class Framing { message, keep_alive, incomplete, broken };

struct Frame {
    Framing what;
    std::size_t length; // of the message, or of the keep-alive line ends
};

// What a stream begins with (RFC 3261 section 18.3). Reading cannot go on after a broken one.
Frame frame(std::string_view stream);
