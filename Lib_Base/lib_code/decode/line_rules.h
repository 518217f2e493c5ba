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

// Finds the end of a line in the text at `begin`. The finder gives, from the line on, the places of all bytes that may
// end it, and knows the end of the text.
//
//   CR LF   ends the line, unless a comma precedes it: then the line continues on the next one
//   LF      ends the line, unless the second byte before it is a comma, as it would be before CR LF
//   CR      ends the text of the line but not the line; after a comma it ends nothing
template <class Finder>
[[gnu::always_inline]] inline line_bounds find_line_end(const char *begin, const char *line, Finder &places) {
    const char *cut = nullptr; // the CR without LF that ended the text of this line
    const auto bounds = [&cut](const char *at, const char *next) {
        if (cut != nullptr) [[unlikely]]
            return line_bounds{cut, next};
        return line_bounds{at, next};
    };
    const char *at = places.find();
    for (; !places.is_end(at); at = places.find()) {
        places.pass();
        if (places.is_cr_lf(at)) [[likely]] {
            if (at != line && at[-1] == ',')
                continue;
            places.pass();
            return bounds(at, at + 2);
        }
        if (*at == '\n') {
            if (at - begin >= 2 && at[-2] == ',')
                continue;
            return bounds(at, at + 1);
        }
        if (*at == '\r' && cut == nullptr && (at == line || at[-1] != ','))
            cut = at;
    }
    return bounds(at, nullptr);
}

// The parts of a start line. `second` is the status line after "SIP/2.0", or the request URI. If the line is refused,
// it is what the refusal is about.
struct start_line_parts {
    SIP_DECODE_OUTCOME outcome;
    bool is_response;
    text first;
    text second;
};

inline start_line_parts cut_start_line(text line) {
    constexpr text protocol = "SIP/2.0";
    const auto cut_token = [](text &rest) {
        const text after = Parse_Skip_Nonblanks(rest);
        const text token(rest.data(), rest.size() - after.size());
        rest = skip_blanks(after);
        return token;
    };
    text rest = skip_blanks(line);
    const text first = cut_token(rest);
    if (rest.empty())
        return {SIP_DECODE_NO_START_LINE, false, first, line};
    rest = Parse_Trim_Blanks(rest);
    if (equals_nocase(first, protocol))
        return {rest.size() < 3 ? SIP_DECODE_BAD_STATUS : SIP_DECODE_DONE, true, first, rest};
    if (rest.front() == '<')
        return {SIP_DECODE_BAD_URI, false, first, rest};
    const text uri = cut_token(rest);
    if (!equals_nocase(rest, protocol))
        return {SIP_DECODE_BAD_PROTOCOL, false, first, rest};
    return {SIP_DECODE_DONE, false, first, uri};
}

} // namespace sipcode
