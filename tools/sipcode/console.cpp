// Standard error, progress and the end of standard output, see console.h.
#include "console.h"

#include <cerrno>
#include <cstdio>
#include <iostream>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <fmt/core.h>
#include <unistd.h>

namespace {

constexpr std::chrono::milliseconds interval(200);

bool is_shown = false;

void clear() {
    if (is_shown)
        fmt::print(stderr, "\r\x1b[K");
    is_shown = false;
}

} // namespace

void print_error(std::string_view line) {
    clear();
    fmt::print(stderr, "sipcode: {}\n", line);
}

void flush_output() {
    errno = 0;
    if (!std::cout.flush())
        throw std::system_error(errno == 0 ? EIO : errno, std::generic_category(), "standard output");
}

Progress::Progress(const Source &source)
    : source_(source), is_wanted_(isatty(STDERR_FILENO) == 1 && isatty(STDOUT_FILENO) == 0),
      next_(std::chrono::steady_clock::now() + interval) {}

Progress::~Progress() { clear(); }

void Progress::update(std::size_t packets, std::size_t messages) {
    if (!is_wanted_ || std::chrono::steady_clock::now() < next_)
        return;
    clear();
    const int percent = source_.percent_read();
    const std::string share = percent < 0 ? "" : fmt::format("{} %, ", percent);
    fmt::print(stderr, "{}: {}{} packets, {} messages", source_.name(), share, packets, messages);
    is_shown = true;
    next_ = std::chrono::steady_clock::now() + interval;
}

// If standard output is closed, it stays closed, and writes to it fail anyway.
DiscardLibraryPrints::DiscardLibraryPrints() {
    flush_output();
    output_ = dup(STDOUT_FILENO);
    if (output_ == -1)
        return;
    const int sink = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (sink == -1)
        throw std::system_error(errno, std::generic_category(), "/dev/null");
    dup2(sink, STDOUT_FILENO);
    close(sink);
}

DiscardLibraryPrints::~DiscardLibraryPrints() {
    if (output_ == -1)
        return;
    static_cast<void>(std::fflush(stdout)); // discarded either way
    dup2(output_, STDOUT_FILENO);
    close(output_);
}
