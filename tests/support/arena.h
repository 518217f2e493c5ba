// Memory between two unreadable pages, for the unit tests and the fuzz targets.
#pragma once

#include <cstddef>
#include <string_view>

namespace support {

// Ends the process with the reason unless the condition holds.
void demand(bool holds, const char *reason);

// Pages between two unreadable ones, reused for each input. Data is placed against one of the two, so an access past
// that side faults. Known bytes on the other side show writes.
class Arena {
  public:
    explicit Arena(std::size_t capacity);
    Arena(Arena &&other) noexcept;
    ~Arena();

    std::size_t capacity() const { return room_; }

    enum class Side { before, after };

    // Memory with this value in every byte.
    char *fill(std::size_t size, unsigned char byte, Side guarded = Side::after);

    // Undefined memory: memory checkers report if a byte of it is used.
    char *undefined(std::size_t size, Side guarded = Side::after);

    // A copy.
    char *copy(std::string_view bytes, Side guarded = Side::after);

    // A copy with a terminator.
    char *copy_terminated(std::string_view text, Side guarded = Side::after);

    // Demands that the bytes beside the last data are unchanged.
    void demand_intact() const;

  private:
    char *place(std::size_t size, Side guarded);

    std::size_t room_; // whole pages
    char *pages_;
    char *fence_ = nullptr; // on the open side
};

// The two sides in turn.
Arena::Side side_for(std::size_t number);

// Memory from the heap, which memory checkers know to be undefined.
char *allocate(std::size_t size);

} // namespace support
