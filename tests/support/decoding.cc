#include "support/decoding.h"

#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>

#include "support/guarded.h"
#include "support/members.h"
#include "support/recording_host.h"

namespace support {

namespace {

std::string printable(std::string_view text) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string shown;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\r')
            shown += "\\r";
        else if (c == '\n')
            shown += "\\n";
        else if (byte < 0x20 || byte > 0x7E)
            shown.append("\\x").append(1, digits[byte >> 4]).append(1, digits[byte & 15]);
        else
            shown += c;
    }
    return shown;
}

std::string value_of(const Leaf &leaf, const SIP_CODE_MSG &record) {
    if (leaf.member->kind == sipcode::Kind::pointer)
        return "(pointer)";
    if (leaf.is_number())
        return std::to_string(sipcode::number_of(*leaf.member, leaf.in(record)));
    const std::string_view text = text_of(leaf, record);
    return text.size() == leaf.member->size ? "(not terminated)" : printable(text);
}

} // namespace

Members members_of(const SIP_CODE_MSG &record, unsigned char before, int result) {
    Members members{{"result", std::to_string(result)}};
    for (const Leaf &leaf : leaves()) {
        const std::byte *const element = leaf.in(record);
        const bool touched =
            std::any_of(element, element + leaf.member->size, [=](std::byte b) { return b != std::byte{before}; });
        members.emplace_back(leaf.path, touched ? std::optional(value_of(leaf, record)) : std::nullopt);
    }
    return members;
}

std::string Decoded::operator[](std::string_view path) const {
    const auto found =
        std::find_if(members.begin(), members.end(), [path](const auto &member) { return member.first == path; });
    if (found == members.end())
        return "(no such member)";
    return found->second.value_or("(untouched)");
}

Decoded decode(std::string_view text, unsigned char before) {
    const Guarded input(text);
    const Guarded output(sizeof(SIP_CODE_MSG), before);
    host().log.clear();
    const int result = Sip_Decode(input.data(), &output.as<SIP_CODE_MSG>());
    return {members_of(output.as<SIP_CODE_MSG>(), before, result), host().log};
}

void expect_whole_members(std::string_view text) {
    const Decoded zeroed = decode(text, zero);
    const Decoded filled = decode(text, stale);
    EXPECT_EQ(lines(zeroed.log), lines(filled.log));
    const bool two_vias = zeroed["via_count"] == "2";
    for (std::size_t i = 0; i < zeroed.members.size(); ++i) {
        const auto &[path, in_zeroed] = zeroed.members[i];
        const std::string &in_filled = filled.members[i].second.value_or("");
        // The lower of two Vias gets the default port only where the host left none.
        if (path == "via.addr.port" && two_vias)
            continue;
        EXPECT_TRUE(in_zeroed.value_or("") == in_filled || (!in_zeroed && in_filled == "0"))
            << path << " is \"" << in_zeroed.value_or("(untouched)") << "\" in a zeroed record and \"" << in_filled
            << "\" in another";
    }
}

std::string changes(const Members &from, const Members &to) {
    const auto differs = [&](std::size_t i) {
        return i < from.size() ? to[i].second != from[i].second : to[i].second.has_value();
    };
    std::string listed;
    std::string record; // of the line that is being written
    const auto list = [&](std::string_view path, const std::string &value) {
        const std::size_t dot = std::min(path.find('.'), path.size());
        if (dot == path.size() || path.substr(0, dot) != record)
            listed.append(listed.empty() ? "" : "\n").append(path.substr(0, dot));
        record = path.substr(0, dot);
        if (dot < path.size())
            listed.append(" ").append(path.substr(dot + 1));
        listed += value;
    };
    for (std::size_t i = 0; i < to.size(); ++i) {
        const std::string_view path = to[i].first;
        const auto &value = to[i].second;
        if (path.ends_with(".ip")) {
            const auto &port = to[++i].second;
            if (differs(i - 1) || differs(i))
                list(path.substr(0, path.size() - 3), "=" + value.value_or("?") + ":" + port.value_or("?"));
        } else if (differs(i)) {
            list(path, value ? "=" + *value : " untouched");
        }
    }
    return listed;
}

std::vector<std::string> entries(std::string_view list) {
    std::vector<std::string> found;
    for (;;) {
        const std::size_t end = std::min(list.find(" | "), list.find('\n'));
        found.emplace_back(list.substr(0, end));
        if (end == list.npos)
            return found;
        list.remove_prefix(end + (list[end] == '\n' ? 1 : 3));
    }
}

std::string lines(const std::vector<std::string> &list) {
    std::string listed;
    for (const std::string &entry : list)
        listed.append(&entry == list.data() ? "" : "\n").append(printable(entry));
    return listed;
}

std::string letters(std::size_t n) {
    std::string text(n, ' ');
    for (std::size_t i = 0; i < n; ++i)
        text[i] = static_cast<char>('a' + i % 26);
    return text;
}

std::string repeat(std::size_t times, std::string_view text) {
    std::string all;
    while (times-- > 0)
        all += text;
    return all;
}

} // namespace support
