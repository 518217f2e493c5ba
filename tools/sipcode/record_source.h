// Reads records from JSON text.
#pragma once

#include <string>
#include <vector>

#include "code.h"

struct NamedRecord {
    std::string place; // its name in error messages: that of the text, with a number if there are several
    SIP_CODE_MSG record;
    std::string refusal; // why decode refused the message; then the record is empty
};

// The records of a text that holds one JSON object after another, as decode prints them of messages or of a capture.
// Throws std::runtime_error if the text holds none, is malformed, or does not fit the record; what() begins with the
// place.
std::vector<NamedRecord> read_records(const std::string &text, const std::string &name);
