// Which members of a record are read again from the message that was written from it.
#pragma once

#include <string_view>

#include "judge_encode.h"

namespace fuzz {

// Decodes a message that was accepted, and demands that it has the members that its kind carries, whatever the other members
// hold. Left out are members in which a text would be read otherwise than it was meant: see the table.
void judge_survival(Kind kind, const SIP_CODE_MSG &sent, std::string_view text);

} // namespace fuzz
