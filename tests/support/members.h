// Members of a record by their paths.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "record.h"

namespace support {

// A text or number somewhere in the record.
struct Place {
    std::string path;
    const sipcode::Member &member;
    std::size_t offset;

    const std::byte *in(const SIP_CODE_MSG &record) const {
        return reinterpret_cast<const std::byte *>(&record) + offset;
    }
    std::byte *in(SIP_CODE_MSG &record) const { return reinterpret_cast<std::byte *>(&record) + offset; }
    bool is_text() const { return member.kind == sipcode::Kind::text; }
    bool is_number() const { return member.kind == sipcode::Kind::number; }
};

// All of them, in the order of the record; and one by its path, which must be right.
const std::vector<Place> &places();
const Place &place(std::string_view path);

long number_at(const SIP_CODE_MSG &record, std::string_view path);
std::string text_at(const SIP_CODE_MSG &record, std::string_view path);

// Stores a text, without a terminator when it fills the member to its end; what is too long for it is cut.
void set_text(SIP_CODE_MSG &record, const Place &at, std::string_view text);

// The members in which two records differ; what stands behind the terminator of a text does not count.
std::string difference(const SIP_CODE_MSG &a, const SIP_CODE_MSG &b);

// A zeroed record with members set: "via.branch=z9hG4bK1 | cseq.method=INVITE | sdp.a_content=a=x\r\n". A number may be written
// as the name of its value.
SIP_CODE_MSG record_of(std::string_view list);

} // namespace support
