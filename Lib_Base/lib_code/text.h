// Text idioms of the library: slices of received text, the one bounded store, the one number reader.
//
// A slice is a std::string_view into text that the caller owns. Its members that may throw need a C++ runtime, so they
// are not used: at_most and drop replace substr.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "bytes.h"

namespace sipcode {

using text = std::string_view;

constexpr bool is_blank(char c) { return static_cast<unsigned char>(c - 1) < 32; } // bytes 1 to 32
constexpr bool is_digit(char c) { return static_cast<unsigned char>(c - '0') < 10; }
constexpr char case_bit = 'a' - 'A'; // what the two cases of a letter differ in
constexpr char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | case_bit) : c; }

// What the C library's number readers skip. Fewer characters than is_blank.
constexpr bool is_white_space(char c) {
    return static_cast<unsigned char>(c) <= ' ' && (c == ' ' || static_cast<unsigned char>(c - '\t') < 5);
}

constexpr text at_most(text t, std::size_t n) { return {t.data(), t.size() < n ? t.size() : n}; }

constexpr text drop(text t, std::size_t n) {
    const std::size_t dropped = t.size() < n ? t.size() : n;
    return {t.data() + dropped, t.size() - dropped};
}

// A view readable piece_size bytes past its end; so is each of its parts. A search takes ten instructions in it and
// thirty in any other short text.
struct padded_text : text {
    padded_text() = default;
    explicit constexpr padded_text(text t) : text(t) {}
    constexpr padded_text(const char *begin, std::size_t size) : text(begin, size) {}
};

constexpr padded_text drop(padded_text t, std::size_t n) { return padded_text(drop(text(t), n)); }

// What follows the first token of a text without NUL.
inline text Parse_Skip_Nonblanks(text t) { return drop(t, find_blank(t.data(), t.size())); }
inline padded_text Parse_Skip_Nonblanks(padded_text t) {
    for (std::size_t at = 0; at < t.size(); at += piece_size)
        if (const std::uint32_t mask = matches_up_to_of_piece(t.data() + at, ' '); mask != 0)
            return drop(t, at + first_bit(mask));
    return drop(t, t.size());
}

template <class Text>
constexpr Text skip_blanks(Text t) {
    while (!t.empty() && is_blank(t.front()))
        t.remove_prefix(1);
    return t;
}

template <class Text>
constexpr Text Parse_Trim_Blanks(Text t) {
    while (!t.empty() && is_blank(t.back()))
        t.remove_suffix(1);
    return t;
}

// Place of the first wanted byte; the size of the text or more if there is none.
inline std::size_t find(text t, char wanted) { return find_byte(t.data(), t.size(), wanted); }
[[gnu::always_inline]] inline std::size_t find(padded_text t, char wanted) {
    for (std::size_t at = 0; at < t.size(); at += piece_size)
        if (const std::uint32_t mask = matches_of_piece(t.data() + at, wanted); mask != 0)
            return at + first_bit(mask);
    return t.size();
}

inline std::size_t find_either(padded_text t, char one, char other) {
    for (std::size_t at = 0; at < t.size(); at += piece_size)
        if (const std::uint32_t mask = matches_of_piece(t.data() + at, one) | matches_of_piece(t.data() + at, other);
            mask != 0)
            return at + first_bit(mask);
    return t.size();
}

// A text cut at the first occurrence of a mark. Without the mark, before is the whole text.
template <class Text>
struct basic_parts {
    Text before;
    Text after;
    bool found;
};
using parts = basic_parts<text>;
using padded_parts = basic_parts<padded_text>;

// Inlined because the mark is a constant.
template <class Text>
[[gnu::always_inline]] inline basic_parts<Text> cut_at(Text t, char mark) {
    const std::size_t at = find(t, mark);
    if (at >= t.size())
        return {t, {}, false};
    return {{t.data(), at}, {t.data() + at + 1, t.size() - at - 1}, true};
}

// A mark of several characters is found by its last one, which is rarer than its first: "=" of "tag=".
template <std::size_t N, class Text>
[[gnu::always_inline]] inline basic_parts<Text> cut_at(Text t, const char (&mark)[N]) {
    constexpr std::size_t length = N - 1;
    for (std::size_t from = length - 1; from < t.size();) {
        const std::size_t last = from + find(drop(t, from), mark[length - 1]);
        const std::size_t after = last + 1;
        if (last < t.size() && std::memcmp(t.data() + after - length, mark, length) == 0)
            return {{t.data(), after - length}, {t.data() + after, t.size() - after}, true};
        from = after;
    }
    return {t, {}, false};
}

