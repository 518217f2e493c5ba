// Where the lines of a message stand, as the codec cuts them.
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

// A header line with those that it goes on in: a line ends in a line feed, unless a comma stands two characters before that.
struct HeaderLine {
    Range whole; // without its line end
    Range name;  // up to the colon; without one, up to the first character that no name has
    Range value; // behind the colon and blanks, without trailing ones
    bool has_colon = false;
    bool name_ends_blank = false; // a blank stands before the colon
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

// The parts between commas, without those in quotes and angle brackets, without blanks around them; empty ones are left out.
std::vector<Range> comma_parts(std::string_view text, const Range &range);

// The parts between blanks.
std::vector<Range> words(std::string_view text, const Range &range);

// The lines of a text, without line ends; a line feed ends each.
std::vector<Range> plain_lines(std::string_view text, const Range &range);
