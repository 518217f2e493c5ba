// Members of a record by their paths, and records as text. Used by the unit tests and the fuzz targets; these run under
// MemorySanitizer, so only header-only parts of the C++ library are used here.
#pragma once

#include <span>
#include <string_view>

#include <sipcode/code.h>

#include "record.h"

namespace support {

struct Leaf {
    char path[64]; // "sdp.rtpmap[0].a_coder"
    const sipcode::Member *member;
    std::size_t offset;

    const std::byte *in(const SIP_CODE_MSG &record) const {
        return reinterpret_cast<const std::byte *>(&record) + offset;
    }
    std::byte *in(SIP_CODE_MSG &record) const { return reinterpret_cast<std::byte *>(&record) + offset; }
    bool is_text() const { return member->kind == sipcode::Kind::text; }
    bool is_number() const { return member->kind == sipcode::Kind::number; }
};

// All texts, numbers and pointers, in the order of the record.
std::span<const Leaf> leaves();

// The one with this path; null if there is none.
const Leaf *leaf_named(std::string_view path);

// Texts count up to their terminator.
bool equal(const Leaf &leaf, const SIP_CODE_MSG &a, const SIP_CODE_MSG &b);

// "via.addr.ip" is within "via.addr" and "via".
bool is_within(std::string_view member, const Leaf &leaf);

std::string_view text_of(const Leaf &leaf, const SIP_CODE_MSG &record);

// Stores a text, without a terminator if it fills the member. Cuts a longer one.
void set_text(const Leaf &leaf, SIP_CODE_MSG &record, std::string_view text);

// Sets the members that a text names and clears all others:
//
//   method=INVITE | cseq.seq=1   on lines, or separated by " | "; a value may be given by its name
//   *=A5                         all bytes of the record, in hexadecimal digits
//   callid=ims-a@b               a longer text is cut; one that fills the member has no terminator
//   via.branch=a\xFF\r\n         "\\" is a backslash
//   uri.user=a\+                 the last character, repeated to the end of the member
//   xml.xml=0                    a document; the number is the host's error about its length
//
// Ignores lines that name no member. Returns false if there was one.
bool read_record(std::string_view text, SIP_CODE_MSG &record);

} // namespace support
