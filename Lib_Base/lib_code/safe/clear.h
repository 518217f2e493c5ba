// Clears what a reader of the record may look at. To clear all of it would cost as much as a sixth of a decode.
#pragma once

#include "code.h"

namespace sipcode {

// Clears every number and pointer, and makes every text empty. What follows the terminators is left as it was.
void clear(SIP_CODE_MSG &record);

} // namespace sipcode
