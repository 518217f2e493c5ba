// What the tool writes besides its results, and how a run ends.
#pragma once

#include <chrono>
#include <cstddef>
#include <string_view>

#include "message_source.h"

enum ExitStatus {
    success = 0, // every message was decoded, encoded or answered; a check found no loss
    refused = 1, // at least one message was refused, or a check found a loss
    misuse = 2,  // the command line, a file or the output is at fault
};

// Prints "sipcode: " and the line on standard error, in place of the progress line if one is shown.
void print_error(std::string_view line);

// Flushes standard output. Throws std::system_error if the write fails, for example on a full disk.
void flush_output();

// Shows the progress of a long run on one line of the terminal, if standard error is a terminal and standard output is
// not. On the same terminal, the messages would overwrite it.
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

// Discards what the library prints on standard output while the object lives. The tool reports the same itself: the
// video section as a member of the record, an unknown method as a refusal.
class DiscardLibraryPrints {
  public:
    DiscardLibraryPrints();
    ~DiscardLibraryPrints();
    DiscardLibraryPrints(const DiscardLibraryPrints &) = delete;
    DiscardLibraryPrints &operator=(const DiscardLibraryPrints &) = delete;

  private:
    int output_; // a duplicate of standard output
};
