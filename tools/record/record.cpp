#include "record.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace sipcode {

std::string_view method_name(long value) {
    return value >= 0 && value < SIP_CODE_METHOD_COUNT ? decode_methods[value].text : std::string_view();
}

namespace {

// ---------------------------------------------------------------------------------------------------------------------
// Names of values

template <std::size_t Count>
std::string_view name_in(const std::array<std::string_view, Count> &names, long value) {
    return value >= 0 && value < static_cast<long>(Count) ? names[static_cast<std::size_t>(value)] : std::string_view();
}

std::string_view codec_name(long value) {
    // Not code_methods, which has the texts of the dump and shows G722 as "97".
    static constexpr std::array<std::string_view, SIP_CODE_CODEC_COUNT> names = {
        "UNKONW", "G711_A", "G711_U", "G729", "G723", "TE101", "GSM", "G726", "G722", "SPEEX", "ILBC", "DVI4"};
    return name_in(names, value);
}

std::string_view transport_name(long value) {
    static constexpr std::array<std::string_view, 4> names = {"UDP", "TCP", "TLS", "SCTP"};
    return name_in(names, value);
}

std::string_view option_tag_name(long value) {
    static constexpr std::array<std::string_view, 5> names = {"other", "100rel", "timer", "replaces", "P_Early_Media"};
    return name_in(names, value);
}

std::string_view digest_header_name(long value) {
    static constexpr std::array<std::string_view, 4> names = {"Authorization", "Proxy-Authorization",
                                                              "WWW-Authenticate", "Proxy-Authenticate"};
    constexpr long first = 100;
    return value < first ? std::string_view() : name_in(names, value - first);
}

std::string_view direction_name(long value) {
    static constexpr std::array<std::string_view, 4> names = {"sendrecv", "sendonly", "recvonly", "inactive"};
    return name_in(names, value);
}

// ---------------------------------------------------------------------------------------------------------------------
// Values

template <typename Number>
Number load(const std::byte *element) {
    Number number;
    std::memcpy(&number, element, sizeof number);
    return number;
}

bool is_switched_on(const Switch &present, const std::byte *record) {
    switch (present.on) {
    case Switch::On::when_one:
        return load<int>(record + present.offset) == 1;
    case Switch::On::when_not_zero:
        return load<int>(record + present.offset) != 0;
    case Switch::On::always:
        break;
    }
    return true;
}

} // namespace

const Record &code_record() { return description<SIP_CODE_MSG>; }

const std::byte *element_at(const Member &member, const std::byte *record, std::size_t index) {
    return record + member.offset + index * member.size;
}

std::byte *element_at(const Member &member, std::byte *record, std::size_t index) {
    return record + member.offset + index * member.size;
}

std::string_view text_of(const Member &member, const std::byte *element) {
    const auto *text = reinterpret_cast<const char *>(element);
    return {text, strnlen(text, member.size)};
}

long number_of(const Member &member, const std::byte *element) {
    return member.size == sizeof(int) ? load<int>(element) : load<long>(element);
}

std::string_view value_name(Names names, long value) {
    switch (names) {
    case Names::method:
        return method_name(value);
    case Names::codec:
        return codec_name(value);
    case Names::transport:
        return transport_name(value);
    case Names::option_tag:
        return option_tag_name(value);
    case Names::digest_header:
        return digest_header_name(value);
    case Names::direction:
        return direction_name(value);
    case Names::none:
        break;
    }
    return {};
}

std::string_view value_name_of(const Member &member, const std::byte *element) {
    return value_name(member.names, number_of(member, element));
}

bool store_text(const Member &member, std::byte *element, std::string_view text) {
    if (text.size() >= member.size)
        return false;
    std::memcpy(element, text.data(), text.size());
    std::memset(element + text.size(), 0, member.size - text.size());
    return true;
}

bool store_number(const Member &member, std::byte *element, long number) {
    if (member.size == sizeof(int)) {
        if (number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max())
            return false;
        const int narrow = static_cast<int>(number);
        std::memcpy(element, &narrow, sizeof narrow);
    } else {
        std::memcpy(element, &number, sizeof number);
    }
    return true;
}

bool holds_something(const Record &description, const std::byte *record) {
    if (!is_switched_on(description.present, record))
        return false;
    return std::any_of(description.members.begin(), description.members.end(), [record](const Member &member) {
        for (std::size_t i = 0; i < member.count; ++i) {
            if (holds_something(member, element_at(member, record, i)))
                return true;
        }
        return false;
    });
}

bool holds_something(const Member &member, const std::byte *element) {
    switch (member.kind) {
    case Kind::text:
        return *element != std::byte{0};
    case Kind::number:
        return number_of(member, element) != 0;
    case Kind::record:
        return holds_something(*member.record, element);
    case Kind::pointer:
        break;
    }
    return load<const void *>(element) != nullptr;
}

std::size_t present_count(const Member &member, const std::byte *record) {
    if (member.zero_is_value)
        return member.count;
    std::size_t count = member.count;
    while (count > 0 && !holds_something(member, element_at(member, record, count - 1)))
        --count;
    return count;
}

} // namespace sipcode
