// The codec record (code.h) described as data, once, for everything that walks over it.
//
//   SIP_CODE_MSG                              code_record()
//     |- xml_buf       char[4096]           text
//     |- method        int                  number, its values are named
//     |- via           SIP_VIA              record
//     |   |- branch    char[128]            text
//     |   `- addr      IPV4_ADDRESS         record ...
//     |- history_info  SIP_HISTORY_INFO[4]  array of records
//     ...
//
// Names, offsets and sizes come from the declarations. A member that is added to a record and not described here does not
// compile.
//
// Presence. A zeroed record holds nothing. Some records carry a flag that switches them off as a whole. So an element is
// present when no record around it is switched off, and it holds something or its zero is a value as well (a CSeq of 0)
// and its record holds something.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "code.h"

namespace sipcode {

enum class Kind {
    text,    // char[N], terminated unless the host was careless
    number,  // signed, 4 or 8 bytes
    record,  // a record of its own
    pointer, // the host's; has no value outside its process
};

// Name of a value of an enumeration, empty when it has none.
using ValueName = std::string_view (*)(long value);

struct Record;

struct Member {
    std::string_view name;
    Kind kind;
    std::size_t offset; // of the first element within its record
    std::size_t size;   // of one element; of a text with its terminator
    std::size_t alignment;
    std::size_t count; // elements: 1, or the length of the array
    bool is_array;
    bool zero_is_value = false;     // 0 says something when the record around it is present
    const Record *record = nullptr; // of Kind::record
    ValueName value_name = nullptr; // of a number that stands for something
};

// What switches a record on.
struct Switch {
    enum class On { always, when_one, when_not_zero };
    On on = On::always;
    std::size_t offset = 0; // of the int that decides
};

struct Record {
    std::span<const Member> members; // in declaration order
    Switch present;
};

// The description of SIP_CODE_MSG.
const Record &code_record();

// ---------------------------------------------------------------------------------------------------------------------
// Values. "element" is the address of one element of the member: for an array, of one of its slots.

const std::byte *element_at(const Member &member, const std::byte *record, std::size_t index);
std::byte *element_at(const Member &member, std::byte *record, std::size_t index);

// The text up to its terminator, or to the end of the member when it has none.
std::string_view text_of(const Member &member, const std::byte *element);

long number_of(const Member &member, const std::byte *element);

// Text on the wire of a sip_code_method, empty for a value that is none.
std::string_view method_name(long value);

// Name of the number's value, empty when it has none.
std::string_view value_name_of(const Member &member, const std::byte *element);

// Stores a text and clears what is left of the member. False, and nothing is stored, when it does not fit in front of a
// terminator.
bool store_text(const Member &member, std::byte *element, std::string_view text);

// Stores a number. False, and nothing is stored, when the member has too few bits for it.
bool store_number(const Member &member, std::byte *element, long number);

// ---------------------------------------------------------------------------------------------------------------------
// Presence

// Whether the record is switched on and holds something.
bool holds_something(const Record &description, const std::byte *record);

// Whether the element holds something: a text that is not empty, a number that is not 0, a record as above.
bool holds_something(const Member &member, const std::byte *element);

// What of a record is wanted.
enum class Scope { present, all };

// Elements that count: up to the last that holds something; of a member that is no array, 1 when it is present. The record
// around it is taken to be present.
std::size_t present_count(const Member &member, const std::byte *record);

// ---------------------------------------------------------------------------------------------------------------------
// Walking

// A text, number or pointer somewhere in the record. Byte is std::byte, const for a record that is only read.
template <typename Byte>
struct Leaf {
    std::string_view path; // "via.addr.ip", "sdp.a_coders[2]", "history_info[1].cause"; valid during the visit
    const Member &member;
    Byte *element;
    bool present;
};

namespace detail {

template <typename Byte, typename Visit>
void walk(const Record &description, Byte *record, bool present, std::string &path, Visit &visit) {
    const std::size_t outer = path.size();
    for (const Member &member : description.members) {
        const std::size_t present_elements = present ? present_count(member, record) : 0;
        path.append(outer == 0 ? "" : ".").append(member.name);
        const std::size_t named = path.size();
        for (std::size_t i = 0; i < member.count; ++i) {
            if (member.is_array)
                path.append("[").append(std::to_string(i)).append("]");
            Byte *element = element_at(member, record, i);
            const bool counts = i < present_elements;
            if (member.kind == Kind::record)
                walk(*member.record, element, counts && holds_something(member, element), path, visit);
            else
                visit(Leaf<Byte>{path, member, element, counts});
            path.resize(named);
        }
        path.resize(outer);
    }
}

} // namespace detail

// Calls visit with each leaf of the record, present or not, in declaration order.
template <typename Visit>
void for_each_leaf(const SIP_CODE_MSG &record, Visit visit) {
    std::string path;
    detail::walk(code_record(), reinterpret_cast<const std::byte *>(&record), true, path, visit);
}

template <typename Visit>
void for_each_leaf(SIP_CODE_MSG &record, Visit visit) {
    std::string path;
    detail::walk(code_record(), reinterpret_cast<std::byte *>(&record), true, path, visit);
}

} // namespace sipcode
