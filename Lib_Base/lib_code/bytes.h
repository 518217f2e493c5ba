// Bytes sixteen and eight at a time: what makes the scanning idioms of text.h cheap. With SSE2 where the build has it, in plain
// code elsewhere.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__) && !defined(SIPCODE_PORTABLE)
#include <emmintrin.h>
#endif

namespace sipcode {

inline constexpr std::size_t block_size = 16;

// Bit i is set when byte i of the block at `at` is the wanted one.
#if defined(__SSE2__) && !defined(SIPCODE_PORTABLE)
inline unsigned matches(const char *at, char wanted) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(at));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, _mm_set1_epi8(wanted))));
}
#else
inline unsigned matches(const char *at, char wanted) {
    unsigned mask = 0;
    for (std::size_t i = 0; i < block_size; ++i)
        mask |= static_cast<unsigned>(at[i] == wanted) << i;
    return mask;
}
#endif

// Walks the places of the wanted bytes of a text in order. The blocks may reach behind its end: the buffer holds at least the
// size rounded up to whole blocks.
template <char... Wanted>
class byte_walk {
  public:
    byte_walk(char *begin, char *end_of_text) : block(begin), end(end_of_text), mask(mask_of(begin)) {}

    // The next place, or the end.
    char *next() {
        while (mask == 0) {
            block += block_size;
            if (block >= end)
                return end;
            mask = mask_of(block);
        }
        char *const at = block + std::countr_zero(mask);
        mask &= mask - 1;
        return std::min(at, end);
    }

  private:
    static unsigned mask_of(const char *at) { return (matches(at, Wanted) | ...); }

    char *block;
    char *end;
    unsigned mask;
};

// Place of the first wanted byte, size when there is none.
std::size_t find_byte(const char *begin, std::size_t size, char wanted);

// One to eight bytes as a number, the first one lowest; those that are missing are 0.
constexpr std::uint64_t word_of(const char *bytes, std::size_t count) {
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < count; ++i)
        word |= static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[i])) << (8 * i);
    return word;
}

template <class Unsigned>
inline std::uint64_t load(const char *bytes) {
    Unsigned value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

inline std::uint64_t load_word(const char *bytes, std::size_t count) {
    if constexpr (std::endian::native != std::endian::little)
        return word_of(bytes, count);
    if (count >= 8)
        return load<std::uint64_t>(bytes);
    if (count >= 4)
        return load<std::uint32_t>(bytes) | load<std::uint32_t>(bytes + count - 4) << (8 * (count - 4));
    return word_of(bytes, count);
}

} // namespace sipcode
