// Prints the record for a reader, see print.h.
#include "print.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

namespace {

// Lines of the record in one text, which saves an allocation for each of them.
struct Line {
    std::size_t path; // where it begins; the value follows it
    std::size_t value;
    std::size_t end;
};

// Removes the first line from the text and returns it, line feed included.
std::string_view take_line(std::string_view &text) {
    const std::string_view line = text.substr(0, text.find('\n') + 1);
    const std::string_view taken = line.empty() ? text : line;
    text.remove_prefix(taken.size());
    return taken;
}

class Lines {
  public:
    Lines(const SIP_CODE_MSG &record, sipcode::Scope scope) {
        constexpr std::size_t usual_lines = 128;
        constexpr std::size_t usual_size = 4096;
        lines_.reserve(usual_lines);
        text_.reserve(usual_size);
        sipcode::for_each_leaf(
            record, [this](const sipcode::Leaf<const std::byte> &leaf) { add(leaf); }, scope);
    }

    // The record begins with the body, but a reader wants to see the kind of message first.
    void move_body_to_end() {
        if (lines_.empty() || path_of(lines_.front()) != "xml_buf")
            return;
        const auto end =
            std::find_if(lines_.begin() + 1, lines_.end(), [this](const Line &line) { return !path_of(line).empty(); });
        std::rotate(lines_.begin(), end, lines_.end());
    }

    void print(std::ostream &out) const {
        std::size_t width = 0;
        for (const Line &line : lines_)
            width = std::max(width, path_of(line).size());
        std::string text;
        text.reserve(text_.size() + lines_.size() * (width + 5));
        for (const Line &line : lines_) {
            text.append("  ").append(path_of(line)).append(width - path_of(line).size() + 2, ' ');
            text.append(value_of(line)).append("\n");
        }
        out << text;
    }

  private:
    std::string_view path_of(const Line &line) const { return {text_.data() + line.path, line.value - line.path}; }
    std::string_view value_of(const Line &line) const { return {text_.data() + line.value, line.end - line.value}; }

    template <typename Append>
    void add(std::string_view path, Append append_value) {
        Line line{text_.size(), text_.size() + path.size(), 0};
        text_.append(path);
        append_value(text_);
        line.end = text_.size();
        lines_.push_back(line);
    }

    void add(const sipcode::Leaf<const std::byte> &leaf) {
        switch (leaf.member.kind) {
        case sipcode::Kind::text:
            return add_text(leaf.path, sipcode::text_of(leaf.member, leaf.element));
        case sipcode::Kind::number:
            return add_number(leaf.path, sipcode::number_of(leaf.member, leaf.element),
                              sipcode::value_name_of(leaf.member, leaf.element));
        case sipcode::Kind::pointer:
        case sipcode::Kind::record:
            return add(leaf.path, [&leaf](std::string &out) { out.append(leaf.present ? "set" : "null"); });
        }
    }

    void add_text(std::string_view path, std::string_view text) {
        const auto append_line = [&text](std::string &out) { append_quoted(out, take_line(text)); };
        add(path, append_line);
        while (!text.empty())
            add("", append_line);
    }

    void add_number(std::string_view path, long number, std::string_view name) {
        add(path, [number, name](std::string &out) {
            out.append(fmt::format_int(number).c_str());
            if (!name.empty())
                out.append(" (").append(name).append(")");
        });
    }

    std::string text_;
    std::vector<Line> lines_;
};

} // namespace

// fmt takes twenty times as long to quote a text, and few need it.
void append_quoted(std::string &out, std::string_view text) {
    const auto is_plain = [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; };
    const auto plain = static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), is_plain) - text.begin());
    const std::string_view rest = text.substr(plain);
    if (rest.empty() || rest == "\r\n")
        out.append("\"").append(text, 0, plain).append(rest.empty() ? "\"" : "\\r\\n\"");
    else
        fmt::format_to(std::back_inserter(out), "{:?}", text);
}

std::string printable(std::string_view text) {
    std::string quoted;
    append_quoted(quoted, text);
    return quoted.substr(1, quoted.size() - 2);
}

void print_record(std::ostream &out, const SIP_CODE_MSG &record, sipcode::Scope scope) {
    Lines lines(record, scope);
    lines.move_body_to_end();
    lines.print(out);
}
