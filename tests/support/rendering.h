// What the encoders should write, rendered from the tables of data/rendering. Slow and plain, without a bound, and of no common
// kind with the library. A row is "condition => text":
//
//   the condition   clauses joined by " & ", none holds always: "member=a,b", "member!=a,b" (a number also by the name of its
//                   value, "*" any text but the empty one), "member>n", "member<=n", "member==other", "member!~part", ":name"
//   the text        "{member}" its value, "{member:method}" and "{member:hex}" what a number stands for, "{:name}" more than
//                   that, "$" CR LF
//   "#"             the element that the table is applied to
#pragma once

#include <string>

#include "code.h"

namespace support {

// The message of a record whose method is 1 to 48. The record becomes what the encoder should make of it.
std::string render_request(SIP_CODE_MSG &record);
std::string render_response(SIP_CODE_MSG &record);

// The time of Date lines, as the test's clock has it.
extern std::string rendered_date;

} // namespace support