template <class Text>
bool contains(Text t, char mark) {
    return find(t, mark) < t.size();
}

// The text of a member. It ends where the member ends if a host left it unterminated.
template <std::size_t N>
text member_text(const char (&member)[N]) {
    if constexpr (N <= 32 && N % 8 == 0) { // a call of strnlen costs twice as much
        for (std::size_t at = 0; at + 16 <= N; at += 16)
            if (const unsigned end = matches16(member + at, '\0'); end != 0)
                return {member, at + first_bit(end)};
        if constexpr (N % 16 != 0)
            if (const unsigned end = matches8(member + N - 8, '\0'); end != 0)
                return {member, N - 8 + first_bit(end)};
        return {member, N};
    }
    return {member, strnlen(member, N)};
}

// Comparison with a constant ignores case by one rule: every character of the constant from '@' on is a letter. Bit
// 0x40 then marks a letter.
consteval bool has_letters_alone_from_at(text constant) {
    return std::all_of(constant.begin(), constant.end(),
                       [](char c) { return c < '@' || (lower(c) >= 'a' && lower(c) <= 'z'); });
}

// The bits in which the cases of the letters differ, in eight characters of such a constant.
constexpr std::uint64_t case_bits_of(std::uint64_t characters) { return (characters & 0x4040404040404040) >> 1; }

void not_such_a_constant(); // never defined: a call of it does not compile

// A constant that padded text is compared with, ignoring case. It holds no pointer, so a table of them needs no
// relocation.
class nocase {
  public:
    static constexpr std::size_t longest = 32;

    consteval nocase(const char *name) : length(text(name).size()) {
        if (length > longest || !has_letters_alone_from_at(name))
            not_such_a_constant();
        for (std::size_t i = 0; i < longest; ++i) {
            lower_case[i] = i < length ? lower(name[i]) : any;
            case_bits[i] = i >= length ? any : lower_case[i] >= '@' ? case_bit : '\0';
        }
    }

    constexpr std::size_t size() const { return length; }
    constexpr operator text() const { return {lower_case, length}; } // in lower case

    // Whether the text at `begin` starts with this one. It must be readable for size() + 15 bytes.
    bool begins(const char *begin) const {
        return equal16_with_bits(begin, case_bits, lower_case) &&
               (length <= 16 || equal16_with_bits(begin + 16, case_bits + 16, lower_case + 16));
    }

  private:
    static constexpr char any = '\xFF'; // after the constant: the bits that make every byte equal

    alignas(16) char lower_case[longest] = {};
    alignas(16) char case_bits[longest] = {};
    std::size_t length;
};

inline bool equals_nocase(padded_text t, const nocase &name) {
    return t.size() == name.size() && name.begins(t.data());
}
inline bool starts_nocase(padded_text t, const nocase &name) {
    return t.size() >= name.size() && name.begins(t.data());
}

// The same for any text, eight bytes at a time. The constant must keep the rule above.
inline bool starts_nocase(text t, text constant) {
    if (t.size() < constant.size())
        return false;
    for (std::size_t at = 0; at < constant.size(); at += 8) {
        const std::size_t left = constant.size() - at;
        const std::uint64_t wanted = load_word(constant.data() + at, left);
        if (((load_word(t.data() + at, left) ^ wanted) & ~case_bits_of(wanted)) != 0)
            return false;
    }
    return true;
}
inline bool equals_nocase(text t, text constant) { return t.size() == constant.size() && starts_nocase(t, constant); }

// Whether a text starts with a constant. The compiler compares whole words.
template <std::size_t N>
bool starts_with(text t, const char (&beginning)[N]) {
    return t.size() >= N - 1 && std::memcmp(t.data(), beginning, N - 1) == 0;
}

// The one store into a text member: as much of the value as fits, every other byte zero.
template <std::size_t N>
void store(char (&member)[N], text value) {
    const text kept = at_most(value, N - 1);
    std::memset(member, 0, N);
    copy_bytes(member, kept.data(), kept.size());
}

// A terminated and padded copy of a text, for log lines and host services. By default it has room for a whole message.
template <std::size_t Longest = 4095>
class terminated {
  public:
    explicit terminated(text t) {
        const text kept = at_most(t, Longest);
        length = kept.size();
        copy_bytes(buffer, kept.data(), length);
        std::memset(buffer + length, 0, piece_size);
    }
    terminated(const terminated &) = delete;
    terminated &operator=(const terminated &) = delete;

