// The codec record as JSON, see record_json.h: one recursion over its description for each direction.
#include "record_json.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace sipcode {

namespace {

using nlohmann::ordered_json;

constexpr const char *latin1 = "latin1";

// Of the member with the name of a value.
constexpr std::string_view name_suffix = "_name";

// ---------------------------------------------------------------------------------------------------------------------
// From the record

bool is_ascii(std::string_view text) {
    return std::none_of(text.begin(), text.end(), [](char c) { return c < 0; });
}

bool is_utf8(std::string_view text) {
    try {
        static_cast<void>(ordered_json(text).dump());
        return true;
    } catch (const ordered_json::type_error &) {
        return false;
    }
}

void write_string(JsonWriter &out, std::string_view text) {
    out.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

void write_key(JsonWriter &out, std::string_view name) {
    out.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
}

void write_record(JsonWriter &out, const Record &description, const std::byte *record, Scope scope);

void write_element(JsonWriter &out, const Member &member, const std::byte *element, Scope scope) {
    switch (member.kind) {
    case Kind::text:
        return write_text(out, text_of(member, element));
    case Kind::number:
        out.Int64(number_of(member, element));
        return;
    case Kind::record:
        out.StartObject();
        // Of an array only the last element is known to hold something.
        if (scope == Scope::all || !member.is_array || holds_something(member, element))
            write_record(out, *member.record, element, scope);
        out.EndObject();
        return;
    case Kind::pointer:
        out.Null();
    }
}

template <typename Write>
void write_elements(JsonWriter &out, const Member &member, const std::byte *record, std::size_t count, Write write) {
    if (member.is_array)
        out.StartArray();
    for (std::size_t i = 0; i < count; ++i)
        write(element_at(member, record, i));
    if (member.is_array)
        out.EndArray();
}

void write_record(JsonWriter &out, const Record &description, const std::byte *record, Scope scope) {
    for (const Member &member : description.members) {
        const std::size_t count = scope == Scope::all ? member.count : present_count(member, record);
        if (count == 0)
            continue;
        write_key(out, member.name);
        write_elements(out, member, record, count,
                       [&](const std::byte *element) { write_element(out, member, element, scope); });
        if (member.names == Names::none)
            continue;
        write_key(out, std::string(member.name).append(name_suffix));
        write_elements(out, member, record, count,
                       [&](const std::byte *element) { write_string(out, value_name_of(member, element)); });
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Into the record

// The text must be valid UTF-8. Returns false if a character is above U+00FF.
bool utf8_to_latin1(std::string_view text, std::string &bytes) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto byte = static_cast<unsigned char>(text[i]);
        if (byte >= 0x80) {
            if (byte > 0xc3)
                return false;
            byte = static_cast<unsigned char>((byte & 0x03) << 6 | (text[++i] & 0x3f));
        }
        bytes += static_cast<char>(byte);
    }
    return true;
}

std::string range_of(const Member &member) {
    const auto text = [](auto limits) { return std::to_string(limits.min()) + " to " + std::to_string(limits.max()); };
    return member.size == sizeof(int) ? text(std::numeric_limits<int>()) : text(std::numeric_limits<long>());
}

class Reader {
  public:
    void read_record(const ordered_json &value, const Record &description, std::byte *record) {
        if (!value.is_object())
            fail_for_kind("an object", value);
        const std::size_t outer = path_.size();
        for (const auto &[name, member_value] : value.items()) {
            if (is_value_name(description, name))
                continue;
            path_.append(outer == 0 ? "" : ".").append(name);
            read_member(member_value, find(description, name), record);
            path_.resize(outer);
        }
    }

  private:
    [[noreturn]] void fail(const std::string &what) const {
        throw RecordError(path_.empty() ? what : path_ + ": " + what);
    }

    [[noreturn]] void fail_for_kind(const std::string &wanted, const ordered_json &value) const {
        fail("expected " + wanted + ", not " + value.type_name());
    }

    static auto member_named(const Record &description, std::string_view name) {
        return std::find_if(description.members.begin(), description.members.end(),
                            [name](const Member &member) { return member.name == name; });
    }

    static bool is_value_name(const Record &description, std::string_view name) {
        if (!name.ends_with(name_suffix))
            return false;
        const auto found = member_named(description, name.substr(0, name.size() - name_suffix.size()));
        return found != description.members.end() && found->names != Names::none;
    }

    const Member &find(const Record &description, std::string_view name) const {
        const auto found = member_named(description, name);
        if (found == description.members.end())
            fail("no such member");
        return *found;
    }

    void read_member(const ordered_json &value, const Member &member, std::byte *record) {
        if (!member.is_array)
            return read_element(value, member, element_at(member, record, 0));
        if (!value.is_array())
            fail_for_kind("an array", value);
        if (value.size() > member.count)
            fail(std::to_string(value.size()) + " elements, at most " + std::to_string(member.count));
        const std::size_t outer = path_.size();
        for (std::size_t i = 0; i < value.size(); ++i) {
            path_.append("[").append(std::to_string(i)).append("]");
            read_element(value[i], member, element_at(member, record, i));
            path_.resize(outer);
        }
    }

    void read_element(const ordered_json &value, const Member &member, std::byte *element) {
        switch (member.kind) {
        case Kind::text:
            return read_text(value, member, element);
        case Kind::number:
            return read_number(value, member, element);
        case Kind::record:
            return read_record(value, *member.record, element);
        case Kind::pointer:
            if (!value.is_null())
                fail_for_kind("null", value);
        }
    }

    void read_text(const ordered_json &value, const Member &member, std::byte *element) const {
        const std::string bytes = bytes_of(value);
        if (bytes.find('\0') != std::string::npos)
            fail("a NUL in the text");
        if (!store_text(member, element, bytes))
            fail("text of " + std::to_string(bytes.size()) + " characters, at most " + std::to_string(member.size - 1));
    }

    std::string bytes_of(const ordered_json &value) const {
        if (value.is_string())
            return value.get<std::string>();
        if (!value.is_object() || value.size() != 1 || !value.contains(latin1) || !value[latin1].is_string())
            fail_for_kind("a string or {\"latin1\": string}", value);
        std::string bytes;
        if (!utf8_to_latin1(value[latin1].get<std::string>(), bytes))
            fail("a character above U+00FF in latin1");
        return bytes;
    }

    void read_number(const ordered_json &value, const Member &member, std::byte *element) const {
        if (!value.is_number())
            fail_for_kind("a number", value);
        if (!value.is_number_integer())
            fail("expected a whole number, not " + value.dump());
        const bool too_long = value.is_number_unsigned() &&
                              std::cmp_greater(value.get<unsigned long>(), std::numeric_limits<long>::max());
        if (too_long || !store_number(member, element, value.get<long>()))
            fail("number " + value.dump() + " is out of range " + range_of(member));
    }

    std::string path_;
};

} // namespace

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

void write_text(JsonWriter &out, std::string_view text) {
    if (is_ascii(text) || is_utf8(text))
        return write_string(out, text);
    out.StartObject();
    write_key(out, latin1);
    write_string(out, latin1_to_utf8(text));
    out.EndObject();
}

void write_members(JsonWriter &out, const SIP_CODE_MSG &record, Scope scope) {
    write_record(out, code_record(), reinterpret_cast<const std::byte *>(&record), scope);
}

SIP_CODE_MSG record_from_json(const ordered_json &value) {
    SIP_CODE_MSG record{};
    Reader().read_record(value, code_record(), reinterpret_cast<std::byte *>(&record));
    return record;
}

} // namespace sipcode
