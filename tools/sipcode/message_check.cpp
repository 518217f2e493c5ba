// What a record loses of its message, see message_check.h. The findings come from the decoder's own report and from
// trials.
#include "message_check.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <optional>
#include <span>

#include <fmt/core.h>

#include "known_headers.h"
#include "session_check.h"
#include "trial.h"

namespace {

// Vias and Record-Route lines that the record holds.
constexpr std::size_t most_vias = 2;
constexpr std::size_t most_routes = 2;

std::string_view decodable(std::string_view message) {
    return message.substr(0, std::min(message.find('\0'), std::size_t{SIP_LONGEST_MESSAGE}));
}

std::string quoted(std::string_view text) {
    constexpr std::size_t longest = 40;
    return text.size() <= longest ? fmt::format("{:?}", text) : fmt::format("{:?}...", text.substr(0, longest));
}

class Check {
  public:
    Check(std::string_view message, std::size_t first_line)
        : message_(message), text_(decodable(message)), first_line_(first_line), lines_(header_lines(text_)),
          trial_(text_) {}

    std::vector<Finding> run() {
        find_unread();
        find_cuts();
        if (is_refused()) {
            add_refusal();
            find_broken_lines();
        } else {
            find_unknown();
            find_surplus_vias();
            find_ignored_lines();
            find_dropped_parts();
            find_dropped_of_session(text_, trial_, found_);
        }
        std::stable_sort(found_.begin(), found_.end(),
                         [](const Finding &a, const Finding &b) { return a.place.begin < b.place.begin; });
        return std::move(found_);
    }

  private:
    bool is_refused() const { return trial_.report().outcome != SIP_DECODE_DONE; }

    void add(Loss loss, const Range &place, std::string text, std::string_view subject) {
        found_.push_back({loss, place, std::move(text), std::string(subject)});
    }

    std::string_view name_of(const HeaderLine &line) const { return text_of(text_, line.name); }
    std::string_view value_of(const HeaderLine &line) const { return text_of(text_, line.value); }

    bool has_name(const HeaderLine &line, const char *name) const {
        return SIP_Is_Header(text_.data(), &line.step, name, SIP_NAME_ANY_FORM) == 1;
    }

    bool have_same_name(const HeaderLine &a, const HeaderLine &b) const {
        return has_name(a, std::string(name_of(b)).c_str()) || has_name(b, std::string(name_of(a)).c_str());
    }

    Range start_line() const { return {0, std::min(text_.find_first_of("\r\n"), text_.size())}; }

    void add_refusal() {
        const auto at = static_cast<std::size_t>(std::max(trial_.report().at, 0));
        const std::string_view reason = refusal_text(trial_.report().outcome);
        add(Loss::refused, {at, std::min(text_.find_first_of("\r\n", at), text_.size())}, std::string(reason), reason);
    }

    void find_unread() {
        if (text_.size() == message_.size())
            return;
        const bool ends_at_nul = message_[text_.size()] == '\0';
        add(Loss::unread, {text_.size(), message_.size()},
            ends_at_nul ? "the message ends at its NUL"
                        : fmt::format("{} characters, {} are read", message_.size(), text_.size()),
            ends_at_nul ? "from a NUL on" : fmt::format("after {} characters", SIP_LONGEST_MESSAGE));
    }

    void find_cuts() {
        const SIP_DECODE_REPORT &report = trial_.report();
        const auto listed = std::min<std::size_t>(static_cast<std::size_t>(report.cut_count), std::size(report.cuts));
        std::for_each(report.cuts, report.cuts + listed, [this](const SIP_DECODE_CUT &cut) { add_cut(cut); });
        if (const std::size_t more = static_cast<std::size_t>(report.cut_count) - listed; more > 0)
            add(Loss::cut, Range(found_.back().place), fmt::format("{} more value{} cut", more, more == 1 ? "" : "s"),
                "more than are listed");
    }

    void add_cut(const SIP_DECODE_CUT &cut) {
        const std::string member(member_name(cut.member));
        const std::string text = member.empty()
                                     ? fmt::format("{} characters, {} are read", cut.length, cut.kept)
                                     : fmt::format("{} keeps {} of {} characters", member, cut.kept, cut.length);
        found_.push_back({Loss::cut, place_of(cut), text, member, cut.length, cut.kept});
    }

