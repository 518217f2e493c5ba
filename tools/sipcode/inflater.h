// Decompresses a gzip stream as it is read, with zlib.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string_view>

#include <zlib.h>

// First bytes of a compressed file.
inline constexpr std::string_view gzip_magic = "\x1f\x8b";

class Inflater {
  public:
    // Reads compressed bytes: returns how many, 0 at the end.
    using Read = std::function<std::size_t(char *bytes, std::size_t size)>;

    explicit Inflater(Read read);
    ~Inflater() { inflateEnd(&stream_); }
    Inflater(const Inflater &) = delete;
    Inflater &operator=(const Inflater &) = delete;

    // Returns how many bytes were written, 0 at the end. Throws std::system_error if the stream is damaged.
    std::size_t read(char *bytes, std::size_t size);

  private:
    Read read_;
    z_stream stream_{};
    std::array<char, 65536> input_;
    bool is_over_ = false; // a file may have several streams, one after another
};
