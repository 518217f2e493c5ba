// The header lines of a message as the codec cuts them, and what a report on them needs.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "safe.h"

// Part of a text.
struct Range {
    std::size_t begin = 0;
    std::size_t end = 0;
};

inline std::size_t size_of(const Range &range) { return range.end - range.begin; }

inline std::string_view text_of(std::string_view text, const Range &range) {
    return text.substr(range.begin, range.end - range.begin);
}

// A header line, joined with the lines that continue it.
struct HeaderLine {
    SIP_HEADER_WALK step; // for SIP_Is_Header
    Range whole;          // without its line end
    Range name;           // up to the colon; empty if there is none
    Range value;          // after the colon and its blanks, without trailing blanks; without a colon, the line
    bool has_colon = false;
    bool name_ends_blank = false; // a blank comes before the colon
    bool begins_blank = false;
};

// The codec keeps 63 lines of a header section, the start line included.
inline constexpr std::size_t most_header_lines = 62;

// All header lines, also those after the last one that the codec keeps.
std::vector<HeaderLine> header_lines(std::string_view message);

// The items of a header line, if it is a list with more than one.
std::vector<Range> list_items(std::string_view message, const HeaderLine &line);

// The parts between blanks.
std::vector<Range> words(std::string_view text, const Range &range);

// The lines of a text, without line ends. Every line feed ends one.
std::vector<Range> plain_lines(std::string_view text, const Range &range);
