// Memory between two unreadable pages. It begins behind the one or ends in front of the other, so that one byte before or one
// past it faults; what is written into the rest of its pages shows.
#pragma once

#include <cstddef>
#include <string_view>

namespace support {

enum class Side { before, behind };

class Guarded {
  public:
    // Writable, every byte as given.
    Guarded(std::size_t size, unsigned char fill, Side guarded = Side::behind);

    // A terminated text that cannot be written.
    explicit Guarded(std::string_view text, Side guarded = Side::behind);

    // The bytes alone, which cannot be written.
    static Guarded bytes(std::string_view bytes, Side guarded = Side::behind);

    Guarded(Guarded &&other) noexcept;
    ~Guarded();

    char *data() const { return data_; }

    // Whether all bytes of the pages around the memory are as they were.
    bool intact() const;

    template <typename T>
    T &as() const {
        return *reinterpret_cast<T *>(data_);
    }

  private:
    Guarded(std::size_t size, Side guarded);
    void protect() const;

    std::size_t size_;
    std::size_t room_; // whole pages between the unreadable ones
    char *pages_;
    char *data_;
};

} // namespace support
