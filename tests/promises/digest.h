// A running digest (FNV-1a) of what a thread saw.
#pragma once

#include <cstddef>
#include <cstdint>

namespace promises {

class Digest {
  public:
    void add(const void *data, std::size_t size) {
        const auto *const bytes = static_cast<const unsigned char *>(data);
        for (std::size_t i = 0; i < size; ++i)
            value_ = (value_ ^ bytes[i]) * 1099511628211U;
    }

    std::uint64_t value() const { return value_; }

  private:
    std::uint64_t value_ = 14695981039346656037U;
};

// What the host services of this thread are told goes there, if anywhere.
extern thread_local Digest *log_digest;

} // namespace promises
