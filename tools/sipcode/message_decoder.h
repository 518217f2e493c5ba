// One message through the decoder, with everything that the library tells about it.
#pragma once

#include <memory>
#include <string>

#include "code.h"

struct Decoded {
    SIP_CODE_MSG record;
    std::string refusal; // why the library refused the message, empty when it did not
    int cut_values;      // that were longer than their place in the record
};

// Is the log of the reference host, and so is made once in a process, before the library first logs.
class MessageDecoder {
  public:
    MessageDecoder();

    // Notes and the library's log lines go to standard error, each headed by place.
    Decoded decode(const std::string &message, const std::string &place);

  private:
    class Log;
    std::shared_ptr<Log> log_;
};
