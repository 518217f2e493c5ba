#include "bytes.h"

namespace sipcode {
namespace {

// Up to seven bytes.
std::size_t find_in_few(const char *begin, std::size_t size, char wanted) {
    std::size_t at = 0;
    while (at < size && begin[at] != wanted)
        ++at;
    return at;
}

// Eight to fifteen: the last eight overlap the first.
std::size_t find_in_two_words(const char *begin, std::size_t size, char wanted) {
    const std::size_t second = size - 8;
    const unsigned mask = matches8(begin, wanted) | matches8(begin + second, wanted) << second;
    return mask == 0 ? size : first_bit(mask);
}

} // namespace

std::uint64_t matches_of_rest(const char *at, std::size_t size, char wanted) {
    char block[block_size] = {};
    std::memcpy(block, at, size);
    return matches(block, wanted);
}

std::uint64_t matches_up_to_of_rest(const char *at, std::size_t size, char largest) {
    char block[block_size];
    std::memset(block, 0xFF, sizeof block);
    std::memcpy(block, at, size);
    return matches_up_to(block, largest);
}

std::size_t find_blank(const char *begin, std::size_t size) {
    std::size_t at = 0;
    for (; at + 16 <= size; at += 16)
        if (const unsigned mask = matches_up_to16(begin + at, ' '); mask != 0)
            return at + first_bit(mask);
    const auto is_visible = [begin](std::size_t place) { return static_cast<unsigned char>(begin[place]) > ' '; };
    while (at < size && is_visible(at))
        ++at;
    return at;
}

std::size_t find_byte(const char *begin, std::size_t size, char wanted) {
    constexpr std::size_t step = 16;
    if (size < step)
        return size < 8 ? find_in_few(begin, size, wanted) : find_in_two_words(begin, size, wanted);
    for (std::size_t at = 0;;) {
        if (const unsigned mask = matches16(begin + at, wanted); mask != 0)
            return at + first_bit(mask);
        if (at + step == size)
            return size;
        at = at + 2 * step <= size ? at + step : size - step; // the last sixteen overlap those before
    }
}

} // namespace sipcode
