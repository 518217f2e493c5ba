// Reads messages from files, see message_source.h.
#include "message_source.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iostream>
#include <utility>

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include "capture_file.h"
#include "console.h"

namespace {

bool is_standard_input(const std::string &file) { return file == "-"; }

bool is_separator(std::string_view line) { return line == "----" || line == "----\n" || line == "----\r\n"; }

} // namespace

Source::Source(const std::string &file)
    : name_(source_name(file)),
      file_(is_standard_input(file) ? dup(STDIN_FILENO) : open(file.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (file_ == -1)
        fail();
    struct stat status {};
    if (fstat(file_, &status) == 0 && S_ISREG(status.st_mode))
        size_ = static_cast<std::size_t>(status.st_size);
    read_beginning();
    if (beginning_.starts_with(gzip_magic)) {
        inflater_.emplace([this, ahead = std::exchange(beginning_, {})](char *bytes, std::size_t size) mutable {
            const std::size_t length = ahead.copy(bytes, size);
            ahead.clear();
            return length == 0 ? read_file(bytes, size) : length;
        });
        read_beginning();
    }
    is_capture_ = ::is_capture(beginning_);
    if (const std::string_view reason = why_not_readable(beginning_); !reason.empty())
        throw SourceError(std::make_error_code(std::errc::not_supported), fmt::format("{}: {}", name_, reason));
}

Source::~Source() { close(file_); }

void Source::fail() const { throw SourceError(errno, std::generic_category(), name_); }

void Source::read_beginning() {
    char bytes[capture_magic_size];
    while (beginning_.size() < capture_magic_size) {
        const std::size_t length = read(bytes, capture_magic_size - beginning_.size());
        if (length == 0)
            break;
        beginning_.append(bytes, length);
    }
}

std::size_t Source::read(char *bytes, std::size_t size) {
    try {
        return inflater_ ? inflater_->read(bytes, size) : read_file(bytes, size);
    } catch (const SourceError &) {
        throw;
    } catch (const std::system_error &error) {
        throw SourceError(error.code(), name_);
    }
}

// May return less than size: what a pipe holds at the moment. A read from a pipe may wait, so it first shows the
// results so far.
std::size_t Source::read_file(char *bytes, std::size_t size) {
    if (size_ == 0)
        std::cout.flush();
    ssize_t length = 0;
    do
        length = ::read(file_, bytes, size);
    while (length == -1 && errno == EINTR && !is_interrupted());
    if (is_interrupted())
        return 0; // the file ends here
    if (length == -1)
        fail();
    bytes_read_ += static_cast<std::size_t>(length);
    return static_cast<std::size_t>(length);
}

std::string Source::read_all() {
    std::string content = std::move(beginning_);
    char block[16384];
    while (const std::size_t length = read(block, sizeof block))
        content.append(block, length);
    return content;
}

std::FILE *Source::stream() {
    const auto read_on = [](void *cookie, char *bytes, std::size_t size) -> ssize_t {
        auto &source = *static_cast<Source *>(cookie);
        if (!source.beginning_.empty()) {
            const std::size_t length = source.beginning_.copy(bytes, size);
            source.beginning_.erase(0, length);
            return static_cast<ssize_t>(length);
        }
        try {
            return static_cast<ssize_t>(source.read(bytes, size));
        } catch (const SourceError &error) {
            errno = error.code().value();
            return -1;
        }
    };
    std::FILE *const stream = fopencookie(this, "rb", {read_on, nullptr, nullptr, nullptr});
    if (stream == nullptr)
        fail();
    constexpr std::size_t block_size = 1 << 18;
    static_cast<void>(std::setvbuf(stream, nullptr, _IOFBF, block_size)); // a smaller buffer is only slower
    return stream;
}

int Source::percent_read() const {
    constexpr std::size_t hundred = 100;
    return size_ == 0 ? -1 : static_cast<int>(std::min(hundred, bytes_read_ * hundred / size_));
}

std::string read_source(const std::string &file) { return Source(file).read_all(); }

bool can_be_read_twice(const std::string &file) {
    std::error_code ignored; // a file that does not exist is reported when it is opened
    return !is_standard_input(file) && !std::filesystem::is_fifo(file, ignored);
}

std::string source_name(const std::string &file) { return is_standard_input(file) ? "(standard input)" : file; }

std::vector<std::string_view> split_messages(std::string_view text) {
    std::vector<std::string_view> messages;
    std::size_t begin = 0;
    for (std::size_t line = 0, next = 0; line < text.size(); line = next) {
        const std::size_t line_feed = text.find('\n', line);
        next = line_feed == std::string_view::npos ? text.size() : line_feed + 1;
        if (!is_separator(text.substr(line, next - line)))
            continue;
        if (line > begin)
            messages.push_back(text.substr(begin, line - begin));
        begin = next;
    }
    if (begin < text.size() || messages.empty())
        messages.push_back(text.substr(begin));
    return messages;
}
