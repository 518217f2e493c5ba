// Standard error, progress and the end of standard output, see console.h.
#include "console.h"

#include <cerrno>
#include <csignal>
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
bool is_terminal = false; // whether the results go to one
volatile std::sig_atomic_t was_interrupted = 0;

void clear() {
    if (is_shown)
        fmt::print(stderr, "\r\x1b[K");
    is_shown = false;
}

} // namespace

void print_error(std::string_view line) {
    std::cout.flush();
    clear();
    fmt::print(stderr, "sipcode: {}\n", line);
}

std::string count_of(std::size_t count, std::string_view singular) {
    return fmt::format("{} {}{}", count, singular, count == 1 ? "" : "s");
}

ResultOutput::ResultOutput() {
    is_terminal = isatty(STDOUT_FILENO) == 1;
    const int results = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (results == -1)
        return; // it is closed, and stays closed, so that writes fail
    const int sink = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (sink == -1)
        throw std::system_error(errno, std::generic_category(), "/dev/null");
    dup2(sink, STDOUT_FILENO);
    close(sink);
    constexpr std::size_t block = 1 << 16;
    old_ = std::cout.rdbuf(&file_.emplace(results, std::ios::out, block));
}

ResultOutput::~ResultOutput() {
    if (file_)
        std::cout.rdbuf(old_);
}

bool writes_to_terminal() { return is_terminal; }

void end_result() {
    if (is_terminal || !std::cout)
        flush_output();
}

void flush_output() {
    if (!std::cout.flush())
        throw std::system_error(errno == 0 ? EIO : errno, std::generic_category(), "standard output");
}

CatchInterrupt::CatchInterrupt() {
    struct sigaction action {};
    action.sa_handler = [](int) { was_interrupted = 1; };
    action.sa_flags = static_cast<int>(SA_RESETHAND); // and not SA_RESTART: a read that waits must end
    sigaction(SIGINT, &action, nullptr);
}

CatchInterrupt::~CatchInterrupt() { static_cast<void>(std::signal(SIGINT, SIG_DFL)); }

bool is_interrupted() { return was_interrupted != 0; }

Progress::Progress(const Source &source)
    : source_(source), is_wanted_(isatty(STDERR_FILENO) == 1 && !is_terminal),
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
