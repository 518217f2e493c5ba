// Decodes one message and collects what the library reports about it.
#pragma once

#include <memory>
#include <string>

#include "code.h"

struct Decoded {
    SIP_CODE_MSG record;
    std::string refusal; // why the library refused the message; empty if it did not
    int cut_values;      // values that were longer than their member
};

// Replaces the log of the reference host, so a process makes only one, before the library first logs.
class MessageDecoder {
  public:
    MessageDecoder();

    // Notes and the library's log lines go to standard error. Each begins with place.
    Decoded decode(const std::string &message, const std::string &place);

  private:
    class Log;
    std::shared_ptr<Log> log_;
};
