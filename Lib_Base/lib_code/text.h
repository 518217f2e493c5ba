// Text idioms of the library: slices of received text, the one bounded store, the one number reader.
//
// A slice is a std::string_view into text that the caller owns. Only the parts of std::string_view that neither throw nor
// need a C++ runtime are used; what could throw (substr) has its own name here.
#pragma once

#include <array>
#include <string_view>
#include <utility>

#include "bytes.h"

namespace sipcode {

using text = std::string_view;

constexpr bool is_blank(char c) { return static_cast<unsigned char>(c - 1) < 32; } // bytes 1 to 32
constexpr bool is_digit(char c) { return static_cast<unsigned char>(c - '0') < 10; }
constexpr char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

// What the C library's number readers skip; fewer bytes than a blank.
constexpr bool is_white_space(char c) { return c == ' ' || static_cast<unsigned char>(c - '\t') < 5; }

constexpr text at_most(std::size_t n, text t) { return {t.data(), t.size() < n ? t.size() : n}; }

constexpr text drop(std::size_t n, text t) {
    const std::size_t dropped = t.size() < n ? t.size() : n;
    return {t.data() + dropped, t.size() - dropped};
}

// A text behind whose end fifteen bytes more can be read, and so behind that of each of its parts. A search in it takes ten
// instructions where one in any other short text takes thirty.
struct roomy_text : text {
    roomy_text() = default;
    explicit constexpr roomy_text(text t) : text(t) {}
    constexpr roomy_text(const char *begin, std::size_t size) : text(begin, size) {}
};

constexpr roomy_text drop(std::size_t n, roomy_text t) { return roomy_text(drop(n, text(t))); }

// Place of the first blank of a text without NUL, its size when there is none.
inline std::size_t find_blank(text t) { return find_blank(t.data(), t.size()); }

constexpr text skip_blanks(text t) {
    while (!t.empty() && is_blank(t.front()))
        t.remove_prefix(1);
    return t;
}

constexpr text trim_end(text t) {
    while (!t.empty() && is_blank(t.back()))
        t.remove_suffix(1);
    return t;
}

// Place of the first wanted byte of a text, its size or more when there is none.
inline std::size_t find(text t, char wanted) { return find_byte(t.data(), t.size(), wanted); }
[[gnu::always_inline]] inline std::size_t find(roomy_text t, char wanted) {
    for (std::size_t at = 0; at < t.size(); at += 16)
        if (const unsigned mask = matches16(t.data() + at, wanted); mask != 0)
            return at + static_cast<std::size_t>(std::countr_zero(mask));
    return t.size();
}

// A text cut at the first occurrence of a mark: without one, before is the whole text.
template <class Text>
struct basic_parts {
    Text before;
    Text after;
    bool found;
};
using parts = basic_parts<text>;

// In line, for its mark is a constant.
template <class Text>
[[gnu::always_inline]] inline basic_parts<Text> cut_at(char mark, Text t) {
    const std::size_t at = find(t, mark);
    if (at >= t.size())
        return {t, {}, false};
    return {{t.data(), at}, {t.data() + at + 1, t.size() - at - 1}, true};
}

// A mark of several characters is found by its last one, which is rarer than its first: "=" of "tag=".
template <std::size_t N, class Text>
basic_parts<Text> cut_at(const char (&mark)[N], Text t) {
    constexpr std::size_t length = N - 1;
    for (std::size_t from = length - 1; from < t.size();) {
        const std::size_t last = from + find(drop(from, t), mark[length - 1]);
        const std::size_t behind = last + 1;
        if (last < t.size() && std::memcmp(t.data() + behind - length, mark, length) == 0)
            return {{t.data(), behind - length}, {t.data() + behind, t.size() - behind}, true};
        from = behind;
    }
    return {t, {}, false};
}

template <class Text>
bool contains(Text t, char mark) {
    return find(t, mark) < t.size();
}

// A text member, read to its end when a host left it unterminated.
template <std::size_t N>
text member_text(const char (&member)[N]) {
    if constexpr (N <= 32 && N % 8 == 0) { // a call of strnlen costs twice as much
        for (std::size_t at = 0; at + 16 <= N; at += 16)
            if (const unsigned end = matches16(member + at, '\0'); end != 0)
                return {member, at + static_cast<std::size_t>(std::countr_zero(end))};
        if constexpr (N % 16 != 0)
            if (const unsigned end = matches8(member + N - 8, '\0'); end != 0)
                return {member, N - 8 + static_cast<std::size_t>(std::countr_zero(end))};
        return {member, N};
    }
    return {member, strnlen(member, N)};
}

// A text to compare with, without regard to the case of its letters.
class nocase {
  public:
    static constexpr std::size_t longest = 48;

    consteval nocase(const char *name) : nocase(text(name)) {}
    explicit consteval nocase(text name) : whole(name) {
        for (std::size_t i = 0; i < whole.size(); ++i) {
            const char lowered = lower(whole[i]);
            counted[i / 8] |= std::uint64_t{0xFF} << (8 * (i % 8));
            const bool is_letter = lowered >= 'a' && lowered <= 'z';
            letters[i / 8] |= static_cast<std::uint64_t>(is_letter ? 'a' - 'A' : 0) << (8 * (i % 8));
            lower_case[i / 8] |= static_cast<std::uint64_t>(static_cast<unsigned char>(lowered)) << (8 * (i % 8));
        }
    }

