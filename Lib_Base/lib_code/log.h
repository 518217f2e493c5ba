// One log line per problem, through the host's Log_Trace_Proc with the constants that every line carries. A macro, so that
// the compiler checks each format against its arguments and the line number is the caller's.
#pragma once

#include "host.h"
#include "text.h"

#define SIPCODE_TRACE(level, ...) Log_Trace_Proc(level, -1, "decode.c", __LINE__, __VA_ARGS__)

namespace sipcode {

// A slice as the terminated string that a log line or a host service needs; no slice is longer than a message.
class terminated {
  public:
    explicit terminated(text t) { store(buffer, t); }
    const char *c_str() const { return buffer; }
    char *data() { return buffer; }

  private:
    char buffer[4096];
};

} // namespace sipcode
