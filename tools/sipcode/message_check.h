// What the codec will make of a message: what of it the record does not hold.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "message_lines.h"
#include "safe.h"

enum class Loss {
    refused, // the whole message
    unread,  // the text behind the longest that is decoded
    unknown, // a method or a status that no identifier stands for
    ignored, // a header line
    dropped, // a part of a header or of a session description
    cut,     // the end of a value
};

std::string_view loss_name(Loss loss);

struct Finding {
    Loss loss;
    Range place; // in the message
    std::string text;
    // Of a cut: the member, empty when the value was cut before it was read; characters that there were, and that are kept.
    std::string member = {};
    std::size_t characters = 0;
    std::size_t kept = 0;
};

// Says why the library refused a message; empty for SIP_DECODE_DONE.
std::string_view refusal_text(SIP_DECODE_OUTCOME outcome);

// In the order of their places. What is ignored or dropped is what can be taken out of the message without a change of the
// record. first_line is the number of the message's first line in its file, for texts that name another line.
std::vector<Finding> check_message(std::string_view message, std::size_t first_line);

// Number of the line on which a place stands; the message's first line has the number first_line.
std::size_t line_number(std::string_view message, std::size_t place, std::size_t first_line);
