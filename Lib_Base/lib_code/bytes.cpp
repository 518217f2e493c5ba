#include "bytes.h"

namespace sipcode {

std::size_t find_byte(const char *begin, std::size_t size, char wanted) {
    std::size_t at = 0;
    for (; at + block_size <= size; at += block_size)
        if (const unsigned mask = matches(begin + at, wanted); mask != 0)
            return at + static_cast<std::size_t>(std::countr_zero(mask));
    while (at < size && begin[at] != wanted)
        ++at;
    return at;
}

} // namespace sipcode
