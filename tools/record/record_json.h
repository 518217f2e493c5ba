// The codec record as JSON: an object whose members have the names and the order of the declarations.
//
//   {"method":5,"via_count":1,"callid":"a84b4c76e66710","via":{"branch":"z9hG4bK77","addr":{"ip":"192.0.2.1","port":5060}}, ...}
//
// A member that is not written has the value it has in a zeroed record, or belongs to a record that is switched off. Numbers
// stand as they are, an enumeration too. An array ends behind its last element that holds something; an element in front of
// it that holds nothing is 0 or {}. A pointer, which means nothing outside its process, is null.
//
// A text is a string. One that is not valid UTF-8, which a JSON string has to be, is an object instead that keeps every byte:
// {"latin1": "..."}, a string with one character from U+0000 to U+00FF for each byte.
#pragma once

#include <stdexcept>

#include <nlohmann/json.hpp>

#include "record.h"

namespace sipcode {

nlohmann::ordered_json to_json(const SIP_CODE_MSG &record, Scope scope);

// A value that the record has no place for; what() begins with the member: "via.addr.port: a number is wanted, not string".
class RecordError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The record that such a JSON value stands for. Throws RecordError for an unknown member, a value of another kind, a number
// outside the member's range, a text or an array that is too long, and a NUL in a text.
SIP_CODE_MSG record_from_json(const nlohmann::ordered_json &value);

} // namespace sipcode
