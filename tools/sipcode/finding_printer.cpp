// Prints what a check finds, see finding_printer.h.
#include "finding_printer.h"

#include <algorithm>
#include <iostream>

#include <fmt/ostream.h>

#include "json_members.h"
#include "message_origin.h"

namespace {

struct Place {
    std::size_t line;
    std::size_t column; // from 1
    std::size_t length; // on that line
    std::string_view text;
};

Place place_of(const ReceivedMessage &message, const Range &range) {
    const std::string_view text = message.text;
    const std::size_t line_begin = text.substr(0, range.begin).rfind('\n') + 1; // npos + 1 is 0
    std::size_t line_end = std::min(text.find('\n', line_begin), text.size());
    if (line_end > line_begin && text[line_end - 1] == '\r')
        --line_end;
    const std::size_t end = std::min(range.end, line_end);
    return {line_number(text, range.begin, message.first_line), range.begin - line_begin + 1,
            end > range.begin ? end - range.begin : 0, text.substr(line_begin, line_end - line_begin)};
}

void print_text(std::string_view file, const ReceivedMessage &message, const Finding &finding, const Place &place) {
    constexpr std::size_t longest = 100;
    constexpr std::size_t before = 40;
    const std::size_t begin = place.text.size() <= longest || place.column <= before ? 0 : place.column - 1 - before;
    const std::size_t room = longest - (place.column - 1 - begin);
    if (message.origin == nullptr)
        fmt::print(std::cout, "{}:{}:{}: ", file, place.line, place.column);
    else
        fmt::print(std::cout, "{}: {}: line {}, column {}: ", file, origin_text(*message.origin), place.line,
                   place.column);
    fmt::print(std::cout, "{}: {}\n  {}\n  {:>{}}{:~>{}}\n", loss_name(finding.loss), visible(finding.text),
               visible(place.text.substr(begin, longest)), '^', place.column - begin, "",
               std::min(std::max(place.length, std::size_t{1}), room) - 1);
}

void write_json(sipcode::JsonWriter &out, std::string_view file, const ReceivedMessage &message, const Finding &finding,
                const Place &place) {
    JsonMembers members(out);
    out.StartObject();
    members.text("file", file);
    if (message.origin != nullptr)
        write_origin(out, *message.origin);
    members.number("line", place.line);
    members.number("column", place.column);
    members.number("length", place.length);
    members.text("kind", loss_name(finding.loss));
    members.text("text", visible(finding.text));
    if (finding.characters != finding.kept) {
        members.key("member");
        if (finding.subject.empty())
            out.Null();
        else
            sipcode::write_text(out, finding.subject);
        members.number("characters", finding.characters);
        members.number("kept", finding.kept);
    }
    out.EndObject();
}

} // namespace

std::string visible(std::string_view text) {
    std::string shown(text);
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '.');
    return shown;
}

void FindingPrinter::print(std::string_view file, const ReceivedMessage &message, const Finding &finding) {
    const Place place = place_of(message, finding.place);
    if (!as_json_)
        return print_text(file, message, finding, place);
    json_.Clear();
    sipcode::JsonWriter out(json_);
    write_json(out, file, message, finding, place);
    json_.Put('\n');
    std::cout.write(json_.GetString(), static_cast<std::streamsize>(json_.GetSize()));
}
