#include "writer.h"

namespace sipcode {
namespace {

constexpr auto powers_of_ten = [] {
    std::array<unsigned long, longest_number> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i)
        powers[i] = powers[i - 1] * 10;
    return powers;
}();

// The number of bits times log10(2) is exact or one too low. The power of ten decides which.
std::size_t count_digits(unsigned long value) {
    const auto least = static_cast<std::size_t>(std::bit_width(value | 1) * 1233 >> 12);
    return least + ((value | 1) >= powers_of_ten[least]);
}

// Ports, sequence numbers and sizes: half the cost of the general form.
constexpr std::uint32_t small_end = 100000;
char *put_small(char *to, std::uint32_t value) {
    if (value >= 1000) {
        if (value >= 10000) {
            *to++ = static_cast<char>('0' + value / 10000);
            value %= 10000;
        }
        put_pair(to, value / 100);
        put_pair(to + 2, value % 100);
        return to + 4;
    }
    if (value >= 100) {
        *to++ = static_cast<char>('0' + value / 100);
        value %= 100;
    } else if (value < 10) {
        *to = static_cast<char>('0' + value);
        return to + 1;
    }
    put_pair(to, value);
    return to + 2;
}

} // namespace

char *put_decimal(char *to, long value) {
    if (value >= 0 && value < small_end)
        return put_small(to, static_cast<std::uint32_t>(value));
    auto left = static_cast<unsigned long>(value);
    if (value < 0) {
        *to++ = '-';
        left = 0UL - left;
    }
    char *const end = to + count_digits(left);
    char *at = end;
    for (; left > UINT32_MAX; left /= 100)
        put_pair(at -= 2, left % 100);
    auto low = static_cast<std::uint32_t>(left); // cheaper to divide
    for (; low >= 10; low /= 100)
        put_pair(at -= 2, low % 100);
    if (at != to)
        *to = static_cast<char>('0' + low);
    return end;
}

bool stays_in(place where, bool ends_line, text value) {
    const auto escapes = [where](char c) {
        switch (where) {
        case place::request_line:
            return static_cast<unsigned char>(c) <= ' ';
        case place::quoted:
            return c == '\r' || c == '\n' || c == '"' || c == '\\';
        case place::bracketed:
            return c == '\r' || c == '\n' || c == '"' || c == '<' || c == '>';
        default:
            return c == '\r' || c == '\n';
        }
    };
    return !(ends_line && value.ends_with(',')) && std::none_of(value.begin(), value.end(), escapes);
}

void writer::write_pieces(const char *format, const format_piece *pieces, const line_value *values, std::size_t count) {
    for (std::size_t i = 0; how == mode::careful && i < count; ++i)
        if (pieces[i].value == conversion::string &&
            !stays_in(pieces[i].where, format[pieces[i + 1].begin] == '\r', values[i].string))
            refuse(fault::broken_text);
    for (std::size_t i = 0; i < count; ++i) {
        append({format + pieces[i].begin, pieces[i].length});
        write_value(pieces[i].value, values[i]);
    }
    append({format + pieces[count].begin, pieces[count].length});
}

void writer::write_value(conversion kind, const line_value &value) {
    if (kind == conversion::string)
        return append(value.string);
    char number[longest_number + 1];
    char *const end = kind == conversion::decimal      ? put_decimal(number, value.number)
                      : kind == conversion::two_digits ? put_two_digits(number, static_cast<int>(value.number))
                                                       : put_hexadecimal(number, static_cast<int>(value.number));
    *end = '\0';
    append(number);
}

} // namespace sipcode
