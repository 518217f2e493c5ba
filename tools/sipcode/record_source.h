// Records out of JSON text.
#pragma once

#include <string>
#include <vector>

#include "code.h"

struct NamedRecord {
    std::string place; // what messages call it: the text's name, with its number where there are several
    SIP_CODE_MSG record;
};

// The records of a text that holds JSON objects, one behind the other. Throws std::runtime_error when it holds none, is
// malformed, or does not fit the record; what() begins with the place.
std::vector<NamedRecord> read_records(const std::string &text, const std::string &name);
