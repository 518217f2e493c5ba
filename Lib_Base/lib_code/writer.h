// Writes text into a buffer of known size. Each line is one call with one whole format, which the compiler checks
// against its values. A careful writer refuses a text that would break the message.
//
//   writer out(buffer, size);
//   out.line<"From: <sip:%s@%s:%d>\r\n">(from.user, from.addr.ip, from.addr.port);
//
// A format holds "%s" (a text member, a slice or a string), "%d" (an int or a long), "%02d" (an int from 0 to 99) and
// "%08x" (an int). Nothing is written beyond the room: what does not fit is cut, and the text in the buffer is always
// terminated.
//
// A line whose longest form fits is written with one check of the room and its members sixteen bytes at a time. This
// halves the cost of a message. Any other line, and every text of an exact writer, is written piece by piece.
#pragma once

#include <array>
#include <utility>

#include "text.h"

namespace sipcode {

template <std::size_t N>
struct format_string {
    consteval format_string() = default;
    consteval format_string(const char (&literal)[N]) {
        for (std::size_t i = 0; i < N; ++i)
            chars[i] = literal[i];
    }
    constexpr text whole() const { return {chars, N - 1}; }

    char chars[N] = {};
};

// Several formats, joined.
template <format_string... Parts>
inline constexpr auto joined = [] {
    format_string<(Parts.whole().size() + ... + 1)> whole;
    char *end = whole.chars;
    (..., (end = std::copy_n(Parts.chars, Parts.whole().size(), end)));
    return whole;
}();

enum class conversion { none, string, decimal, two_digits, hexadecimal };

// The position of a value in its line. It decides which characters a text must not contain.
enum class place { plain, quoted, bracketed, request_line };

// A piece of literal text and the conversion that follows it.
struct format_piece {
    std::size_t begin;
    std::size_t length;
    conversion value;
    place where;
};

struct conversion_mark {
    text mark;
    conversion value;
};
inline constexpr conversion_mark conversion_marks[] = {
    {"%s", conversion::string},
    {"%d", conversion::decimal},
    {"%02d", conversion::two_digits},
    {"%08x", conversion::hexadecimal},
};

constexpr std::size_t count_conversions(text format) {
    std::size_t count = 0;
    for (const char c : format)
        count += c == '%';
    return count;
}

// The position of the value that follows this beginning of a format.
constexpr place place_after(text beginning, text format) {
    bool quoted = false;
    bool bracketed = false;
    for (const char c : beginning) {
        quoted ^= c == '"';
        bracketed = c == '<' || (bracketed && c != '>');
    }
    if (format.ends_with(" SIP/2.0\r\n"))
        return place::request_line;
    return quoted ? place::quoted : bracketed ? place::bracketed : place::plain;
}

// Cuts a format at its conversions. An unknown one stays `none`, and then the line does not compile.
template <std::size_t Conversions>
consteval std::array<format_piece, Conversions + 1> cut_format(text format) {
    std::array<format_piece, Conversions + 1> pieces{};
    std::size_t begin = 0;
    for (std::size_t i = 0; i < Conversions; ++i) {
        std::size_t at = begin;
        while (format[at] != '%')
            ++at;
        pieces[i] = {begin, at - begin, conversion::none, place_after(at_most(format, at), format)};
        for (const conversion_mark &known : conversion_marks) {
            if (drop(format, at).starts_with(known.mark)) {
                pieces[i].value = known.value;
                begin = at + known.mark.size();
            }
        }
    }
    pieces[Conversions] = {begin, format.size() - begin, conversion::none, place::plain};
    return pieces;
}

template <format_string Format>
inline constexpr auto pieces_of = cut_format<count_conversions(Format.whole())>(Format.whole());

template <format_string Format>
inline constexpr bool holds_text = std::any_of(pieces_of<Format>.begin(), pieces_of<Format>.end(),
                                               [](format_piece piece) { return piece.value == conversion::string; });

// A text of the library's own, which needs no check.
template <class Text>
struct own_text {
    std::conditional_t<std::is_array_v<Text>, const Text &, Text> value;
};
template <class Text>
own_text(const Text &) -> own_text<Text>;

template <class Value>
inline constexpr bool is_own = false;
template <class Text>
inline constexpr bool is_own<own_text<Text>> = true;

template <class Value>
inline constexpr bool is_text = std::is_convertible_v<const Value &, text>;
template <class Value>
inline constexpr bool is_number = std::is_same_v<Value, int> || std::is_same_v<Value, long>;

// Most bytes that put_value writes. A member is copied in blocks, and the last block may write past the end of its
// text; what follows overwrites that.
inline constexpr std::size_t longest_number = 20;
template <conversion Conversion, class Value>
constexpr std::size_t longest_form(const Value &value) {
    if constexpr (is_own<Value>)
        return longest_form<Conversion>(value.value);
    else if constexpr (Conversion == conversion::two_digits)
        return 2;
    else if constexpr (Conversion == conversion::hexadecimal)
        return 8;
    else if constexpr (std::is_same_v<Value, int>)
        return std::size("-2147483648") - 1;
    else if constexpr (is_number<Value>)
        return longest_number;
    else if constexpr (std::is_array_v<Value>)
        return std::extent_v<Value> + 16;
    else
        return text(value).size();
}

// -------------------------------------------------------------------- values, where there is room for the longest form

template <std::size_t N>
char *put(char *to, const char (&member)[N]) {
    static_assert(N % 8 == 0);
    for (std::size_t at = 0; at + 16 <= N; at += 16) {
        const unsigned end = matches16(member + at, '\0'); // before the copy, so that one load serves both
        std::memcpy(to + at, member + at, 16);
        if (end != 0)
            return to + at + std::countr_zero(end);
    }
    if constexpr (N % 16 != 0) {
        std::memcpy(to + N - 8, member + N - 8, 8);
        if (const unsigned end = matches8(member + N - 8, '\0'); end != 0)
            return to + N - 8 + std::countr_zero(end);
    }
    return to + N;
}

inline char *put(char *to, text value) {
    copy_bytes(to, value.data(), value.size());
    return to + value.size();
}

// Two digits of every number below 100, in order.
inline constexpr auto digit_pairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

inline void put_pair(char *to, std::size_t value) { std::memcpy(to, &digit_pairs[2 * value], 2); }

// Defined in writer.cpp.
char *put_decimal(char *to, long value);

inline char *put_two_digits(char *to, int value) {
    put_pair(to, static_cast<unsigned>(value) % 100);
    return to + 2;
}

inline char *put_hexadecimal(char *to, int value) {
    constexpr std::size_t digits = 8;
    for (std::size_t i = 0; i < digits; ++i)
        to[i] = "0123456789abcdef"[static_cast<unsigned>(value) >> (28 - 4 * i) & 0xF];
    return to + digits;
}

template <conversion Conversion, class Value>
char *put_value(char *to, const Value &value) {
    static_assert(Conversion != conversion::none, "a conversion that this writer knows");
    if constexpr (is_own<Value>) {
        return put_value<Conversion>(to, value.value);
    } else if constexpr (Conversion == conversion::string) {
        static_assert(is_text<Value>, "%s takes a text");
        return put(to, value);
    } else if constexpr (Conversion == conversion::decimal) {
        static_assert(is_number<Value>, "%d takes a number");
        return put_decimal(to, value);
    } else if constexpr (Conversion == conversion::two_digits) {
        static_assert(std::is_same_v<Value, int>, "%02d takes an int");
        return put_two_digits(to, value);
    } else {
        static_assert(std::is_same_v<Value, int>, "%08x takes an int");
        return put_hexadecimal(to, value);
    }
}

// ---------------------------------------------------------------------------------------- texts that break the message

// Marks which of the sixteen bytes at `at` would break the message in this place.
template <place Where>
unsigned escapes16(const char *at) {
    if constexpr (Where == place::request_line)
        return matches_up_to16(at, ' ');
    unsigned escapes = matches16(at, '\r') | matches16(at, '\n');
    if constexpr (Where == place::quoted)
        escapes |= matches16(at, '"') | matches16(at, '\\');
    if constexpr (Where == place::bracketed)
        escapes |= matches16(at, '"') | matches16(at, '<') | matches16(at, '>');
    return escapes;
}

// Whether a text is safe in this place. The last text of a line must not end in a comma: a decoder would join the next
// line to it. Defined in writer.cpp.
bool stays_in(place where, bool ends_line, text value);

struct checked_put {
    char *end;
    bool safe;
};

template <place Where, bool EndsLine>
checked_put put_checked(char *to, text value) {
    return {put(to, value), stays_in(Where, EndsLine, value)};
}

// A member is checked in the pass that copies it. The last block may overlap the one before.
template <place Where, bool EndsLine, std::size_t N>
[[gnu::noinline]] checked_put put_checked(char *to, const char (&member)[N]) {
    static_assert(N % 8 == 0);
    if constexpr (N < 16)
        return put_checked<Where, EndsLine>(to, member_text(member));
    unsigned found = 0;
    const auto result = [&](char *end) {
        return checked_put{end, found == 0 && !(EndsLine && end != to && end[-1] == ',')};
    };
    for (std::size_t at = 0;; at = std::min(at + 16, N - 16)) {
        const unsigned escapes = escapes16<Where>(member + at);
        const unsigned terminators = matches16(member + at, '\0');
        std::memcpy(to + at, member + at, 16);
        if (terminators != 0) {
            const int length = std::countr_zero(terminators);
            found |= escapes & ((1U << length) - 1);
            return result(to + at + length);
        }
        found |= escapes;
        if (at == N - 16)
            return result(to + N);
    }
}

// -------------------------------------------------------------------------------------------------------------- writer

// A value of any kind, for lines that are written piece by piece.
struct line_value {
    template <class Value>
    line_value(const Value &value) {
        if constexpr (is_own<Value>)
            *this = line_value(value.value);
        else if constexpr (std::is_array_v<Value>)
            string = member_text(value);
        else if constexpr (is_text<Value>)
            string = value;
        else
            number = value;
    }

