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

// A text cut at the first occurrence of a mark: without one, before is the whole text.
struct parts {
    text before;
    text after;
    bool found;
};

inline parts cut_at(char mark, text t) {
    const std::size_t at = find_byte(t.data(), t.size(), mark);
    return at == t.size() ? parts{t, {}, false} : parts{{t.data(), at}, {t.data() + at + 1, t.size() - at - 1}, true};
}

// A mark of several characters is found by its last one, which is rarer than its first: "=" of "tag=".
inline parts cut_at(text mark, text t) {
    for (std::size_t from = mark.size() - 1; from < t.size();) {
        const std::size_t last = from + find_byte(t.data() + from, t.size() - from, mark.back());
        const std::size_t behind = last + 1;
        if (last < t.size() && std::memcmp(t.data() + behind - mark.size(), mark.data(), mark.size()) == 0)
            return {{t.data(), behind - mark.size()}, {t.data() + behind, t.size() - behind}, true};
        from = behind;
    }
    return {t, {}, false};
}

inline bool contains(text t, char mark) { return find_byte(t.data(), t.size(), mark) != t.size(); }

// A text member, read to its end when a host left it unterminated.
template <std::size_t N>
text member_text(const char (&member)[N]) {
    return {member, strnlen(member, N)};
}

// A text to compare with, without regard to the case of its letters.
class nocase {
  public:
    static constexpr std::size_t longest = 40;

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

    // The same where sixteen bytes, or for a longer text all words of it, can be read.
    bool begins_roomy(const char *begin) const {
        std::uint64_t differing = difference(begin, 0) | difference(begin, 1);
        for (std::size_t word = 2; word * 8 < whole.size(); ++word)
            differing |= difference(begin, word);
        return differing == 0;
    }

  private:
    // Bits in which a word of a text differs from that of this one, case and what follows it aside.
    std::uint64_t difference(const char *begin, std::size_t word) const {
        return ((load_word(begin + 8 * word, 8) & counted[word]) | letters[word]) ^ lower_case[word];
    }

    text whole;
    std::uint64_t counted[longest / 8] = {}; // the bytes that belong to this text
    std::uint64_t letters[longest / 8] = {}; // the bit in which the two cases of a letter differ
    std::uint64_t lower_case[longest / 8] = {};
};

inline bool equals_nocase(text t, const nocase &name) { return t.size() == name.size() && name.begins(t.data()); }
inline bool starts_nocase(text t, const nocase &name) { return t.size() >= name.size() && name.begins(t.data()); }

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

// Reads a number as "%d" does: white space, one sign, decimal digits. A number too large for 64 bits saturates there, and
// the low 32 bits are kept, as the C library does on LP64.
constexpr number read_number(text t) {
    const char *at = t.data();
    const char *const end = at + t.size();
    while (at != end && is_white_space(*at))
        ++at;
    const bool negative = at != end && *at == '-';
    if (at != end && (*at == '-' || *at == '+'))
        ++at;
    const char *const digits = at;
    constexpr std::ptrdiff_t never_too_large = 18; // digits
    const char *const careful = end - at > never_too_large ? at + never_too_large : end;
    std::uint64_t magnitude = 0;
    for (; at != careful && is_digit(*at); ++at)
        magnitude = magnitude * 10 + static_cast<std::uint64_t>(*at - '0');
    const std::uint64_t largest = static_cast<std::uint64_t>(INT64_MAX) + (negative ? 1 : 0);
    for (; at != end && is_digit(*at); ++at) {
        const auto digit = static_cast<std::uint64_t>(*at - '0');
        magnitude = magnitude > (largest - digit) / 10 ? largest : magnitude * 10 + digit;
    }
    if (at == digits)
        return {0, 0};
    const auto low = static_cast<std::uint32_t>(magnitude);
    return {static_cast<int>(negative ? 0U - low : low), static_cast<std::size_t>(at - t.data())};
}

// Reads a number as atoi does: 0 when there is none.
constexpr int to_int(text t) { return read_number(t).value; }

// Reads a text item by item as a scanf format does: each step moves on only when it matches.
class scanner {
  public:
    explicit constexpr scanner(text input) : left(input) {}

    constexpr text rest() const { return left; }

    constexpr bool literal(text expected) {
        if (!left.starts_with(expected))
            return false;
        left.remove_prefix(expected.size());
        return true;
    }

    // Any white space, none included; always matches.
    constexpr bool white_space() {
        while (!left.empty() && is_white_space(left.front()))
            left.remove_prefix(1);
        return true;
    }

    // "%d"
    constexpr bool integer(int &value) {
        const number found = read_number(left);
        if (found.length == 0)
            return false;
        value = found.value;
        left.remove_prefix(found.length);
        return true;
    }

    // "%s": the text up to the next white space; empty, which is no match, only at the end.
    constexpr text word() {
        white_space();
        std::size_t length = 0;
        while (length < left.size() && !is_white_space(left[length]))
            ++length;
        const text taken = at_most(length, left);
        left.remove_prefix(length);
        return taken;
    }

  private:
    text left;
};

} // namespace sipcode
