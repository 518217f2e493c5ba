// What the records lose of all messages of a run, see check_summary.h.
#include "check_summary.h"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <vector>

#include <fmt/ostream.h>

#include "finding_printer.h"
#include "json_members.h"

namespace {

// A sender chooses most subjects, so their number and their length are bounded.
constexpr std::size_t most_subjects = 200;
constexpr std::size_t longest_subject = 48;
constexpr const char *others = "(others)";
constexpr const char *before_reading = "(before it is read)";

// In the order of the summary.
struct Section {
    Loss loss;
    const char *title;
    const char *name; // in JSON
};
constexpr Section sections[] = {
    {Loss::refused, "refused, by reason", "refused"},
    {Loss::unread, "text that is not read", "unread"},
    {Loss::unknown, "methods and statuses without an identifier", "unknown"},
    {Loss::cut, "values cut, by member", "cut"},
    {Loss::header, "header lines that no member takes, by name", "header"},
    {Loss::line, "header lines that repeat another or have a wrong form", "line"},
    {Loss::via, "Vias dropped", "via"},
    {Loss::route, "Record-Routes dropped", "route"},
    {Loss::stream, "streams dropped, by medium", "stream"},
    {Loss::codec, "codecs dropped, by encoding", "codec"},
    {Loss::item, "items of a header line dropped, by its name", "item"},
};
static_assert(std::size(sections) == loss_count);

std::size_t index_of(Loss loss) { return static_cast<std::size_t>(loss); }

double percent(std::size_t part, std::size_t whole) {
    constexpr double hundred = 100;
    return whole == 0 ? hundred : hundred * static_cast<double>(part) / static_cast<double>(whole);
}

} // namespace

bool CheckSummary::IgnoringCase::operator()(std::string_view a, std::string_view b) const {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) {
        return std::tolower(x) < std::tolower(y);
    });
}

CheckSummary::Tally &CheckSummary::tally_of(const Finding &finding) {
    Tallies &tallies = tallies_[index_of(finding.loss)];
    const std::string_view subject =
        finding.subject.empty() ? before_reading : std::string_view(finding.subject).substr(0, longest_subject);
    if (const auto found = tallies.find(subject); found != tallies.end())
        return found->second;
    return tallies[tallies.size() < most_subjects ? std::string(subject) : others];
}

void CheckSummary::add(std::string_view file, const ReceivedMessage &message, std::span<const Finding> findings) {
    if (messages_++ == 0)
        file_ = file;
    has_several_files_ = has_several_files_ || file != file_;
    lossless_ += findings.empty() ? 1 : 0;
    for (const Finding &finding : findings) {
        refused_ += finding.loss == Loss::refused ? 1 : 0;
        Tally &tally = tally_of(finding);
        tally.kept = std::max(tally.kept, finding.kept);
        if (tally.count++ != 0 && finding.characters <= tally.longest)
            continue;
        tally.longest = finding.characters;
        tally.example =
            message.origin == nullptr
                ? Example{std::string(file), line_number(message.text, finding.place.begin, message.first_line), false}
                : Example{std::string(file), message.origin->mark.number, true};
    }
}

std::vector<const CheckSummary::Entry *> CheckSummary::by_count(const Tallies &tallies) {
    std::vector<const Entry *> sorted;
    for (const Entry &entry : tallies)
        sorted.push_back(&entry);
    const auto rank = [](const Entry *entry) { return entry->first == others ? 0 : entry->second.count; };
    std::stable_sort(sorted.begin(), sorted.end(),
                     [rank](const Entry *a, const Entry *b) { return rank(a) > rank(b); });
    return sorted;
}

std::string CheckSummary::example_text(const Example &example) const {
    return fmt::format("{}{}{} {}", has_several_files_ ? example.file : "", has_several_files_ ? ": " : "",
                       example.is_packet ? "packet" : "line", example.number);
}

void CheckSummary::print_text() const {
    fmt::print(std::cout, "{} message{}: {} lose{} nothing ({:.1f} %), {} lose something, {} refused\n", messages_,
               messages_ == 1 ? "" : "s", lossless_, lossless_ == 1 ? "s" : "", percent(lossless_, messages_),
               messages_ - lossless_ - refused_, refused_);
    for (const Section &section : sections)
        print_section(section.title, tallies_[index_of(section.loss)]);
}

void CheckSummary::print_section(std::string_view title, const Tallies &tallies) const {
    if (tallies.empty())
        return;
    const auto longest = std::max_element(
        tallies.begin(), tallies.end(), [](const Entry &a, const Entry &b) { return a.first.size() < b.first.size(); });
    fmt::print(std::cout, "{}\n", title);
    for (const Entry *entry : by_count(tallies)) {
        const Tally &tally = entry->second;
        fmt::print(std::cout, "{:>9}  {:<{}}  {}", tally.count, visible(entry->first), longest->first.size(),
                   example_text(tally.example));
        if (tally.longest != 0)
            fmt::print(std::cout, ": the longest has {} characters, {} are kept", tally.longest, tally.kept);
        std::cout << '\n';
    }
}

void CheckSummary::print_json() const {
    rapidjson::StringBuffer buffer;
    sipcode::JsonWriter out(buffer);
    JsonMembers members(out);
    out.StartObject();
    members.number("messages", messages_);
    members.number("lossless", lossless_);
    members.number("refused", refused_);
    members.key("losses");
    out.StartArray();
    for (const Section &section : sections) {
        for (const Entry *entry : by_count(tallies_[index_of(section.loss)])) {
            const auto &[subject, tally] = *entry;
            out.StartObject();
            members.text("kind", loss_name(section.loss));
            members.text("what", section.name);
            members.text("subject", visible(subject));
            members.number("count", tally.count);
            if (tally.longest != 0) {
                members.number("longest", tally.longest);
                members.number("kept", tally.kept);
            }
            members.text("file", tally.example.file);
            members.number(tally.example.is_packet ? "packet" : "line", tally.example.number);
            out.EndObject();
        }
    }
    out.EndArray();
    out.EndObject();
    std::cout << buffer.GetString() << '\n';
}
