// Decoding as the tests see it: a text in; the result, the members that were written and the log lines out.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <sipcode/decode.h>

namespace support {

// What each byte of a record holds before a decode: something that no decode leaves in a whole member, or nothing.
inline constexpr unsigned char stale = 0xA5;
inline constexpr unsigned char zero = 0;

// The result, then path and value of each text and number of the record, in its order. A member without a value still
// holds in all its bytes what was there before. Control and high bytes show as "\n" or "\xFF".
using Members = std::vector<std::pair<std::string, std::optional<std::string>>>;

Members members_of(const SIP_CODE_MSG &record, unsigned char before = stale, int result = 1);

struct Decoded {
    Members members;
    std::vector<std::string> log;

    // Value of a member, "(untouched)" when it has none.
    std::string operator[](std::string_view path) const;
};

// Decodes a read-only text that ends at an unreadable page into a record that does.
Decoded decode(std::string_view text, unsigned char before = stale);

// Decodes into a zeroed and into a stale record: what was there before shows in no member that is written, and each of
// these is terminated.
void expect_whole_members(std::string_view text);

// The members that differ, those of one record on a line: "via branch=b rport untouched addr=h:5060". Host and port of
// an address are one; "?" is one of them untouched.
std::string changes(const Members &from, const Members &to);

// The entries of a list as the tables write it: "a | b", or on lines of their own.
std::vector<std::string> entries(std::string_view list);

// Each on a line, as the members show.
std::string lines(const std::vector<std::string> &list);

// n characters, each unlike its neighbours.
std::string letters(std::size_t n);

std::string repeat(std::size_t times, std::string_view text);

} // namespace support
