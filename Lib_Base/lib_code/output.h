// Text into a buffer of known room: a line is one call with its format whole, checked against its values when compiled.
//
//   writer out(buffer, size);
//   out.line<"From: <sip:%s@%s:%d>\r\n">(from.user, from.addr.ip, from.addr.port);
//
// A format holds "%s" (a text member, a slice or a string), "%d" (an int or a long), "%02d" (an int from 0 to 99) and "%08x"
// (an int). Nothing is ever written behind the room: what does not fit is cut, and the text in the buffer is always
// terminated.
#pragma once

#include <array>
#include <utility>

#include "text.h"

namespace sipcode {

template <std::size_t N>
struct format_string {
    consteval format_string(const char (&literal)[N]) {
        for (std::size_t i = 0; i < N; ++i)
            chars[i] = literal[i];
    }
    constexpr text whole() const { return {chars, N - 1}; }

    char chars[N];
};

enum class conversion { none, string, decimal, two_digits, hexadecimal };

// A stretch of literal text and the conversion behind it.
struct format_piece {
    std::size_t begin;
    std::size_t length;
    conversion value;
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

// Cuts a format at its conversions; one that is none of them stays `none` and is refused when compiled.
template <std::size_t Conversions>
consteval std::array<format_piece, Conversions + 1> cut_format(text format) {
    std::array<format_piece, Conversions + 1> pieces{};
    std::size_t begin = 0;
    for (std::size_t i = 0; i < Conversions; ++i) {
        std::size_t at = begin;
        while (format[at] != '%')
            ++at;
        pieces[i] = {begin, at - begin, conversion::none};
        for (const conversion_mark &known : conversion_marks) {
            if (drop(at, format).starts_with(known.mark)) {
                pieces[i].value = known.value;
                begin = at + known.mark.size();
            }
        }
    }
    pieces[Conversions] = {begin, format.size() - begin, conversion::none};
    return pieces;
}

template <class Value>
inline constexpr bool is_text = std::is_convertible_v<const Value &, text>;
template <class Value>
inline constexpr bool is_number = std::is_same_v<Value, int> || std::is_same_v<Value, long>;

class writer {
  public:
    // room counts the terminator and is at least 1.
    writer(char *buffer, std::size_t room) : begin(buffer), cursor(buffer), last(buffer + room - 1) { *cursor = '\0'; }

    template <format_string Format, class... Values>
    void line(const Values &...values) {
        write_pieces<Format>(std::index_sequence_for<Values...>{}, values...);
        *cursor = '\0';
    }

    void append(text t) {
        write(t);
        *cursor = '\0';
    }

    std::size_t length() const { return static_cast<std::size_t>(cursor - begin); }

  private:
    template <format_string Format, std::size_t... Index, class... Values>
    void write_pieces(std::index_sequence<Index...>, const Values &...values) {
        constexpr std::size_t conversions = count_conversions(Format.whole());
        static_assert(conversions == sizeof...(Values), "as many values as the format has conversions");
        constexpr auto pieces = cut_format<conversions>(Format.whole());
        (write_piece<Format, pieces[Index].begin, pieces[Index].length, pieces[Index].value>(values), ...);
        write_literal<Format, pieces[conversions].begin, pieces[conversions].length>();
    }

    // Its length is known when compiled: where there is room it costs a few moves and no call.
    template <format_string Format, std::size_t Begin, std::size_t Length>
    void write_literal() {
        if (static_cast<std::size_t>(last - cursor) < Length)
            return write(at_most(Length, drop(Begin, Format.whole())));
        std::memcpy(cursor, Format.chars + Begin, Length);
        cursor += Length;
    }

    template <format_string Format, std::size_t Begin, std::size_t Length, conversion Conversion, class Value>
    void write_piece(const Value &value) {
        static_assert(Conversion != conversion::none, "a conversion that this writer knows");
        write_literal<Format, Begin, Length>();
        if constexpr (Conversion == conversion::string) {
            static_assert(is_text<Value>, "%s takes a text");
            write(as_text(value));
        } else if constexpr (Conversion == conversion::decimal) {
            static_assert(is_number<Value>, "%d takes a number");
            write_decimal(value);
        } else if constexpr (Conversion == conversion::two_digits) {
            static_assert(std::is_same_v<Value, int>, "%02d takes an int");
            const char digits[] = {static_cast<char>('0' + value / 10 % 10), static_cast<char>('0' + value % 10)};
            write({digits, sizeof digits});
        } else {
            static_assert(std::is_same_v<Value, int>, "%08x takes an int");
            write_hexadecimal(static_cast<unsigned>(value));
        }
    }

    static text as_text(text value) { return value; }
    template <std::size_t N>
    static text as_text(const char (&member)[N]) {
        return member_text(member);
    }

    [[gnu::noinline]] void write(text t) {
        const text fitting = at_most(static_cast<std::size_t>(last - cursor), t);
        if (!fitting.empty())
            std::memcpy(cursor, fitting.data(), fitting.size());
        cursor += fitting.size();
    }

    [[gnu::noinline]] void write_decimal(long value) {
        char digits[20];
        char *first = digits + sizeof digits;
        unsigned long magnitude =
            value < 0 ? 0UL - static_cast<unsigned long>(value) : static_cast<unsigned long>(value);
        do
            *--first = static_cast<char>('0' + magnitude % 10);
        while ((magnitude /= 10) != 0);
        if (value < 0)
            *--first = '-';
        write({first, static_cast<std::size_t>(digits + sizeof digits - first)});
    }

    void write_hexadecimal(unsigned value) {
        char digits[8];
        for (std::size_t i = 0; i < sizeof digits; ++i)
            digits[i] = "0123456789abcdef"[value >> (28 - 4 * i) & 0xF];
        write({digits, sizeof digits});
    }

    char *begin;
    char *cursor;
    char *last; // where the terminator of a full buffer stands
};

} // namespace sipcode
