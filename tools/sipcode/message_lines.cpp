// Where the lines of a message begin and end, see message_lines.h.
#include "message_lines.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace {

bool is_blank(char c) { return c > 0 && c <= ' '; }

Range trimmed(std::string_view text, Range range) {
    while (range.begin < range.end && is_blank(text[range.begin]))
        ++range.begin;
    while (range.begin < range.end && is_blank(text[range.end - 1]))
        --range.end;
    return range;
}

bool joins(std::string_view text, std::size_t line_feed) { return line_feed >= 2 && text[line_feed - 2] == ','; }

// Where the line that begins here ends: at its line feed, or at the end of the text.
std::size_t line_feed_of(std::string_view text, std::size_t begin) {
    std::size_t end = text.find('\n', begin);
    while (end != std::string_view::npos && joins(text, end))
        end = text.find('\n', end + 1);
    return std::min(end, text.size());
}

Range without_return(std::string_view text, Range line) {
    if (line.end > line.begin && text[line.end - 1] == '\r')
        --line.end;
    return line;
}

bool is_name_character(char c) {
    constexpr std::string_view marks = "-.!%*_+`'~";
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || marks.find(c) != std::string_view::npos;
}

HeaderLine header_line(std::string_view text, const Range &whole) {
    HeaderLine line;
    line.whole = whole;
    line.begins_blank = is_blank(text[whole.begin]);
    const std::string_view content = text_of(text, whole);
    const std::size_t colon = content.find(':');
    line.has_colon = colon != std::string_view::npos;
    const auto name_end =
        static_cast<std::size_t>(std::find_if_not(content.begin(), content.end(), is_name_character) - content.begin());
    const std::size_t split = line.has_colon ? colon : name_end;
    line.name = trimmed(text, {whole.begin, whole.begin + split});
    line.name_ends_blank = line.has_colon && colon > 0 && is_blank(content[colon - 1]);
    line.value = trimmed(text, {whole.begin + split + (line.has_colon ? 1 : 0), whole.end});
    return line;
}

} // namespace

MessageLines message_lines(std::string_view message) {
    MessageLines lines;
    std::size_t begin = 0;
    bool is_first = true;
    while (begin < message.size()) {
        const std::size_t line_feed = line_feed_of(message, begin);
        const Range line = without_return(message, {begin, line_feed});
        begin = std::min(line_feed + 1, message.size());
        if (line.begin == line.end || message[line.begin] == '\r')
            break;
        if (is_first)
            lines.start_line = line;
        else
            lines.headers.push_back(header_line(message, line));
        is_first = false;
    }
    lines.body = begin;
    return lines;
}

std::string canonical_name(std::string_view name) {
    struct Compact {
        std::string_view form;
        std::string_view name;
    };
    constexpr Compact compacts[] = {{"i", "call-id"},   {"m", "contact"}, {"c", "content-type"},
                                    {"f", "from"},      {"t", "to"},      {"x", "session-expires"},
                                    {"k", "supported"}, {"v", "via"},     {"l", "content-length"}};
    std::string small(name);
    std::transform(small.begin(), small.end(), small.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto *const known = std::find_if(std::begin(compacts), std::end(compacts),
                                           [&](const Compact &compact) { return compact.form == small; });
    return known == std::end(compacts) ? small : std::string(known->name);
}

std::vector<Range> comma_parts(std::string_view text, const Range &range) {
    std::vector<Range> parts;
    bool is_quoted = false;
    bool is_bracketed = false;
    std::size_t begin = range.begin;
    const auto add = [&](std::size_t end) {
        if (const Range part = trimmed(text, {begin, end}); part.begin < part.end)
            parts.push_back(part);
        begin = end + 1;
    };
    for (std::size_t i = range.begin; i < range.end; ++i) {
        const char c = text[i];
        if (c == '"')
            is_quoted = !is_quoted;
        else if (!is_quoted && (c == '<' || c == '>'))
            is_bracketed = c == '<';
        else if (c == ',' && !is_quoted && !is_bracketed)
            add(i);
    }
    add(range.end);
    return parts;
}

std::vector<Range> words(std::string_view text, const Range &range) {
    std::vector<Range> found;
    for (std::size_t i = range.begin; i < range.end; ++i) {
        if (is_blank(text[i]))
            continue;
        const std::size_t begin = i;
        while (i < range.end && !is_blank(text[i]))
            ++i;
        found.push_back({begin, i});
    }
    return found;
}

std::vector<Range> plain_lines(std::string_view text, const Range &range) {
    std::vector<Range> lines;
    for (std::size_t begin = range.begin; begin < range.end;) {
        const std::size_t end = std::min(text.find('\n', begin), range.end);
        lines.push_back(without_return(text, {begin, end}));
        begin = end + 1;
    }
    return lines;
}
