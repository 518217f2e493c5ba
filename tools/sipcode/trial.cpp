// What a part of a message changes in its record, see trial.h.
#include "trial.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "record.h"

namespace {

struct NamedMember {
    std::string name;
    std::size_t offset;
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
                found.push_back({std::string(leaf.path), static_cast<std::size_t>(offset), &leaf.member});
        });
        return found;
    }();
    return all;
}

const NamedMember *member_at(int offset) {
    const auto found = std::find_if(members().begin(), members().end(), [offset](const NamedMember &named) {
        return offset >= 0 && named.offset == static_cast<std::size_t>(offset);
    });
    return found == members().end() ? nullptr : &*found;
}

bool is_same_value(const NamedMember &named, const SIP_CODE_MSG &a, const SIP_CODE_MSG &b) {
    const std::byte *const one = reinterpret_cast<const std::byte *>(&a) + named.offset;
    const std::byte *const other = reinterpret_cast<const std::byte *>(&b) + named.offset;
    if (named.member->kind == sipcode::Kind::text)
        return sipcode::text_of(*named.member, one) == sipcode::text_of(*named.member, other);
    return sipcode::number_of(*named.member, one) == sipcode::number_of(*named.member, other);
}

SIP_DECODE_REPORT decode(const std::string &text, SIP_CODE_MSG &record) {
    SIP_DECODE_REPORT report;
    SIP_Decode_Buffer(text.data(), text.size(), &record, &report);
    return report;
}

bool is_line_end(std::string_view text, std::size_t at) {
    return text[at] == '\r' || text[at] == '\n' || (text[at] == ',' && at + 2 < text.size() && text[at + 2] == '\n');
}

std::string without(std::string text, std::span<const Range> parts) {
    for (const Range &part : parts) {
        for (std::size_t at = part.begin; at < part.end; ++at) {
            if (!is_line_end(text, at))
                text[at] = ' ';
        }
    }
    return text;
}

std::string with_other_values(std::string text, std::span<const Range> parts) {
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
    return text;
}

} // namespace

bool same_records(const SIP_CODE_MSG &a, const SIP_CODE_MSG &b) {
    return std::all_of(members().begin(), members().end(),
                       [&](const NamedMember &named) { return is_same_value(named, a, b); });
}

std::string_view member_name(int offset) {
    const NamedMember *const named = member_at(offset);
    return named == nullptr ? std::string_view() : named->name;
}

std::string_view member_text(const SIP_CODE_MSG &record, int offset) {
    const NamedMember *const named = member_at(offset);
    if (named == nullptr || named->member->kind != sipcode::Kind::text)
        return {};
    return sipcode::text_of(*named->member, reinterpret_cast<const std::byte *>(&record) + named->offset);
}

Trial::Trial(std::string_view text) : text_(text), report_(decode(text_, record_)) {}

bool Trial::is_same_without(std::span<const Range> parts, const Same &same) const {
    return is_same(without(text_, parts), same);
}

bool Trial::is_same_with_others(std::span<const Range> parts, const Same &same) const {
    return is_same(with_other_values(text_, parts), same);
}

void Trial::remove(std::span<const Range> parts) { text_ = without(std::move(text_), parts); }

bool Trial::is_same(const std::string &text, const Same &same) const {
    SIP_CODE_MSG record;
    const SIP_DECODE_REPORT report = decode(text, record);
    return report.outcome == report_.outcome && same(record, record_);
}
