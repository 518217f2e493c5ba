// Memory that ends where unreadable memory begins: one byte past faults.
#pragma once

#include <cstddef>
#include <string_view>

namespace support {

class Guarded {
  public:
    // Writable, every byte as given.
    Guarded(std::size_t size, unsigned char fill);

    // A terminated text that cannot be written.
    explicit Guarded(std::string_view text);

    Guarded(Guarded &&other) noexcept;
    ~Guarded();

    char *data() const { return data_; }

    template <typename T>
    T &as() const {
        return *reinterpret_cast<T *>(data_);
    }

  private:
    explicit Guarded(std::size_t size);

    std::size_t room_; // whole pages in front of the unreadable one
    char *pages_;
    char *data_;
};

} // namespace support
