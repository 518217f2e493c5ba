// The codec record as JSON: an object whose members have the names and the order of the declarations.
//
//   {"method":5,"via_count":1,"callid":"a84b4c76e66710","via":{"branch":"z9hG4bK77","addr":{"ip":"192.0.2.1"}}, ...}
//
// A member that is left out is 0 or empty, or belongs to a record that is switched off. Numbers are written as they
// are, enumerations too. The name of an enumeration's value follows as a member of its own: "method_name":"INVITE". An
// array ends after its last element that holds something; an empty element before that is 0 or {}. A pointer, which
// means nothing outside its process, is null.
//
// A text is a string. JSON strings must be valid UTF-8, so any other text is an object that keeps every byte:
// {"latin1": "..."}, with one character from U+0000 to U+00FF for each byte.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "record.h"

namespace sipcode {

// Each byte as the character from U+0000 to U+00FF with its number.
std::string latin1_to_utf8(std::string_view bytes);

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

// A text as described above.
void write_text(JsonWriter &out, std::string_view text);

// The members of the record, into an object that the caller begins and ends.
void write_members(JsonWriter &out, const SIP_CODE_MSG &record, Scope scope);

// A value that does not fit the record. what() begins with the member: "via.addr.port: expected a number, not string".
class RecordError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The record for such a JSON value. The names of values are not read. Throws RecordError for an unknown member, a value
// of the wrong type, a number that is out of range, a text or an array that is too long, and a NUL in a text.
SIP_CODE_MSG record_from_json(const nlohmann::ordered_json &value);

} // namespace sipcode