    text string;
    long number = 0;
};

class writer {
  public:
    // Why a message is refused. Only the first reason is kept.
    enum class fault { none, no_room, no_body, broken_text };
    // A careful writer checks every text for its place. An exact one writes no byte past the terminator.
    enum class mode { quick, careful, exact };

    // room counts the terminator and is at least 1.
    writer(char *buffer, std::size_t room, mode chosen = mode::quick)
        : begin(buffer), cursor(buffer), last(buffer + room - 1), quick_end(chosen == mode::quick ? last : buffer),
          how(chosen) {
        *cursor = '\0';
    }

    // For a part of a message: in the same mode as the whole.
    writer(char *buffer, std::size_t room, const writer &whole) : writer(buffer, room, whole.how) {}

    template <format_string Format, class... Values>
    void line(const Values &...values) {
        static_assert(pieces_of<Format>.size() == sizeof...(Values) + 1,
                      "as many values as the format has conversions");
        const char *const end = holds_text<Format> ? quick_end : last; // numbers are the same in every mode
        if (!put_pieces<Format, mode::quick>(end, std::index_sequence_for<Values...>{}, values...)) [[unlikely]]
            write_line_of_other_mode<Format>(values...);
    }

    void append(text t) {
        const std::size_t fitting = fit(t.size());
        copy_bytes(cursor, t.data(), fitting);
        cursor += fitting;
        *cursor = '\0';
    }

