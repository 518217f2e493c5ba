// Draws a ladder as SVG, see ladder.h.
#include <algorithm>

#include <fmt/core.h>

#include "ladder.h"

namespace {

// In pixels.
constexpr std::size_t margin = 110; // of the times
constexpr std::size_t gap = 210;    // between rails
constexpr std::size_t head = 46;
constexpr std::size_t row = 34;
constexpr std::size_t details = 460;

constexpr const char *style = R"(<style>
.ladder { font: 12px system-ui, sans-serif; --ink: #1b1f24; --faint: #8a929c; --request: #0b5cad;
  --provisional: #8a6100; --success: #16732f; --redirect: #7a3fa0; --failure: #b3261e; --paper: #ffffff; background: var(--paper); }
@media (prefers-color-scheme: dark) { .ladder { --ink: #e6e9ed; --faint: #8b949e; --request: #6cb2ff;
  --provisional: #e0b04a; --success: #5fd07f; --redirect: #c99af0; --failure: #ff8a80; --paper: #14181d; } }
.ladder text { fill: var(--ink); } .ladder .faint { fill: var(--faint); font-size: 11px; }
.ladder .rail { stroke: var(--faint); } .ladder .column { font-weight: 600; text-anchor: middle; }
.ladder .label { text-anchor: middle; } .ladder .repeated { opacity: 0.55; stroke-dasharray: 4 3; }
.ladder .message { stroke: currentColor; } .ladder .message text { stroke: none; fill: currentColor; }
.ladder .message .faint { fill: var(--faint); } .ladder .hit { fill: transparent; stroke: none; }
.ladder .request { color: var(--request); } .ladder .s1 { color: var(--provisional); }
.ladder .s2 { color: var(--success); } .ladder .s3 { color: var(--redirect); } .ladder .s4 { color: var(--failure); }
</style>)";

std::string class_of(const Arrow &arrow) {
    const std::string kind = arrow.status == 0 ? "request" : fmt::format("s{}", std::clamp(arrow.status / 100, 1, 4));
    return fmt::format("message {}{}", kind, arrow.is_repeated ? " repeated" : "");
}

std::size_t rail(std::size_t column) { return margin + gap / 2 + column * gap; }

std::string draw_arrow(const Arrow &arrow, const FlowMessage &message, std::size_t number, std::size_t columns) {
    const std::size_t y = head + number * row + row;
    const std::size_t from = rail(arrow.from);
    const std::size_t to = arrow.from == arrow.to ? from + gap / 4 : rail(arrow.to);
    const int back = from < to ? -7 : 7;
    const auto tip = static_cast<long>(to);
    const std::string mark = arrow.is_repeated ? " (repeated)" : arrow.is_late ? " (late)" : "";
    return fmt::format(
        R"(<g class="{}" data-message="{}"><rect class="hit" x="0" y="{}" width="100%" height="{}"/>)"
        R"(<text class="faint" x="8" y="{}">{}</text><line x1="{}" y1="{}" x2="{}" y2="{}"/>)"
        R"(<path d="M{} {} l{} -4 v8 z" fill="currentColor"/><text class="label" x="{}" y="{}">{}{}</text>)"
        R"(<text class="faint" x="{}" y="{}">{}  {}</text></g>)"
        "\n",
        class_of(arrow), number, y - row + 8, row, y + 4, clock_text(message.mark), from, y, to, y, tip, y, back,
        (from + to) / 2, y - 6, escape_markup(arrow.label), mark, margin + columns * gap, y + 4,
        escape_markup(arrow.cseq), escape_markup(arrow.session));
}

} // namespace

std::string escape_markup(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        case '\'':
            escaped += "&#39;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

std::string draw_svg(const Ladder &ladder, const std::vector<FlowMessage> &messages) {
    const std::size_t width = margin + gap * ladder.columns.size() + details;
    const std::size_t height = head + row * (ladder.arrows.size() + 1);
    std::string svg = fmt::format(R"(<svg xmlns="http://www.w3.org/2000/svg" class="ladder" width="{0}" height="{1}" )"
                                  R"(viewBox="0 0 {0} {1}">)"
                                  "\n{2}\n",
                                  width, height, style);
    for (std::size_t i = 0; i < ladder.columns.size(); ++i)
        svg += fmt::format(R"(<text class="column" x="{0}" y="22">{1}</text>)"
                           R"(<line class="rail" x1="{0}" y1="{2}" x2="{0}" y2="{3}"/>)"
                           "\n",
                           rail(i), escape_markup(ladder.columns[i]), head - 14, height - 8);
    for (std::size_t i = 0; i < ladder.arrows.size(); ++i)
        svg += draw_arrow(ladder.arrows[i], messages[i], i, ladder.columns.size());
    return svg + "</svg>\n";
}
