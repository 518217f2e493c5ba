#include "support/guarded.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include <sys/mman.h>

namespace support {

namespace {
constexpr std::size_t page = 4096;
}

Guarded::Guarded(std::size_t size) : room_((size + page - 1) / page * page) {
    void *const pages = mmap(nullptr, room_ + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED)
        std::abort();
    pages_ = static_cast<char *>(pages);
    if (mprotect(pages_ + room_, page, PROT_NONE) != 0)
        std::abort();
    data_ = pages_ + room_ - size;
}

Guarded::Guarded(std::size_t size, unsigned char fill) : Guarded(size) { std::memset(data_, fill, size); }

Guarded::Guarded(std::string_view text) : Guarded(text.size() + 1) {
    if (!text.empty())
        std::memcpy(data_, text.data(), text.size());
    data_[text.size()] = '\0';
    if (mprotect(pages_, room_, PROT_READ) != 0)
        std::abort();
}

Guarded::Guarded(Guarded &&other) noexcept
    : room_(other.room_), pages_(std::exchange(other.pages_, nullptr)), data_(other.data_) {}

Guarded::~Guarded() {
    if (pages_ != nullptr)
        munmap(pages_, room_ + page);
}

} // namespace support
