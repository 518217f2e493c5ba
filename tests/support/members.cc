#include "support/members.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <vector>

namespace support {

namespace {

void list_leaves(const sipcode::Record &description, std::size_t offset, const char *outer, std::vector<Leaf> &found) {
    for (const sipcode::Member &member : description.members)
        for (std::size_t i = 0; i < member.count; ++i) {
            Leaf leaf{{}, &member, offset + member.offset + i * member.size};
            const int name = std::snprintf(leaf.path, sizeof leaf.path, "%s%s%.*s", outer, *outer == '\0' ? "" : ".",
                                           static_cast<int>(member.name.size()), member.name.data());
            const auto end = static_cast<std::size_t>(name);
            if (member.is_array)
                std::snprintf(leaf.path + end, sizeof leaf.path - end, "[%zu]", i);
            if (member.kind == sipcode::Kind::record)
                list_leaves(*member.record, leaf.offset, leaf.path, found);
            else
                found.push_back(leaf);
        }
}

} // namespace

std::string_view text_of(const Leaf &leaf, const SIP_CODE_MSG &record) {
    return sipcode::text_of(*leaf.member, leaf.in(record));
}

void set_text(const Leaf &leaf, SIP_CODE_MSG &record, std::string_view text) {
    std::memset(leaf.in(record), 0, leaf.member->size);
    std::memcpy(leaf.in(record), text.data(), std::min(text.size(), leaf.member->size));
}

std::span<const Leaf> leaves() {
    static const std::vector<Leaf> all = [] {
        std::vector<Leaf> found;
        list_leaves(sipcode::code_record(), 0, "", found);
        return found;
    }();
    return all;
}

bool equal(const Leaf &leaf, const SIP_CODE_MSG &a, const SIP_CODE_MSG &b) {
    return leaf.is_text() ? text_of(leaf, a) == text_of(leaf, b)
                          : std::memcmp(leaf.in(a), leaf.in(b), leaf.member->size) == 0;
}

bool is_within(std::string_view member, const Leaf &leaf) {
    const std::string_view path = leaf.path;
    return path.starts_with(member) &&
           (member.empty() || path.size() == member.size() || path[member.size()] == '.' || path[member.size()] == '[');
}

const Leaf *leaf_named(std::string_view path) {
    const auto all = leaves();
    const auto found = std::ranges::find_if(all, [path](const Leaf &leaf) { return path == leaf.path; });
    return found != all.end() ? &*found : nullptr;
}

namespace {

long to_number(std::string_view digits, int base) {
    long number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
    return number;
}

// By the name of its value, or in digits.
long to_value(const sipcode::Member &member, std::string_view text) {
    constexpr long last = 110;
    for (long value = 0; !text.empty() && value <= last; ++value)
        if (sipcode::value_name(member.names, value) == text)
            return value;
    return to_number(text, 10);
}

// Takes one character of a value; false for the mark that repeats the one before.
bool take_character(std::string_view &value, char &character) {
    character = value.front();
    value.remove_prefix(1);
    if (character != '\\' || value.empty())
        return true;
    const char escape = value.front();
    value.remove_prefix(1);
    if (escape == '+')
        return false;
    if (escape == 'x') {
        character = static_cast<char>(to_number(value.substr(0, 2), 16));
        value.remove_prefix(std::min<std::size_t>(2, value.size()));
    } else {
        character = escape == 'r' ? '\r' : escape == 'n' ? '\n' : escape == 't' ? '\t' : escape;
    }
    return true;
}

void set_escaped_text(const Leaf &leaf, SIP_CODE_MSG &record, std::string_view value) {
    char *const begin = reinterpret_cast<char *>(leaf.in(record));
    char *const end = begin + leaf.member->size;
    char *at = begin;
    while (at != end && !value.empty()) {
        char character = '\0';
        if (take_character(value, character))
            *at++ = character;
        else
            at = std::fill_n(at, end - at, at == begin ? 'x' : at[-1]);
    }
    std::fill(at, end, '\0');
}

void set_document(SIP_CODE_MSG &record, std::string_view value) {
    static Xmldoc document{};
    document.xtype = static_cast<int>(to_number(value, 10) % 256);
    record.xml.xml = value.empty() ? nullptr : &document;
}

void set_member(const Leaf &leaf, SIP_CODE_MSG &record, std::string_view value) {
    if (leaf.is_text())
        set_escaped_text(leaf, record, value);
    else if (leaf.member->kind == sipcode::Kind::number)
        sipcode::store_number(*leaf.member, leaf.in(record), to_value(*leaf.member, value));
    else
        set_document(record, value);
}

// False for a line that names no member; an empty one names none on purpose.
bool read_assignment(std::string_view line, SIP_CODE_MSG &record) {
    const std::size_t mark = std::min(line.find('='), line.size());
    const std::string_view name = line.substr(0, mark);
    const std::string_view value = line.substr(std::min(mark + 1, line.size()));
    if (name == "*") {
        std::memset(static_cast<void *>(&record), static_cast<int>(to_number(value, 16)), sizeof record);
        record.xml.xml = nullptr;
        return true;
    }
    const Leaf *const leaf = leaf_named(name);
    if (leaf != nullptr)
        set_member(*leaf, record, value);
    return leaf != nullptr || line.empty();
}

} // namespace

bool read_record(std::string_view text, SIP_CODE_MSG &record) {
    std::memset(static_cast<void *>(&record), 0, sizeof record);
    constexpr std::string_view mark = " | ";
    bool all_named = true;
    while (!text.empty()) {
        const std::size_t line = std::min(text.find('\n'), text.size());
        const std::size_t end = std::min(text.find(mark), line);
        all_named &= read_assignment(text.substr(0, end), record);
        text.remove_prefix(std::min(end + (end == line ? 1 : mark.size()), text.size()));
    }
    return all_named;
}

} // namespace support
