// Draws a ladder for a terminal, see ladder.h.
#include <algorithm>

#include <fmt/core.h>

#include "ladder.h"

namespace {

struct Signs {
    std::string_view rail, line, right, left;
};
constexpr Signs ascii = {"|", "-", ">", "<"};
constexpr Signs box = {"│", "─", "▶", "◀"};

constexpr std::size_t margin = 26; // of time and delta
constexpr std::size_t least_gap = 22;
constexpr std::size_t most_gap = 44;

// Characters, of which UTF-8 text may have fewer than bytes.
std::size_t width_of(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xc0) != 0x80; }));
}

class TextDrawing {
  public:
    TextDrawing(const Ladder &ladder, Drawing drawing)
        : ladder_(ladder), is_coloured_(drawing == Drawing::coloured), signs_(drawing == Drawing::plain ? ascii : box) {
        std::size_t longest = 0;
        for (const std::string &column : ladder.columns)
            longest = std::max(longest, column.size() + 2);
        for (const Arrow &arrow : ladder.arrows)
            longest = std::max(longest, width_of(arrow.label) + 8);
        gap_ = std::clamp(longest, least_gap, most_gap);
    }

    // Each column's name is centred above its rail.
    std::string heading() const {
        std::string line(margin + gap_ * ladder_.columns.size(), ' ');
        for (std::size_t i = 0; i < ladder_.columns.size(); ++i) {
            const std::string &name = ladder_.columns[i];
            line.replace(margin + i * gap_ - std::min(name.size() / 2, margin), name.size(), name);
        }
        return line.substr(0, line.find_last_not_of(' ') + 1) + '\n' + std::string(margin, ' ') + rails() + '\n';
    }

    std::string line(const Arrow &arrow, const FlowMessage &message) const {
        std::string text =
            fmt::format("{:>12}  {:>+9.3f}", clock_text(message.mark), static_cast<double>(arrow.since_last) / 1e6);
        text.append(margin - text.size(), ' ');
        text += arrow.from == arrow.to ? rails() + " to itself: " + coloured(arrow, arrow.label) : shaft(arrow);
        text += fmt::format("  {}{}{}{}", arrow.cseq, arrow.session.empty() ? "" : "  ", arrow.session,
                            arrow.is_repeated ? "  (repeated)"
                            : arrow.is_late   ? "  (late)"
                                              : "");
        return text + '\n';
    }

  private:
    std::string rails() const {
        std::string text;
        for (std::size_t i = 0; i < ladder_.columns.size(); ++i)
            text.append(i == 0 ? "" : std::string(gap_ - 1, ' ')).append(signs_.rail);
        return text;
    }

    std::string shaft(const Arrow &arrow) const {
        const std::size_t left = std::min(arrow.from, arrow.to);
        const std::size_t right = std::max(arrow.from, arrow.to);
        const bool goes_right = arrow.from < arrow.to;
        const std::size_t room = (right - left) * gap_ - 1 - 1; // without the head
        const std::string label = fmt::format("{:.{}}", arrow.label, room - 2);
        const std::size_t rest = room - 2 - width_of(label);
        const std::size_t before = std::min<std::size_t>(3, rest);
        std::string line = repeated(before) + ' ' + label + ' ' + repeated(rest - before);
        line = goes_right ? line.append(signs_.right) : std::string(signs_.left).append(line);
        std::string text;
        for (std::size_t i = 0; i < ladder_.columns.size(); ++i) {
            text.append(signs_.rail);
            if (i == left)
                text.append(coloured(arrow, line));
            else if (i + 1 < ladder_.columns.size() && (i < left || i >= right))
                text.append(gap_ - 1, ' ');
            if (i == left)
                i = right - 1;
        }
        return text;
    }

    std::string repeated(std::size_t count) const {
        std::string text;
        for (; count > 0; --count)
            text.append(signs_.line);
        return text;
    }

    std::string coloured(const Arrow &arrow, const std::string &text) const {
        if (!is_coloured_)
            return text;
        constexpr int request = 36;
        constexpr int by_class[] = {request, 33, 32, 35, 31, 31, 31};
        const int colour = by_class[std::min<std::size_t>(static_cast<std::size_t>(arrow.status) / 100, 6)];
        return fmt::format("\x1b[{}{}m{}\x1b[0m", arrow.is_repeated ? "2;" : "", colour, text);
    }

    const Ladder &ladder_;
    bool is_coloured_;
    const Signs &signs_;
    std::size_t gap_ = least_gap;
};

} // namespace

std::string draw_text(const Ladder &ladder, const std::vector<FlowMessage> &messages, Drawing drawing) {
    const TextDrawing drawn(ladder, drawing);
    std::string text = drawn.heading();
    for (std::size_t i = 0; i < ladder.arrows.size(); ++i)
        text += drawn.line(ladder.arrows[i], messages[i]);
    return text;
}