    constexpr std::size_t size() const { return whole.size(); }
    constexpr operator text() const { return whole; }

    // Whether the text that begins at `begin`, at least size() bytes long, begins with this one.
    bool begins(const char *begin) const {
        for (std::size_t at = 0; at < whole.size(); at += 8) {
            const std::uint64_t word = load_word(begin + at, whole.size() - at);
            if ((word | letters[at / 8]) != lower_case[at / 8])
                return false;
        }
        return true;
    }

    // The same where fifteen bytes more can be read behind the text.
    bool begins_roomy(const char *begin) const {
        if (!equal16(begin, letters, counted, lower_case))
            return false;
        for (std::size_t at = 16; at < whole.size(); at += 16)
            if (!equal16(begin + at, letters + at / 8, counted + at / 8, lower_case + at / 8))
                return false;
        return true;
    }

  private:
    text whole;
    std::uint64_t counted[longest / 8] = {}; // the bytes that belong to this text
    std::uint64_t letters[longest / 8] = {}; // the bit in which the two cases of a letter differ
    std::uint64_t lower_case[longest / 8] = {};
};

inline bool equals_nocase(text t, const nocase &name) { return t.size() == name.size() && name.begins(t.data()); }
inline bool starts_nocase(text t, const nocase &name) { return t.size() >= name.size() && name.begins(t.data()); }
inline bool equals_nocase(roomy_text t, const nocase &name) {
    return t.size() == name.size() && name.begins_roomy(t.data());
}
inline bool starts_nocase(roomy_text t, const nocase &name) {
    return t.size() >= name.size() && name.begins_roomy(t.data());
}

// Whether a text starts with a constant one, which is compared by whole words.
template <std::size_t N>
bool starts_with(text t, const char (&beginning)[N]) {
    return t.size() >= N - 1 && std::memcmp(t.data(), beginning, N - 1) == 0;
}

// The one store into a text member: as much of the value as fits, every other byte zero.
template <std::size_t N>
void store(char (&member)[N], text value) {
    const text kept = at_most(N - 1, value);
    std::memset(member, 0, N);
    copy_bytes(member, kept.data(), kept.size());
}

// A slice as the terminated string that a log line or a host service needs; by default as long as a message can be.
template <std::size_t Longest = 4095>
class terminated {
  public:
    explicit terminated(text t) {
        const text kept = at_most(Longest, t);
        length = kept.size();
        copy_bytes(buffer, kept.data(), length);
        buffer[length] = '\0';
    }
    terminated(const terminated &) = delete;
    terminated &operator=(const terminated &) = delete;

    const char *c_str() const { return buffer; }
    char *data() { return buffer; }
    text whole() const { return {buffer, length}; }

  private:
    std::size_t length;
    char buffer[Longest + 1];
};

struct number {
    int value;
    std::size_t length; // characters read, leading white space included; 0 when there is no number
};

// The number of these digits, or the largest when that is less.
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

// Reads a number as "%d" does: white space, one sign, decimal digits. A number too large for 64 bits saturates there, and
// the low 32 bits are kept, as the C library does on LP64. Reads up to where is_end holds.
template <class IsEnd>
constexpr number read_number_until(const char *const begin, IsEnd is_end) {
    const char *at = begin;
    bool negative = false;
    if (!is_end(at) && !is_digit(*at)) {
        while (!is_end(at) && is_white_space(*at))
            ++at;
        negative = !is_end(at) && *at == '-';
        if (!is_end(at) && (*at == '-' || *at == '+'))
            ++at;
    }
    const char *const digits = at;
    std::uint64_t magnitude = 0;
    for (; !is_end(at) && is_digit(*at); ++at)
        magnitude = magnitude * 10 + static_cast<std::uint64_t>(*at - '0');
    constexpr std::ptrdiff_t never_too_large = 18; // digits
    if (at - digits > never_too_large)
        magnitude = saturated(digits, at, static_cast<std::uint64_t>(INT64_MAX) + (negative ? 1 : 0));
    if (at == digits)
        return {0, 0};
    const auto low = static_cast<std::uint32_t>(magnitude);
    return {static_cast<int>(negative ? 0U - low : low), static_cast<std::size_t>(at - begin)};
}

constexpr number read_number(text t) {
    const char *const end = t.data() + t.size();
    return read_number_until(t.data(), [end](const char *at) { return at == end; });
}

// Of a text that is terminated, or ends in any other byte that belongs to no number: its end need not be looked for.
constexpr number read_terminated_number(const char *begin) {
    return read_number_until(begin, [](const char *) { return false; });
}

// Reads a number as atoi does: 0 when there is none.
constexpr int to_int(text t) { return read_number(t).value; }

// Reads a terminated text item by item as a scanf format does: each step moves on only when it matches.
class scanner {
  public:
    explicit constexpr scanner(text input) : at(input.data()), end(input.data() + input.size()) {}

    constexpr text rest() const { return {at, static_cast<std::size_t>(end - at)}; }
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
    constexpr bool integer(int &value) {
        const number found = read_terminated_number(at);
        if (found.length != 0)
            value = found.value;
        return take(found.length != 0, found.length);
    }

    // "%s": the text up to the next white space; empty, which is no match, only at the end.
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
