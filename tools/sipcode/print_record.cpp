// Prints the record for a reader, see print.h.
#include "print.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/ostream.h>

namespace {

struct Line {
    std::string path;
    std::string value;
};

// Removes the first line from the text and returns it, line feed included.
std::string_view take_line(std::string_view &text) {
    const std::string_view line = text.substr(0, text.find('\n') + 1);
    const std::string_view taken = line.empty() ? text : line;
    text.remove_prefix(taken.size());
    return taken;
}

void add_text(std::vector<Line> &lines, std::string path, std::string_view text) {
    lines.push_back({std::move(path), fmt::format("{:?}", take_line(text))});
    while (!text.empty())
        lines.push_back({"", fmt::format("{:?}", take_line(text))});
}

std::string number_with_name(long number, std::string_view name) {
    return name.empty() ? std::to_string(number) : fmt::format("{} ({})", number, name);
}

std::vector<Line> lines_of(const SIP_CODE_MSG &record, sipcode::Scope scope) {
    std::vector<Line> lines;
    sipcode::for_each_leaf(record, [&](const sipcode::Leaf<const std::byte> &leaf) {
        if (scope == sipcode::Scope::present && !leaf.present)
            return;
        std::string path(leaf.path);
        switch (leaf.member.kind) {
        case sipcode::Kind::text:
            add_text(lines, std::move(path), sipcode::text_of(leaf.member, leaf.element));
            break;
        case sipcode::Kind::number:
            lines.push_back({std::move(path), number_with_name(sipcode::number_of(leaf.member, leaf.element),
                                                               sipcode::value_name_of(leaf.member, leaf.element))});
            break;
        case sipcode::Kind::pointer:
        case sipcode::Kind::record:
            lines.push_back({std::move(path), leaf.present ? "set" : "null"});
            break;
        }
    });
    return lines;
}

std::vector<Line>::iterator end_of_body(std::vector<Line> &lines) {
    if (lines.empty() || lines.front().path != "xml_buf")
        return lines.begin();
    return std::find_if(lines.begin() + 1, lines.end(), [](const Line &line) { return !line.path.empty(); });
}

} // namespace

void print_record(std::ostream &out, const SIP_CODE_MSG &record, sipcode::Scope scope) {
    std::vector<Line> lines = lines_of(record, scope);
    // The record begins with the body, but a reader wants to see the kind of message first.
    std::rotate(lines.begin(), end_of_body(lines), lines.end());
    std::size_t width = 0;
    for (const Line &line : lines)
        width = std::max(width, line.path.size());
    for (const Line &line : lines)
        fmt::print(out, "  {:<{}}  {}\n", line.path, width, line.value);
}
