// Searches over eight, sixteen and sixty-four bytes at a time, for the scanning idioms of text.h. They use SSE2 and AVX2
// if the build has them and portable code otherwise.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__) && !defined(SIPCODE_PORTABLE)
#define SIPCODE_SSE2
#include <emmintrin.h>
#if defined(__AVX2__)
#define SIPCODE_AVX2
#include <immintrin.h>
#endif
#endif

namespace sipcode {

// Whether numbers in memory are little-endian. The portable build does not rely on it.
#if defined(SIPCODE_PORTABLE)
inline constexpr bool is_little_endian = false;
#else
inline constexpr bool is_little_endian = std::endian::native == std::endian::little;
#endif

inline constexpr std::size_t block_size = 64;

// Number of the lowest bit that is set. The mask must not be 0.
template <class Mask>
inline std::size_t first_bit(Mask mask) {
    return static_cast<std::size_t>(std::countr_zero(mask));
}

// Return a mask: bit i is set if byte i of the sixteen (eight) at `at` is the wanted one.
#if defined(SIPCODE_SSE2)
inline unsigned matches16(const char *at, char wanted) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(at));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(wanted))));
}
inline unsigned matches8(const char *at, char wanted) {
    const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(at));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(wanted)))) & 0xFF;
}
// Bit i is set if byte i of the sixteen is `largest` or less.
inline unsigned matches_up_to16(const char *at, char largest) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(at));
    const __m128i above = _mm_subs_epu8(bytes, _mm_set1_epi8(largest));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(above, _mm_setzero_si128())));
}
// Whether the sixteen bytes at `at` are the wanted ones once these bits are set in them. Both constants are aligned to
// 16 bytes.
inline bool equal16_with_bits(const char *at, const char *bits, const char *wanted) {
    const __m128i bytes = _mm_or_si128(_mm_loadu_si128(reinterpret_cast<const __m128i *>(at)),
                                       _mm_load_si128(reinterpret_cast<const __m128i *>(bits)));
    return _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_load_si128(reinterpret_cast<const __m128i *>(wanted)))) ==
           0xFFFF;
}
#else
inline unsigned matches_up_to16(const char *at, char largest) {
    unsigned mask = 0;
    for (unsigned i = 0; i < 16; ++i)
        mask |= static_cast<unsigned>(static_cast<unsigned char>(at[i]) <= static_cast<unsigned char>(largest)) << i;
    return mask;
}
inline bool equal16_with_bits(const char *at, const char *bits, const char *wanted) {
    for (unsigned i = 0; i < 16; ++i)
        if ((at[i] | bits[i]) != wanted[i])
            return false;
    return true;
}
inline unsigned matches_plain(const char *at, unsigned count, char wanted) {
    unsigned mask = 0;
    for (unsigned i = 0; i < count; ++i)
        mask |= static_cast<unsigned>(at[i] == wanted) << i;
    return mask;
}
inline unsigned matches16(const char *at, char wanted) { return matches_plain(at, 16, wanted); }
inline unsigned matches8(const char *at, char wanted) { return matches_plain(at, 8, wanted); }
#endif

// The same for a piece: as many bytes as one comparison reads.
#if defined(SIPCODE_AVX2)
inline constexpr std::size_t piece_size = 32;
inline std::uint32_t matches_of_piece(const char *at, char wanted) {
    const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(at));
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(wanted))));
}
inline std::uint32_t matches_up_to_of_piece(const char *at, char largest) {
    const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(at));
    const __m256i capped = _mm256_min_epu8(bytes, _mm256_set1_epi8(largest));
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(capped, bytes)));
}
#else
inline constexpr std::size_t piece_size = 16;
inline std::uint32_t matches_of_piece(const char *at, char wanted) { return matches16(at, wanted); }
inline std::uint32_t matches_up_to_of_piece(const char *at, char largest) { return matches_up_to16(at, largest); }
#endif

