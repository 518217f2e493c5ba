// One object in memory of its own that ends at an unreadable page.
#pragma once

#include "support/arena.h"

namespace support {

class Guarded {
  public:
    // Every byte as given.
    Guarded(std::size_t size, unsigned char fill) : pages_(size), data_(pages_.fill(size, fill)) {}

    // A terminated text.
    explicit Guarded(std::string_view text) : pages_(text.size() + 1), data_(pages_.copy_terminated(text)) {}

    // The bytes alone.
    static Guarded bytes(std::string_view bytes) {
        Guarded memory(bytes.size(), 0);
        bytes.copy(memory.data_, bytes.size());
        return memory;
    }

    char *data() const { return data_; }

    template <typename T>
    T &as() const {
        return *reinterpret_cast<T *>(data_);
    }

  private:
    Arena pages_;
    char *data_;
};

} // namespace support
