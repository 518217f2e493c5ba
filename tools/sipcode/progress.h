// How far a long run is, on one line of the terminal that is written over.
#pragma once

#include <chrono>
#include <cstddef>
#include <string_view>

#include "message_source.h"

// Prints a line on standard error, in place of the progress where that is shown.
void tell(std::string_view line);

// Is shown when standard error is a terminal and standard output, where messages would run through it, is none.
class Progress {
  public:
    explicit Progress(const Source &source);
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    void update(std::size_t packets, std::size_t messages);

  private:
    const Source &source_;
    bool is_wanted_;
    std::chrono::steady_clock::time_point next_;
};