// The same for a whole block.
template <class Matches>
inline std::uint64_t matches_of_block(const char *at, Matches matches_of_piece) {
    std::uint64_t mask = 0;
    for (std::size_t i = 0; i < block_size; i += piece_size)
        mask |= static_cast<std::uint64_t>(matches_of_piece(at + i)) << i;
    return mask;
}
inline std::uint64_t matches(const char *at, char wanted) {
    return matches_of_block(at, [wanted](const char *piece) { return matches_of_piece(piece, wanted); });
}
inline std::uint64_t matches_up_to(const char *at, char largest) {
    return matches_of_block(at, [largest](const char *piece) { return matches_up_to_of_piece(piece, largest); });
}

// The same for the rest of a text that is shorter than a block. The wanted byte must not be NUL, nor `largest` 0xFF.
std::uint64_t matches_of_rest(const char *at, std::size_t size, char wanted);
std::uint64_t matches_up_to_of_rest(const char *at, std::size_t size, char largest);

// Calls visit with every wanted byte, in order. The whole of the last block must be readable.
template <class Visit>
void for_each_byte(const char *begin, const char *end, char wanted, Visit visit) {
    for (; begin < end; begin += block_size) {
        std::uint64_t mask = matches(begin, wanted);
        if (end - begin < static_cast<std::ptrdiff_t>(block_size))
            mask &= (std::uint64_t{1} << (end - begin)) - 1;
        for (; mask != 0; mask &= mask - 1)
            visit(begin + first_bit(mask));
    }
}

// Place of the first byte from 0 to 32, size if there is none.
std::size_t find_blank(const char *begin, std::size_t size);

// Place of the first wanted byte, size if there is none. Reads nothing past size.
std::size_t find_byte(const char *begin, std::size_t size, char wanted);

// Up to eight bytes as a little-endian number. Missing bytes are 0.
constexpr std::uint64_t word_of(const char *bytes, std::size_t count) {
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < count; ++i)
        word |= static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[i])) << (8 * i);
    return word;
}

// The bits of so many bytes of such a number.
constexpr std::uint64_t first_bytes(std::size_t count) {
    return count < 8 ? (std::uint64_t{1} << (8 * count)) - 1 : ~std::uint64_t{0};
}

template <class Unsigned>
inline std::uint64_t load(const char *bytes) {
    Unsigned value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

// The same, over at most the first eight bytes.
inline std::uint64_t load_word(const char *bytes, std::size_t count) {
    if constexpr (!is_little_endian)
        return word_of(bytes, count < 8 ? count : 8);
    if (count >= 8)
        return load<std::uint64_t>(bytes);
    if (count >= 4)
        return load<std::uint32_t>(bytes) | load<std::uint32_t>(bytes + count - 4) << (8 * (count - 4));
    if (count >= 2)
        return load<std::uint16_t>(bytes) | load<std::uint16_t>(bytes + count - 2) << (8 * (count - 2));
    return word_of(bytes, count);
}

// Copies a short text in a few moves. For most values a call of memcpy costs more than the copy.
inline void copy_bytes(char *to, const char *from, std::size_t count) {
    const auto copy_ends = [=]<class Chunk>(Chunk first) {
        Chunk last;
        std::memcpy(&first, from, sizeof first);
        std::memcpy(&last, from + count - sizeof last, sizeof last);
        std::memcpy(to, &first, sizeof first);
        std::memcpy(to + count - sizeof last, &last, sizeof last);
    };
    struct sixteen {
        std::uint64_t half[2];
    };
    if (count > 32)
        std::memcpy(to, from, count);
    else if (count >= 16)
        copy_ends(sixteen{});
    else if (count >= 8)
        copy_ends(std::uint64_t{});
    else if (count >= 4)
        copy_ends(std::uint32_t{});
    else if (count != 0) {
        const char middle = from[count / 2];
        const char last = from[count - 1];
        to[0] = from[0];
        to[count / 2] = middle;
        to[count - 1] = last;
    }
}

} // namespace sipcode