    void refuse(fault reason) {
        if (found == fault::none)
            found = reason;
    }

    std::size_t length() const { return static_cast<std::size_t>(cursor - begin); }
    fault first_fault() const { return found; }

  private:
    // Returns false and writes nothing if the longest form of the line does not fit.
    template <format_string Format, mode Mode, std::size_t... Index, class... Values>
    bool put_pieces(const char *end, std::index_sequence<Index...>, const Values &...values) {
        static constexpr auto &pieces = pieces_of<Format>;
        constexpr std::size_t literals = (pieces[sizeof...(Values)].length + ... + pieces[Index].length);
        const std::size_t longest = (literals + ... + longest_form<pieces[Index].value>(values));
        if (end - cursor < static_cast<std::ptrdiff_t>(longest)) [[unlikely]]
            return false;
        char *to = cursor;
        const auto put_literal = [&to](const format_piece &piece) {
            std::memcpy(to, Format.chars + piece.begin, piece.length);
            to += piece.length;
        };
        (..., (put_literal(pieces[Index]), to = put_next<Format, Mode, Index>(to, values)));
        put_literal(pieces[sizeof...(Values)]);
        *to = '\0';
        cursor = to;
        return true;
    }

    template <format_string Format, mode Mode, std::size_t Index, class Value>
    char *put_next(char *to, const Value &value) {
        static constexpr auto &pieces = pieces_of<Format>;
        if constexpr (Mode == mode::careful && pieces[Index].value == conversion::string && !is_own<Value>) {
            constexpr bool ends_line = Format.chars[pieces[Index + 1].begin] == '\r';
            const auto [end, safe] = put_checked<pieces[Index].where, ends_line>(to, value);
            if (!safe) [[unlikely]]
                refuse(fault::broken_text);
            return end;
        } else {
            return put_value<pieces[Index].value>(to, value);
        }
    }

    // How much of a text fits.
    std::size_t fit(std::size_t size) {
        const auto room = static_cast<std::size_t>(last - cursor);
        if (size <= room)
            return size;
        refuse(fault::no_room);
        return room;
    }

    template <format_string Format, class... Values>
    [[gnu::noinline]] void write_line_of_other_mode(const Values &...values) {
        if (how != mode::careful ||
            !put_pieces<Format, mode::careful>(last, std::index_sequence_for<Values...>{}, values...)) [[unlikely]]
            write_piece_by_piece<Format>(values...);
    }

    template <format_string Format, class... Values>
    [[gnu::noinline, gnu::cold]] void write_piece_by_piece(const Values &...values) {
        const line_value list[] = {values..., 0};
        write_pieces(Format.chars, pieces_of<Format>.data(), list, sizeof...(Values));
    }

    void write_pieces(const char *format, const format_piece *pieces, const line_value *values, std::size_t count);
    void write_value(conversion kind, const line_value &value);

    char *begin;
    char *cursor;
    char *last;      // place of the terminator in a full buffer
    char *quick_end; // how far lines may be written in blocks unchecked; the beginning of the buffer in other modes
    mode how;
    fault found = fault::none;
};

} // namespace sipcode