    // The report gives no place for a value that was joined from pieces, so this looks for the text that decides it.
    Range place_of(const SIP_DECODE_CUT &cut) {
        const auto begin = static_cast<std::size_t>(cut.at);
        if (cut.at >= 0)
            return {begin, std::min(begin + cut.length, text_.size())};
        const auto is_source = [&](const Range &place) {
            bool differs = false; // a message that is refused without this place says nothing
            trial_.is_same_without({&place, 1}, [&](const SIP_CODE_MSG &a, const SIP_CODE_MSG &b) {
                differs = member_text(a, cut.member) != member_text(b, cut.member);
                return !differs;
            });
            return differs;
        };
        const std::string_view kept = member_text(trial_.record(), cut.member);
        int tries = 100; // a sender could repeat the text a thousand times
        for (std::size_t at = text_.find(kept); !kept.empty() && at != std::string_view::npos && tries-- > 0;
             at = text_.find(kept, at + 1)) {
            if (const Range place{at, std::min(at + cut.length, text_.size())}; is_source(place))
                return place;
        }
        // The value is not in one piece. Some lines only decide whether it is read; the longest one holds it.
        Range longest = start_line();
        for (const HeaderLine &line : lines_) {
            const bool is_longer = longest.begin == 0 || size_of(line.value) > size_of(longest);
            if (is_longer && is_source(line.value))
                longest = line.value;
        }
        return longest;
    }

    void find_unknown() {
        const SIP_CODE_MSG &record = trial_.record();
        SIP_START_LINE start;
        SIP_Read_Start_Line(text_.data(), text_.size(), &start);
        const bool is_request = start.method.length != 0;
        const Range received = is_request ? Range{start.method.at, start.method.at + start.method.length} : status();
        const std::string_view word = text_of(text_, received);
        const std::string_view known = decode_methods[record.method].text;
        if (record.method == SIP_REQUEST_MSG_UNKNOWN)
            add(Loss::unknown, received, fmt::format("no identifier for {}", quoted(word)), word);
        else if (!is_request && known.substr(0, 3) != word.substr(0, 3))
            add(Loss::unknown, received, fmt::format("no identifier for {}, taken as {}", word, known), word);
    }

    // The second word of a status line.
    Range status() const {
        const std::vector<Range> parts = words(text_, start_line());
        return parts.size() > 1 ? parts[1] : start_line();
    }

    // ---- header lines

    // What is wrong with the form of a line, so that the decoder may skip it; empty if nothing is.
    std::string fault_of(const HeaderLine &line, std::size_t index) const {
        if (line.begins_blank)
            return "it begins with a blank and continues a line that does not end in a comma and CR LF";
        if (!line.has_colon)
            return "it has no colon";
        if (line.name_ends_blank)
            return "it has a blank before the colon";
        if (index >= most_header_lines)
            return fmt::format("it comes after the first {} lines", most_header_lines + 1);
        return "";
    }

    void find_broken_lines() {
        for (std::size_t i = 0; i < lines_.size(); ++i) {
            const HeaderLine &line = lines_[i];
            if (const std::string fault = fault_of(line, i); !fault.empty() && trial_.is_unread({&line.value, 1}))
                add(Loss::line, line.whole, fault, fault);
        }
    }

    void find_ignored_lines() {
        known_ = knowledge_of(text_, lines_, trial_.record());
        is_ignored_.assign(lines_.size(), false);
        std::vector<std::size_t> known;
        std::vector<std::size_t> unknown;
        for (std::size_t i = 0; i < lines_.size(); ++i) {
            // Content-Length is not lost: an encoder writes it anew.
            if (!known_[i].is_shown && !value_of(lines_[i]).empty() && !has_name(lines_[i], "Content-Length"))
                (known_[i].header == nullptr ? unknown : known).push_back(i);
        }
        find_ignored_of(unknown); // as a rule, two trials show that all of them are ignored
        // One by one, since a line may count only if another is blank. From the last, so that the first of two equal
        // ones counts as read.
        for (std::size_t i = known.size(); i-- > 0;)
            find_ignored_of({&known[i], 1});
        for (std::size_t i = 0; i < lines_.size(); ++i) {
            if (is_ignored_[i])
                add_ignored_line(i);
        }
    }

    // All together if they can be, or else half of them at a time.
    void find_ignored_of(std::span<const std::size_t> indices) {
        std::vector<Range> values;
        for (const std::size_t i : indices)
            values.push_back(lines_[i].value);
        if (!values.empty() && trial_.is_unread(values)) {
            for (const std::size_t i : indices)
                is_ignored_[i] = true;
            trial_.remove(values);
        } else if (indices.size() > 1) {
            find_ignored_of(indices.subspan(indices.size() / 2));
            find_ignored_of(indices.first(indices.size() / 2));
        }
    }

