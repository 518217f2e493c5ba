// Reads the messages of a file, a capture or plain text, one after another.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "capture_messages.h"
#include "choice.h"

struct ReceivedMessage {
    std::string_view text;
    std::string_view place;        // its name in error messages: "calls.pcap: message 3"
    const CapturedMessage *origin; // null if the file is not a capture
    std::size_t first_line;        // number of its first line in the file; 1 in a capture
};

using TakeMessage = std::function<void(const ReceivedMessage &message)>;

// Summarises what became of the messages of a capture: "1 decoded, 2 refused". An empty text is not shown.
using Summary = std::function<std::string()>;

// Gives each chosen message of a file to take. "-" is standard input. While a capture is read, progress is shown. A
// line of counts on standard error follows it. An interrupt ends the reading, and the counts are still shown.
//
// Returns the exit status: misuse if the capture is damaged (the messages before the damage were given), if the filter
// is invalid, or if the choice does not apply to the file; interrupted after an interrupt; otherwise success. Throws
// SourceError.
int read_messages(const std::string &file, const Choice &choice, const TakeMessage &take, const Summary &summary);

using TakeCaptured = std::function<void(const CapturedMessage &message)>;

// Gives each message of a capture to take. Shows nothing but progress, and what is wrong with the file. Throws
// SourceError and CaptureError.
void take_messages(const std::string &file, const std::string &filter, const TakeCaptured &take);

// Reports the chosen calls of a capture, before a second reading of it. Throws as above.
void track_calls(const std::string &file, const Choice &choice, const CallTracker::Report &report);
