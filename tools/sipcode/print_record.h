// The codec record for a reader: one line per member.
//
//     method             5 (INVITE)
//     callid             "a84b4c76e66710"
//     sdp.a_coders[0]    1 (G711_A)
//     xml_buf            "v=0\r\n"
//                        "s=-\r\n"
#pragma once

#include <iosfwd>

#include "record.h"

// Texts stand in quotes with C's escapes, broken behind each line feed. A number with a name has it behind it. The members
// come in the order of the record, but for the body, which comes last.
void print_record(std::ostream &out, const SIP_CODE_MSG &record, sipcode::Scope scope);