    void add_ignored_line(std::size_t index) {
        const HeaderLine &line = lines_[index];
        const std::string name(name_of(line));
        if (const std::string fault = fault_of(line, index); !fault.empty())
            return add(Loss::line, line.whole, fault, fault);
        if (has_name(line, "Via") && trial_.record().via_count > static_cast<int>(most_vias))
            return; // listed with the other Vias
        if (const std::size_t routes = count_of("Record-Route"); has_name(line, "Record-Route") && routes > most_routes)
            return add(
                Loss::route, line.whole,
                fmt::format("{} {} lines: if there are more than {}, the record holds none", routes, name, most_routes),
                name);
        if (const std::optional<std::size_t> kept = kept_line_like(line))
            return add(Loss::line, line.whole, fmt::format("{} repeats line {}, which counts", name, *kept),
                       "it repeats another line");
        add(Loss::header, line.whole, fmt::format("the record holds nothing of {}", name), name);
    }

    std::size_t count_of(const char *name) const {
        return static_cast<std::size_t>(
            std::count_if(lines_.begin(), lines_.end(), [&](const HeaderLine &line) { return has_name(line, name); }));
    }

    // Number of the line with the same header that was read.
    std::optional<std::size_t> kept_line_like(const HeaderLine &line) const {
        for (std::size_t i = 0; i < lines_.size(); ++i) {
            const HeaderLine &other = lines_[i];
            if (!is_ignored_[i] && !value_of(other).empty() && have_same_name(line, other))
                return line_number(text_, other.whole.begin, first_line_);
        }
        return std::nullopt;
    }

    // ---- parts of header lines

    // Of more than two Vias the record keeps only the count. One line counts as at most two; a third Via on it is lost.
    void find_surplus_vias() {
        const auto count = static_cast<std::size_t>(trial_.record().via_count);
        std::vector<Range> vias;
        SIP_LIST_WALK walk{};
        while (SIP_Walk_List(text_.data(), text_.size(), "Via", SIP_NAME_ANY_FORM, &walk) == 1)
            vias.push_back({walk.item.at, walk.item.at + walk.item.length});
        for (std::size_t i = count > most_vias ? 0 : most_vias; i < vias.size(); ++i)
            add(Loss::via, vias[i],
                count > most_vias
                    ? fmt::format("{} Vias: if there are more than {}, the record holds none", count, most_vias)
                    : fmt::format("the record holds {} Vias", most_vias),
                "Via");
    }

    void find_dropped_parts() {
        for (std::size_t i = 0; i < lines_.size(); ++i) {
            const HeaderLine &line = lines_[i];
            if (is_ignored_[i])
                continue;
            find_text_after_return(line);
            if (!has_name(line, "Via") && !has_name(line, "Content-Length"))
                find_dropped_parts(line, known_[i].header);
        }
    }

    // A CR that no LF follows ends the text of its line, but not the line.
    void find_text_after_return(const HeaderLine &line) {
        const Range rest{line.whole.end + 1, std::min(text_.find('\n', line.whole.end), text_.size())};
        if (rest.begin < rest.end)
            add(Loss::item, rest, "the codec reads this line only up to its CR", name_of(line));
    }

    void find_dropped_parts(const HeaderLine &line, const KnownHeader *header) {
        const std::vector<Range> parts = list_items(text_, line);
        const std::size_t kept = header == nullptr ? 0 : kept_verbatim(value_of(line), *header, trial_.record());
        for (std::size_t i = parts.size(); i-- > 0 && parts[i].end > line.value.begin + kept;) {
            const std::span<const Range> part(&parts[i], 1);
            if (!trial_.is_unread(part))
                continue;
            trial_.remove(part);
            add(Loss::item, parts[i], fmt::format("the record holds nothing of {}", quoted(text_of(text_, parts[i]))),
                name_of(line));
        }
    }

    std::string_view message_;
    std::string_view text_; // the part that is decoded
    std::size_t first_line_;
    std::vector<HeaderLine> lines_;
    Trial trial_;
    std::vector<Knowledge> known_; // by header line
    std::vector<bool> is_ignored_; // by header line
    std::vector<Finding> found_;
};

} // namespace

std::string_view loss_name(Loss loss) {
    switch (loss) {
    case Loss::refused:
        return "refused";
    case Loss::unread:
        return "unread";
    case Loss::unknown:
        return "unknown";
    case Loss::header:
    case Loss::line:
        return "ignored";
    case Loss::via:
    case Loss::route:
    case Loss::stream:
    case Loss::codec:
    case Loss::item:
        return "dropped";
    case Loss::cut:
        return "cut";
    }
    return "";
}

std::vector<Finding> check_message(std::string_view message, std::size_t first_line) {
    return Check(message, first_line).run();
}

std::size_t line_number(std::string_view message, std::size_t place, std::size_t first_line) {
    const std::string_view before = message.substr(0, place);
    return first_line + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
}
