// What a part of a message changes in its record, see trial.h.
#include "trial.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <vector>

#include "record.h"

namespace {

struct NamedMember {
    std::string name;
    int offset;
    const sipcode::Member *member;
};

// Every text and number of the record, in the order of their offsets.
const std::vector<NamedMember> &members() {
    static const std::vector<NamedMember> all = [] {
        static const SIP_CODE_MSG record{};
        std::vector<NamedMember> found;
        sipcode::for_each_leaf(record, [&found](const sipcode::Leaf<const std::byte> &leaf) {
            const auto offset = leaf.element - reinterpret_cast<const std::byte *>(&record);
            if (leaf.member.kind != sipcode::Kind::pointer)
                found.push_back({std::string(leaf.path), static_cast<int>(offset), &leaf.member});
        });
        return found;
    }();
    return all;
}

const NamedMember *member_at(int offset) {
    const auto found = std::lower_bound(members().begin(), members().end(), offset,
                                        [](const NamedMember &named, int at) { return named.offset < at; });
    return found == members().end() || found->offset != offset ? nullptr : &*found;
}

const std::byte *element_of(const SIP_CODE_MSG &record, const NamedMember &named) {
    return reinterpret_cast<const std::byte *>(&record) + named.offset;
}

// Bytes of the record that are compared together: one text, or numbers with nothing between them.
struct Run {
    std::size_t offset;
    std::size_t size;
    bool is_text;
};

std::vector<Run> make_runs() {
    std::vector<Run> runs;
    for (const NamedMember &named : members()) {
        const auto offset = static_cast<std::size_t>(named.offset);
        const bool is_text = named.member->kind == sipcode::Kind::text;
        if (!is_text && !runs.empty() && !runs.back().is_text && runs.back().offset + runs.back().size == offset)
            runs.back().size += named.member->size;
        else
            runs.push_back({offset, named.member->size, is_text});
    }
    return runs;
}

bool is_same_run(const Run &run, const char *a, const char *b) {
    a += run.offset;
    b += run.offset;
    if (!run.is_text)
        return std::memcmp(a, b, run.size) == 0;
    return *a == *b && (*a == '\0' || std::strncmp(a, b, run.size) == 0);
}

bool is_line_end(std::string_view text, std::size_t at) {
    return text[at] == '\r' || text[at] == '\n' || (text[at] == ',' && at + 2 < text.size() && text[at + 2] == '\n');
}

} // namespace

bool same_records(const SIP_CODE_MSG &a, const SIP_CODE_MSG &b) {
    static const std::vector<Run> runs = make_runs();
    return std::all_of(runs.begin(), runs.end(), [&](const Run &run) {
        return is_same_run(run, reinterpret_cast<const char *>(&a), reinterpret_cast<const char *>(&b));
    });
}

std::string_view member_name(int offset) {
    const NamedMember *const named = member_at(offset);
    return named == nullptr ? std::string_view() : named->name;
}

std::string_view member_text(const SIP_CODE_MSG &record, int offset) {
    const NamedMember *const named = member_at(offset);
    if (named == nullptr || named->member->kind != sipcode::Kind::text)
        return {};
    return sipcode::text_of(*named->member, element_of(record, *named));
}

long member_number(const SIP_CODE_MSG &record, int offset) {
    const NamedMember *const named = member_at(offset);
    if (named == nullptr || named->member->kind != sipcode::Kind::number)
        return 0;
    return sipcode::number_of(*named->member, element_of(record, *named));
}

// The decoder sets all of the record and of the report that is read here.
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
Trial::Trial(std::string_view text) : text_(text) { SIP_Decode_Buffer(text_.data(), text_.size(), &record_, &report_); }

void Trial::blank(std::string &text, std::span<const Range> parts) {
    for (const Range &part : parts) {
        for (std::size_t at = part.begin; at < part.end; ++at) {
            if (!is_line_end(text, at))
                text[at] = ' ';
        }
    }
}

void Trial::put_other_values(std::string &text, std::span<const Range> parts) {
    constexpr std::string_view no = "FALSE";
    constexpr std::string_view yes = "TRUE ";
    const auto is_same_letter = [](unsigned char a, unsigned char b) { return std::toupper(a) == std::toupper(b); };
    for (const Range &part : parts) {
        const auto begin = text.begin() + static_cast<std::ptrdiff_t>(part.begin);
        const auto end = text.begin() + static_cast<std::ptrdiff_t>(part.end);
        std::transform(begin, end, begin,
                       [](unsigned char c) { return static_cast<char>(std::isdigit(c) != 0 ? '0' + '9' - c : c); });
        if (const auto found = std::search(begin, end, no.begin(), no.end(), is_same_letter); found != end)
            std::copy(yes.begin(), yes.end(), found);
    }
}

bool Trial::decodes_alike() {
    return SIP_Decode_Buffer(tried_.data(), tried_.size(), &tried_record_, nullptr) == report_.outcome;
}
