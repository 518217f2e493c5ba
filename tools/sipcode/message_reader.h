// Reads the messages of a file, a capture or plain text, one after another.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "capture_messages.h"
#include "message_source.h"

struct ReceivedMessage {
    std::string_view text;
    std::string_view place;        // its name in error messages: "calls.pcap: message 3"
    const CapturedMessage *origin; // null if the file is not a capture
    std::size_t first_line;        // number of its first line in the file; 1 in a capture
};

using TakeMessage = std::function<void(const ReceivedMessage &message)>;

// Summarises what became of the messages of a capture: "1 decoded, 2 refused".
using Summary = std::function<std::string()>;

// Gives each message to take. The filter is a BPF expression for the packets of a capture; an empty one matches all.
// While a capture is read, progress is shown. A line of counts on standard error follows it.
//
// Returns the exit status: misuse if the capture is damaged (the messages before the damage were given), if the filter
// is invalid or does not apply, and success otherwise. Throws SourceError.
int read_messages(Source &source, const std::string &filter, const TakeMessage &take, const Summary &summary);
