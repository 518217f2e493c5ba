// What the tool writes besides its results, and how a run ends.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <streambuf>
#include <string>
#include <string_view>

#include <ext/stdio_filebuf.h>

#include "message_source.h"

enum ExitStatus {
    success = 0,       // every message was decoded, encoded or answered; a check found no loss
    refused = 1,       // at least one message was refused, or a check found a loss
    misuse = 2,        // the command line, a file or the output is at fault
    interrupted = 130, // Ctrl-C while a capture was read
};

// Prints "sipcode: " and the line on standard error, after the results so far, and in place of the progress line if one
// is shown.
void print_error(std::string_view line);

// "1 packet", "2 packets"
std::string count_of(std::size_t count, std::string_view singular);

// Takes standard output for the results of the tool, which std::cout writes in blocks. What the library prints on
// standard output is discarded: the tool reports the same itself, the video section as a member of the record and an
// unknown method by its word.
class ResultOutput {
  public:
    ResultOutput();
    ~ResultOutput();
    ResultOutput(const ResultOutput &) = delete;
    ResultOutput &operator=(const ResultOutput &) = delete;

  private:
    std::optional<__gnu_cxx::stdio_filebuf<char>> file_; // none if standard output is closed
    std::streambuf *old_ = nullptr;
};

// Call it after each result. A result is written at once if standard output is a terminal. Throws std::system_error if
// a write has failed, for example on a full disk.
void end_result();

// Whether the results go to a terminal.
bool writes_to_terminal();

// Writes out what the results so far left in the buffer. Throws like end_result.
void flush_output();

// While it lives, an interrupt does not end the process but is remembered, so that counts can still be shown. A second
// one does end it.
class CatchInterrupt {
  public:
    CatchInterrupt();
    ~CatchInterrupt();
    CatchInterrupt(const CatchInterrupt &) = delete;
    CatchInterrupt &operator=(const CatchInterrupt &) = delete;
};

bool is_interrupted();

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
