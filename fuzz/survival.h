// Which members of a record are read again from the message that was written from it.
#pragma once

#include <string_view>

#include "judge_encode.h"

namespace fuzz {

// Decodes an accepted message and demands the members that its kind carries, whatever the other members hold. The table
// leaves out texts that do not read back as they were written.
void judge_survival(Kind kind, const SIP_CODE_MSG &sent, std::string_view text);

} // namespace fuzz
