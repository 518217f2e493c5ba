#include "support/guarded.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <sys/mman.h>

namespace support {

namespace {

constexpr std::size_t page = 4096;
constexpr char around = 0x5C;

} // namespace

Guarded::Guarded(std::size_t size, Side guarded)
    : size_(size), room_(std::max<std::size_t>(1, (size + page - 1) / page) * page) {
    void *const pages = mmap(nullptr, room_ + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED)
        std::abort();
    pages_ = static_cast<char *>(pages) + page;
    if (mprotect(pages_, room_, PROT_READ | PROT_WRITE) != 0)
        std::abort();
    data_ = guarded == Side::before ? pages_ : pages_ + room_ - size;
    std::memset(pages_, around, static_cast<std::size_t>(data_ - pages_));
    std::memset(data_ + size_, around, static_cast<std::size_t>(pages_ + room_ - data_) - size_);
}

Guarded::Guarded(std::size_t size, unsigned char fill, Side guarded) : Guarded(size, guarded) {
    std::memset(data_, fill, size);
}

Guarded::Guarded(std::string_view text, Side guarded) : Guarded(text.size() + 1, guarded) {
    text.copy(data_, text.size());
    data_[text.size()] = '\0';
    protect();
}

Guarded Guarded::bytes(std::string_view bytes, Side guarded) {
    Guarded memory(bytes.size(), guarded);
    bytes.copy(memory.data_, bytes.size());
    memory.protect();
    return memory;
}

Guarded::Guarded(Guarded &&other) noexcept
    : size_(other.size_), room_(other.room_), pages_(std::exchange(other.pages_, nullptr)), data_(other.data_) {}

Guarded::~Guarded() {
    if (pages_ != nullptr)
        munmap(pages_ - page, room_ + 2 * page);
}

bool Guarded::intact() const {
    const auto is_as_it_was = [](char c) { return c == around; };
    return std::all_of(pages_, data_, is_as_it_was) && std::all_of(data_ + size_, pages_ + room_, is_as_it_was);
}

void Guarded::protect() const {
    if (mprotect(pages_, room_, PROT_READ) != 0)
        std::abort();
}

} // namespace support
