// Judges the encoders against each other and against the decoder.
#pragma once

#include <sipcode/code.h>

namespace fuzz {

enum class Kind { request, response };

// Encodes copies of the record with the plain encoder, and with the bounded one into buffers of several sizes. What the
// bounded encoder accepts is one complete message that decodes to the record.
void judge_encoding(Kind kind, const SIP_CODE_MSG &record);

} // namespace fuzz
