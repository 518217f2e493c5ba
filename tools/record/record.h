// Walking over the codec record by its description as data.
//
//   SIP_CODE_MSG                              code_record()
//     |- xml_buf       char[4096]           text
//     |- method        int                  number with named values
//     |- via           SIP_VIA              record
//     |   |- branch    char[128]            text
//     |   `- addr      IPV4_ADDRESS         record ...
//     |- history_info  SIP_HISTORY_INFO[4]  array of records
//     ...
//
// The tables are in record_members.h.
//
// Presence. A zeroed record holds nothing. Some records have a flag that switches them on or off as a whole. An element
// is present if all records around it are switched on and it is not 0 or empty. If its zero is a value too (a CSeq of
// 0), it is present if anything in its record is.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "record_members.h"

namespace sipcode {

// The description of SIP_CODE_MSG.
const Record &code_record();

// ---------------------------------------------------------------------------------------------------------------------
// Values. "element" is the address of one element of the member; an array has several.

const std::byte *element_at(const Member &member, const std::byte *record, std::size_t index);
std::byte *element_at(const Member &member, std::byte *record, std::size_t index);

// The text up to its terminator, or up to the end of the member if it has none.
std::string_view text_of(const Member &member, const std::byte *element);

long number_of(const Member &member, const std::byte *element);

// The text of a sip_code_method on the wire; empty for any other value.
std::string_view method_name(long value);

// Name of a value; empty if it has none.
std::string_view value_name(Names names, long value);

// The same for the number that an element holds.
std::string_view value_name_of(const Member &member, const std::byte *element);

// Stores a text and clears the rest of the member. Returns false and stores nothing if the text and its terminator do
// not fit.
bool store_text(const Member &member, std::byte *element, std::string_view text);

// Stores a number. Returns false and stores nothing if the member has too few bits for it.
bool store_number(const Member &member, std::byte *element, long number);

// ---------------------------------------------------------------------------------------------------------------------
// Presence

// Whether the record is switched on and holds something.
bool holds_something(const Record &description, const std::byte *record);

// Whether the element holds something: a text that is not empty, a number that is not 0, a record that holds something.
bool holds_something(const Member &member, const std::byte *element);

// Which members of a record are wanted.
enum class Scope { present, all };

// How many elements of an array to show: up to the last that holds something. For a member that is not an array, 1 if
// it is present, otherwise 0. Assumes that the record around it is present.
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
void walk(const Record &description, Byte *record, bool present, Scope scope, std::string &path, Visit &visit) {
    const std::size_t outer = path.size();
    for (const Member &member : description.members) {
        const std::size_t present_elements = present ? present_count(member, record) : 0;
        const std::size_t elements = scope == Scope::all ? member.count : present_elements;
        if (elements == 0)
            continue;
        path.append(outer == 0 ? "" : ".").append(member.name);
        const std::size_t named = path.size();
        for (std::size_t i = 0; i < elements; ++i) {
            if (member.is_array)
                path.append("[").append(std::to_string(i)).append("]");
            Byte *element = element_at(member, record, i);
            const bool counts = i < present_elements;
            if (member.kind == Kind::record)
                walk(*member.record, element, counts && holds_something(member, element), scope, path, visit);
            else
                visit(Leaf<Byte>{path, member, element, counts});
            path.resize(named);
        }
        path.resize(outer);
    }
}

} // namespace detail

// Calls visit with each leaf of the record that is wanted, in declaration order.
template <typename Visit>
void for_each_leaf(const SIP_CODE_MSG &record, Visit visit, Scope scope = Scope::all) {
    std::string path;
    detail::walk(code_record(), reinterpret_cast<const std::byte *>(&record), true, scope, path, visit);
}

template <typename Visit>
void for_each_leaf(SIP_CODE_MSG &record, Visit visit) {
    std::string path;
    detail::walk(code_record(), reinterpret_cast<std::byte *>(&record), true, Scope::all, path, visit);
}

} // namespace sipcode
