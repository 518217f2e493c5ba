#include "support/members.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <unordered_map>

#include "support/decoding.h"

namespace support {

const std::vector<Place> &places() {
    static const std::vector<Place> all = [] {
        std::vector<Place> found;
        const SIP_CODE_MSG record{};
        sipcode::for_each_leaf(record, [&](const auto &leaf) {
            const auto *const begin = reinterpret_cast<const std::byte *>(&record);
            found.push_back({std::string(leaf.path), leaf.member, static_cast<std::size_t>(leaf.element - begin)});
        });
        return found;
    }();
    return all;
}

const Place &place(std::string_view path) {
    static const auto by_path = [] {
        std::unordered_map<std::string_view, const Place *> map;
        for (const Place &one : places())
            map.emplace(one.path, &one);
        return map;
    }();
    const auto found = by_path.find(path);
    if (found == by_path.end())
        throw std::invalid_argument("no such member: " + std::string(path));
    return *found->second;
}

long number_at(const SIP_CODE_MSG &record, std::string_view path) {
    const Place &at = place(path);
    return sipcode::number_of(at.member, at.in(record));
}

std::string text_at(const SIP_CODE_MSG &record, std::string_view path) {
    const Place &at = place(path);
    return std::string(sipcode::text_of(at.member, at.in(record)));
}

void set_text(SIP_CODE_MSG &record, const Place &at, std::string_view text) {
    std::memset(at.in(record), 0, at.member.size);
    std::memcpy(at.in(record), text.data(), std::min(text.size(), at.member.size));
}

SIP_CODE_MSG record_of(std::string_view list) {
    constexpr long highest_named = 200;
    SIP_CODE_MSG record{};
    for (const std::string &entry : entries(list)) {
        const std::size_t equals = std::min(entry.find('='), entry.size());
        std::string value = entry.substr(std::min(equals + 1, entry.size()));
        for (const auto &[written, meant] : {std::pair{"\\r", "\r"}, {"\\n", "\n"}, {"\\t", "\t"}})
            for (std::size_t at = 0; (at = value.find(written)) != value.npos;)
                value.replace(at, 2, meant);
        if (entry.empty())
            continue;
        const Place &at = place(entry.substr(0, equals));
        if (at.is_text()) {
            set_text(record, at, value);
            continue;
        }
        long number = 0;
        while (at.member.value_name != nullptr && number < highest_named && at.member.value_name(number) != value)
            ++number;
        const bool is_named = at.member.value_name != nullptr && number < highest_named;
        sipcode::store_number(at.member, at.in(record), is_named ? number : std::stol(value));
    }
    return record;
}

} // namespace support
