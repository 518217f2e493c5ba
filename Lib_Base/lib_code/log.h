// One log line per problem, through the host's Log_Trace_Proc with the arguments that every line shares. It is a macro,
// so that the compiler checks each format and the line number is the caller's.
#pragma once

#include "host.h"
#include "text.h"

#define SIPCODE_TRACE(level, ...) Log_Trace_Proc(level, -1, "decode.c", __LINE__, __VA_ARGS__)
