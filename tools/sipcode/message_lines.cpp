// The header lines of a message, see message_lines.h.
#include "message_lines.h"

#include <algorithm>
#include <string>

namespace {

bool is_blank(char c) { return c > 0 && c <= ' '; }

Range trimmed(std::string_view text, Range range) {
    while (range.begin < range.end && is_blank(text[range.begin]))
        ++range.begin;
    while (range.begin < range.end && is_blank(text[range.end - 1]))
        --range.end;
    return range;
}

Range without_return(std::string_view text, Range line) {
    if (line.end > line.begin && text[line.end - 1] == '\r')
        --line.end;
    return line;
}

HeaderLine header_line(std::string_view text, const SIP_HEADER_WALK &step) {
    HeaderLine line;
    const Range name{step.name.at, step.name.at + step.name.length};
    line.step = step;
    line.whole = {name.begin, step.value.at + step.value.length};
    line.name = trimmed(text, name);
    line.value = trimmed(text, {step.value.at, line.whole.end});
    line.begins_blank = is_blank(text[line.whole.begin]);
    line.has_colon = text_of(text, line.whole).find(':') != std::string_view::npos;
    line.name_ends_blank = size_of(name) > 0 && is_blank(text[name.end - 1]);
    return line;
}

} // namespace

// A walk gives the lines that the codec has room for. The last of them begins the next walk, in the place of a start
// line.
std::vector<HeaderLine> header_lines(std::string_view message) {
    std::vector<HeaderLine> lines;
    SIP_HEADER_WALK walk{};
    std::size_t begin = 0;
    while (SIP_Walk_Headers(message.data() + begin, message.size() - begin, &walk) == 1) {
        SIP_HEADER_WALK step = walk;
        step.name.at += begin;
        step.value.at += begin;
        lines.push_back(header_line(message, step));
        if (static_cast<std::size_t>(walk.line) == most_header_lines) {
            begin = lines.back().whole.begin;
            walk = {};
        }
    }
    return lines;
}

std::vector<Range> list_items(std::string_view message, const HeaderLine &line) {
    std::vector<Range> items;
    if (text_of(message, line.value).find(',') == std::string_view::npos)
        return items;
    const std::string name(text_of(message, line.name));
    SIP_LIST_WALK walk{};
    while (SIP_Walk_List(message.data(), message.size(), name.c_str(), SIP_NAME_FULL, &walk) == 1) {
        if (walk.header.name.at == line.whole.begin)
            items.push_back({walk.item.at, walk.item.at + walk.item.length});
    }
    if (items.size() < 2)
        items.clear();
    return items;
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
