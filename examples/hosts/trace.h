// The ladder of messages, each with what the codec read in it, as they are sent and received.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include <sipcode/code.h>

#include "transport.h"

enum class Direction { in, out };

// What a host prints. The codec prints the video section of every session description to standard output. This object
// takes standard output over and discards that.
class Output {
  public:
    Output();
    ~Output();
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    void line(std::string_view text);

  private:
    std::FILE *file_;
};

class Trace {
  public:
    Trace(Output &output, bool enabled) : output_(output), enabled_(enabled) {}

    void message(Direction direction, const Peer &peer, const SIP_CODE_MSG &record, std::string_view title);
    void note(std::string_view text);

  private:
    Output &output_;
    bool enabled_;
    std::string last_peer_;
};
