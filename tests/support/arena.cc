#include "support/arena.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <sys/mman.h>

namespace support {

void demand(bool holds, const char *reason) {
    if (holds)
        return;
    std::fprintf(stderr, "violated: %s\n", reason);
    std::abort();
}

// Through a pointer: compilers know that memory from malloc is undefined, and would leave out a copy of it.
char *allocate(std::size_t size) {
    static void *(*volatile allocator)(std::size_t) = std::malloc;
    void *const memory = allocator(size);
    demand(memory != nullptr, "memory that holds nothing");
    return static_cast<char *>(memory);
}

namespace {

constexpr std::size_t page = 4096;
constexpr std::size_t fence_size = 64;
constexpr char fence_byte = 0x5C;

} // namespace

Arena::Arena(std::size_t capacity) : room_((capacity + fence_size + page - 1) / page * page) {
    void *const all = mmap(nullptr, room_ + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    demand(all != MAP_FAILED, "pages to place memory in");
    pages_ = static_cast<char *>(all) + page;
    demand(mprotect(pages_, room_, PROT_READ | PROT_WRITE) == 0, "pages to place memory in");
}

Arena::Arena(Arena &&other) noexcept
    : room_(other.room_), pages_(std::exchange(other.pages_, nullptr)), fence_(other.fence_) {}

Arena::~Arena() {
    if (pages_ != nullptr)
        munmap(pages_ - page, room_ + 2 * page);
}

char *Arena::place(std::size_t size, Side guarded) {
    demand(size + fence_size <= room_, "room for what is placed");
    char *const placed = guarded == Side::before ? pages_ : pages_ + room_ - size;
    fence_ = guarded == Side::before ? placed + size : placed - fence_size;
    std::memset(fence_, fence_byte, fence_size);
    return placed;
}

char *Arena::fill(std::size_t size, unsigned char byte, Side guarded) {
    char *const placed = place(size, guarded);
    std::memset(placed, byte, size);
    return placed;
}

char *Arena::undefined(std::size_t size, Side guarded) {
    char *const fresh = allocate(size);
    char *const placed = copy({fresh, size}, guarded);
    std::free(fresh);
    return placed;
}

char *Arena::copy(std::string_view bytes, Side guarded) {
    char *const placed = place(bytes.size(), guarded);
    if (!bytes.empty())
        std::memcpy(placed, bytes.data(), bytes.size());
    return placed;
}

char *Arena::copy_terminated(std::string_view text, Side guarded) {
    char *const placed = fill(text.size() + 1, 0, guarded);
    if (!text.empty())
        std::memcpy(placed, text.data(), text.size());
    return placed;
}

void Arena::demand_intact() const {
    demand(std::all_of(fence_, fence_ + fence_size, [](char c) { return c == fence_byte; }), "no write out of bounds");
}

Arena::Side side_for(std::size_t number) { return number % 2 == 0 ? Arena::Side::after : Arena::Side::before; }

} // namespace support
