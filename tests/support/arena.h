// Memory between two unreadable pages, for the unit tests and the fuzz targets.
#pragma once

#include <cstddef>
#include <string_view>

namespace support {

// Ends the process with the reason unless it holds.
void demand(bool holds, const char *reason);

// Pages between two unreadable ones, reused for each input. Data is placed against one of the two, so an access past
// that side faults. Known bytes on the other side show writes.
class Arena {
  public:
    explicit Arena(std::size_t capacity);
    Arena(Arena &&other) noexcept;
    ~Arena();

    std::size_t capacity() const { return room_; }

    enum class Side { before, behind };

    // Memory of which every byte is as given.
    char *fill(std::size_t size, unsigned char byte, Side guarded = Side::behind);

    // Memory that holds nothing yet: memory checkers tell when a byte of it counts.
    char *undefined(std::size_t size, Side guarded = Side::behind);

    // A copy.
    char *copy(std::string_view bytes, Side guarded = Side::behind);

    // A copy with a terminator.
    char *copy_terminated(std::string_view text, Side guarded = Side::behind);

    // Demands that the bytes around what was placed last are as they were.
    void demand_intact() const;

  private:
    char *place(std::size_t size, Side guarded);

    std::size_t room_; // whole pages
    char *pages_;
    char *fence_ = nullptr; // on the open side
};

// The two sides in turn, so that both are tried.
Arena::Side side_for(std::size_t number);

// Fresh memory from the heap, which memory checkers know to be undefined.
char *allocate(std::size_t size);

} // namespace support
