// Writes records as messages on standard output.
#pragma once

#include <string>
#include <string_view>

#include "code.h"

// Writes messages in the form that split_messages (message_source.h) reads, with a line "----" between two. If the last
// line of a message has no line end, one is written before the separator.
class MessageText {
  public:
    void write(std::string_view message);

  private:
    bool is_first_ = true;
    bool line_is_open_ = false;
};

class MessageWriter {
  public:
    // Encodes the record as a request or a response, depending on its method. Returns an empty text. If the library
    // refuses the record, returns the reason and writes nothing.
    std::string write(SIP_CODE_MSG record);

  private:
    MessageText text_;
};
