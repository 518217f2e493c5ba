// Records as messages on standard output.
#pragma once

#include <string>

#include "code.h"

// Writes messages as split_messages (message_source.h) reads them: a line that is "----" stands between two. A message that
// ends in a line without line end gets one when another follows.
class MessageWriter {
  public:
    // Encodes the record, by its method as a request or a response. Why the library refuses it, and then nothing is written;
    // empty when it was written.
    std::string write(SIP_CODE_MSG record);

  private:
    bool is_first_ = true;
    bool line_is_open_ = false;
};
