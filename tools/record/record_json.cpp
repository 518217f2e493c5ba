// The codec record as JSON, see record_json.h: one recursion over its description.
#include "record_json.h"

namespace sipcode {

namespace {

using nlohmann::ordered_json;

bool is_utf8(const std::string &text) {
    try {
        static_cast<void>(ordered_json(text).dump());
        return true;
    } catch (const ordered_json::type_error &) {
        return false;
    }
}

std::string latin1_to_utf8(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            text += c;
        } else {
            text += static_cast<char>(0xc0 | (byte >> 6));
            text += static_cast<char>(0x80 | (byte & 0x3f));
        }
    }
    return text;
}

ordered_json text_to_json(std::string_view bytes) {
    std::string text(bytes);
    if (!is_utf8(text))
        return {{"latin1", latin1_to_utf8(bytes)}};
    return text;
}

ordered_json record_to_json(const Record &description, const std::byte *record, Scope scope);

ordered_json element_to_json(const Member &member, const std::byte *element, Scope scope) {
    switch (member.kind) {
    case Kind::text:
        return text_to_json(text_of(member, element));
    case Kind::number:
        return number_of(member, element);
    case Kind::record:
        if (scope == Scope::present && !holds_something(member, element))
            return ordered_json::object();
        return record_to_json(*member.record, element, scope);
    case Kind::pointer:
        break;
    }
    return nullptr;
}

ordered_json member_to_json(const Member &member, const std::byte *record, std::size_t count, Scope scope) {
    if (!member.is_array)
        return element_to_json(member, element_at(member, record, 0), scope);
    ordered_json elements = ordered_json::array();
    for (std::size_t i = 0; i < count; ++i)
        elements.push_back(element_to_json(member, element_at(member, record, i), scope));
    return elements;
}

ordered_json record_to_json(const Record &description, const std::byte *record, Scope scope) {
    ordered_json object = ordered_json::object();
    for (const Member &member : description.members) {
        const std::size_t count = scope == Scope::all ? member.count : present_count(member, record);
        if (count > 0)
            object.emplace(member.name, member_to_json(member, record, count, scope));
    }
    return object;
}

} // namespace

ordered_json to_json(const SIP_CODE_MSG &record, Scope scope) {
    return record_to_json(code_record(), reinterpret_cast<const std::byte *>(&record), scope);
}

} // namespace sipcode
