// What a record loses of its message.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "message_lines.h"
#include "safe.h"

enum class Loss {
    refused, // the whole message
    unread,  // the text past the longest that is decoded
    unknown, // a method or status that has no identifier
    header,  // a header line that no member takes
    line,    // a header line that repeats another or has a wrong form
    via,
    route,
    stream, // of a session description
    codec,
    item, // of a header, between commas
    cut,  // the end of a value
};
inline constexpr std::size_t loss_count = static_cast<std::size_t>(Loss::cut) + 1;

// "refused", "unread", "unknown", "ignored" for a line, "dropped" for a part of one, "cut".
std::string_view loss_name(Loss loss);

struct Finding {
    Loss loss;
    Range place; // in the message
    std::string text;
    std::string subject; // what is lost: the name of a header, an encoding, the member that cuts
    // Of a cut value; 0 otherwise:
    std::size_t characters = 0; // that were received
    std::size_t kept = 0;
};

// Why the library refused a message; empty for SIP_DECODE_DONE.
std::string_view refusal_text(SIP_DECODE_OUTCOME outcome);

// The findings, in the order of their places. A part is ignored or dropped if removing it does not change the record.
// first_line is the number of the message's first line in its file, for texts that name another line.
std::vector<Finding> check_message(std::string_view message, std::size_t first_line);

// Number of the line that holds a place; the message's first line has the number first_line.
std::size_t line_number(std::string_view message, std::size_t place, std::size_t first_line);
