// Where the lines of a message begin and end, as the codec cuts them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Part of a text.
struct Range {
    std::size_t begin = 0;
    std::size_t end = 0;
};

inline std::size_t size_of(const Range &range) { return range.end - range.begin; }

inline std::string_view text_of(std::string_view text, const Range &range) {
    return text.substr(range.begin, range.end - range.begin);
}

// A header line with its continuations. A line feed ends a line, unless the character two places before it is a comma.
struct HeaderLine {
    Range whole; // without its line end
    Range name;  // up to the colon; if there is none, up to the first character that a name cannot have
    Range value; // after the colon and its blanks, without trailing blanks
    bool has_colon = false;
    bool name_ends_blank = false; // a blank comes before the colon
    bool begins_blank = false;
};

struct MessageLines {
    Range start_line;
    std::vector<HeaderLine> headers;
    std::size_t body = 0; // where it begins
};

MessageLines message_lines(std::string_view message);

// Full name of a header in small letters, also for a compact form that the codec knows.
std::string canonical_name(std::string_view name);

// The parts between commas, without blanks around them. Commas in quotes and angle brackets do not count. Empty parts
// are left out.
std::vector<Range> comma_parts(std::string_view text, const Range &range);

// The parts between blanks.
std::vector<Range> words(std::string_view text, const Range &range);

// The lines of a text, without line ends. Every line feed ends one.
std::vector<Range> plain_lines(std::string_view text, const Range &range);
