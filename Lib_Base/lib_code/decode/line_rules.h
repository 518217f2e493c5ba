// Where lines end, and the parts of a start line: the rules that the splitter and the walk over header lines share.
#pragma once

#include "safe.h"
#include "text.h"

namespace sipcode {

inline constexpr int max_lines = 64; // entries of SIP_MSG.header and of SIP_MSG.line

struct line_bounds {
    const char *text_end;
    const char *next; // where the next line begins; null if the text ends first
};

template <class Finder>
struct line_end {
    line_bounds line;
    Finder places; // those after it
};

// Finds the end of a line in the text at `begin`. The finder gives, from the line on, the places of all bytes that may
// end it, and knows the end of the text.
//
//   CR LF   ends the line, unless a comma precedes it: then the line continues on the next one
//   LF      ends the line, unless the second byte before it is a comma, as it would be before CR LF
//   CR      ends the text of the line but not the line; after a comma it ends nothing
template <class Finder>
[[gnu::noinline]] line_end<Finder> find_any_line_end(const char *begin, Finder places) {
    const char *cut = nullptr; // the CR without LF that ended the text of this line
    for (;;) {
        const char *const at = places.find();
        const bool is_end = places.is_end(at);
        const char *next = nullptr;
        if (!is_end) {
            places.pass();
            if (places.is_cr_lf(at)) {
                if (places.follows_comma(at))
                    continue;
                places.pass();
                next = at + 2;
            } else if (*at == '\n' && (at - begin < 2 || at[-2] != ',')) {
                next = at + 1;
            } else {
                if (*at == '\r' && cut == nullptr && !places.follows_comma(at))
                    cut = at;
                continue;
            }
        }
        return {{cut != nullptr ? cut : at, next}, places};
    }
}

// The same, in a few instructions where CR LF ends the line.
template <class Finder>
[[gnu::always_inline]] inline line_bounds find_line_end(const char *begin, Finder &places) {
    const char *const at = places.find();
    if (places.is_cr_lf(at) && !places.follows_comma(at)) [[likely]] {
        places.pass();
        places.pass();
        return {at, at + 2};
    }
    if (places.is_end(at))
        return {at, nullptr};
    const line_end<Finder> found = find_any_line_end(begin, places);
    places = found.places;
    return found.line;
}

// The parts of a start line. `second` is the status line after "SIP/2.0", or the request URI. If the line is refused,
// it is what the refusal is about.
template <class Text>
struct start_line_parts {
    SIP_DECODE_OUTCOME outcome;
    bool is_response;
    Text first;
    Text second;
};

template <class Text>
start_line_parts<Text> cut_start_line(Text line) {
    constexpr nocase protocol = "SIP/2.0";
    const auto cut_token = [](Text &rest) {
        const Text after = Parse_Skip_Nonblanks(rest);
        const Text token(rest.data(), rest.size() - after.size());
        rest = skip_blanks(after);
        return token;
    };
    Text rest = skip_blanks(line);
    const Text first = cut_token(rest);
    if (rest.empty())
        return {SIP_DECODE_NO_START_LINE, false, first, line};
    rest = Parse_Trim_Blanks(rest);
    if (equals_nocase(first, protocol))
        return {rest.size() < 3 ? SIP_DECODE_BAD_STATUS : SIP_DECODE_DONE, true, first, rest};
    if (rest.front() == '<')
        return {SIP_DECODE_BAD_URI, false, first, rest};
    const Text uri = cut_token(rest);
    if (!equals_nocase(rest, protocol))
        return {SIP_DECODE_BAD_PROTOCOL, false, first, rest};
    return {SIP_DECODE_DONE, false, first, uri};
}

} // namespace sipcode
