// How far a long run is, see progress.h.
#include "progress.h"

#include <cstdio>
#include <string>

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

void tell(std::string_view line) {
    clear();
    fmt::print(stderr, "{}\n", line);
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
