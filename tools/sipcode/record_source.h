// Reads records from JSON text.
#pragma once

#include <string>
#include <vector>

#include "code.h"

struct NamedRecord {
    std::string place; // its name in error messages: that of the text, with a number if there are several
    SIP_CODE_MSG record;
};

// The records of a text that holds one JSON object after another. Throws std::runtime_error if the text holds none, is
// malformed, or does not fit the record; what() begins with the place.
std::vector<NamedRecord> read_records(const std::string &text, const std::string &name);