    const char *c_str() const { return buffer; }
    char *data() { return buffer; }
    padded_text whole() const { return {buffer, length}; }

  private:
    std::size_t length;
    char buffer[Longest + piece_size];
};

struct number {
    int value;
    std::size_t length; // characters read, leading white space included; 0 if there is no number
};

// The number that the digits write, at most `largest`.
constexpr std::uint64_t saturated(const char *digits, const char *end, std::uint64_t largest) {
    constexpr std::ptrdiff_t longest = 19; // digits of the largest
    while (digits != end && *digits == '0')
        ++digits;
    if (end - digits > longest)
        return largest;
    std::uint64_t magnitude = 0;
    for (; digits != end; ++digits) {
        const auto digit = static_cast<std::uint64_t>(*digits - '0');
        magnitude = magnitude > (largest - digit) / 10 ? largest : magnitude * 10 + digit;
    }
    return magnitude;
}

// Reads a number as "%d" does: white space, one sign, decimal digits. A number too large for 64 bits saturates. The low
// 32 bits are kept, as the C library does on LP64.
constexpr number read_number(text t) {
    const char *at = t.data();
    const char *const end = at + t.size();
    while (at != end && is_white_space(*at))
        ++at;
    const bool negative = at != end && *at == '-';
    if (at != end && (*at == '-' || *at == '+'))
        ++at;
    const char *const digits = at;
    while (at != end && is_digit(*at))
        ++at;
    if (at == digits)
        return {0, 0};
    const auto low =
        static_cast<std::uint32_t>(saturated(digits, at, static_cast<std::uint64_t>(INT64_MAX) + (negative ? 1 : 0)));
    return {static_cast<int>(negative ? 0U - low : low), static_cast<std::size_t>(at - t.data())};
}

// The same, with up to seven digits read at once: a port costs half as much.
inline number read_number(padded_text t) {
    if constexpr (is_little_endian) {
        constexpr std::uint64_t each_byte = 0x0101010101010101;
        std::uint64_t digits = load<std::uint64_t>(t.data()) ^ each_byte * '0'; // the values of digits
        const std::uint64_t others = (digits | (digits + each_byte * (0x80 - 10))) & each_byte * 0x80; // 10 or more
        const std::size_t length = std::min(first_bit(others) / 8, t.size());
        if (length != 0 && length < 8) {
            digits <<= 64 - 8 * length;
            const std::uint64_t pairs = (digits * (10 << 8 | 1) >> 8) & 0x00FF00FF00FF00FF;
            const std::uint64_t fours = (pairs * (100 << 16 | 1) >> 16) & 0x0000FFFF0000FFFF;
            return {static_cast<int>(fours * (std::uint64_t{10000} << 32 | 1) >> 32), length};
        }
    }
    return read_number(text(t));
}

// Reads a number as atoi does: 0 if there is none.
constexpr int to_int(text t) { return read_number(t).value; }
inline int to_int(padded_text t) { return read_number(t).value; }

// Reads a terminated and padded text item by item as a scanf format does. Each step moves on only if it matches.
class scanner {
  public:
    explicit constexpr scanner(padded_text input) : at(input.data()), end(input.data() + input.size()) {}

    constexpr padded_text rest() const { return {at, static_cast<std::size_t>(end - at)}; }
    constexpr bool at_end() const { return *at == '\0'; }

    template <std::size_t N>
    bool literal(const char (&expected)[N]) {
        return take(starts_with(rest(), expected), N - 1);
    }
    constexpr bool literal(text expected) { return take(rest().starts_with(expected), expected.size()); }

    // Any white space, none included; always matches.
    constexpr bool white_space() {
        while (is_white_space(*at))
            ++at;
        return true;
    }

    constexpr void blanks() {
        while (is_blank(*at))
            ++at;
    }

    // "%d"
    bool integer(int &value) {
        const number found = read_number(rest());
        if (found.length != 0)
            value = found.value;
        return take(found.length != 0, found.length);
    }

    // "%s": the text up to the next white space. It is empty, and no match, only at the end.
    constexpr text word() {
        white_space();
        const char *const begin = at;
        while (static_cast<unsigned char>(*at) > ' ' || (*at != '\0' && !is_white_space(*at)))
            ++at;
        return {begin, static_cast<std::size_t>(at - begin)};
    }

  private:
    constexpr bool take(bool matches, std::size_t length) {
        at += matches ? length : 0;
        return matches;
    }

    const char *at;
    const char *end;
};

} // namespace sipcode
