// Decodes one message and collects what the library reports about it.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "safe.h"

struct Decoded {
    std::string_view text;    // the message
    SIP_START_LINE start;     // as it was received; empty if it is not usable
    std::string_view refusal; // why the library refused the message; empty if it did not
    int cut_values;           // values that were longer than their member
    SIP_CODE_MSG record;
};

// For a command that shows in its own way what the library logs.
void discard_library_log();

// Replaces the log of the reference host, so a process makes only one, before the library first logs.
class MessageDecoder {
  public:
    MessageDecoder();

    // Notes and the library's log lines go to standard error. Each begins with place. The result is valid until the
    // next call, and as long as the message.
    Decoded &decode(std::string_view message, std::string_view place);

  private:
    class Log;
    std::shared_ptr<Log> log_;
    Decoded decoded_{};
};
