// Why the library refuses messages, in words.
#pragma once

#include <string_view>

#include "safe.h"

// Empty for a message that is not refused.
std::string_view refusal_text(SIP_DECODE_OUTCOME outcome);
