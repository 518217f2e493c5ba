// The ladder of messages, each with what the codec made of it, as they come and go.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include <sipcode/code.h>

#include "transport.h"

enum class Direction { in, out };

// What a host prints. The codec prints the video section of every session description on standard output; that goes nowhere
// once this object took the output over.
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

    void message(Direction direction, const Peer &peer, const SIP_CODE_MSG &record);
    void note(std::string_view text);

  private:
    Output &output_;
    bool enabled_;
    std::string last_peer_;
};
