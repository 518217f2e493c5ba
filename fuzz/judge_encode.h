// What is written is judged by every encoder that there is, and by reading it again.
#pragma once

#include <sipcode/code.h>

namespace fuzz {

enum class Kind { request, response };

// Encodes a copy of the record, plainly and into every room. What the bounded encoder accepts is one whole message, and reads as
// the record.
void judge_encoding(Kind kind, const SIP_CODE_MSG &record);

} // namespace fuzz
