// Reads messages from files.
#pragma once

#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "inflater.h"

// A file that cannot be opened or read; what() begins with the name below.
class SourceError : public std::system_error {
  public:
    using std::system_error::system_error;
};

// A file that is being read; "-" is standard input. What gzip has compressed is decompressed. Throws SourceError.
class Source {
  public:
    explicit Source(const std::string &file);
    ~Source();
    Source(const Source &) = delete;
    Source &operator=(const Source &) = delete;

    // The name of the file in error messages.
    const std::string &name() const { return name_; }

    // Whether it begins as a capture file does.
    bool is_capture() const { return is_capture_; }

    // The bytes as they are. To be called once, and not after stream().
    std::string read_all();

    // The bytes as a stream for libpcap, which closes it. To be called once; the source must outlive the stream.
    std::FILE *stream();

    // How much was read, in percent; -1 if the size is unknown.
    int percent_read() const;

  private:
    [[noreturn]] void fail() const;
    void read_beginning();
    std::size_t read(char *bytes, std::size_t size);
    std::size_t read_file(char *bytes, std::size_t size);

    std::string name_;
    int file_;
    std::string beginning_;            // read ahead
    std::optional<Inflater> inflater_; // of a compressed file
    bool is_capture_ = false;
    std::size_t size_ = 0; // 0 if unknown
    std::size_t bytes_read_ = 0;
};

// The file's bytes as they are.
std::string read_source(const std::string &file);

// Whether a second reading gives the same: standard input and pipes are used up by the first.
bool can_be_read_twice(const std::string &file);

// The name of the file in error messages.
std::string source_name(const std::string &file);

// The messages of a text, separated by lines "----". A separator belongs to neither message, and the line before it
// keeps its line end. A separator at the beginning or the end of the text, or after another one, makes no empty
// message. A text with nothing else is one empty message.
std::vector<std::string_view> split_messages(std::string_view text);
