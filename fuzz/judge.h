// The judges that the fuzz targets share. A violation ends the process, which a fuzzer reports.
//
// The targets also run under MemorySanitizer, which needs all code but libc instrumented. So they use only header-only
// parts of the C++ library.
#pragma once

#include <cstddef>
#include <string_view>

#include <sipcode/code.h>

#include "support/arena.h"
#include "support/members.h"

namespace fuzz {

using namespace support;

// ---------------------------------------------------------------------------------------------------------------------
// Members of the record

// Of all members, or of those within one: "via.addr" is within "via".
void demand_equal(const SIP_CODE_MSG &a, const SIP_CODE_MSG &b, const char *reason);
void demand_equal_within(std::string_view member, const SIP_CODE_MSG &a, const SIP_CODE_MSG &b, const char *reason);

void demand_terminated_texts(const SIP_CODE_MSG &record);

// A copy that holds nothing after the terminators of its texts, valid until the next one.
const SIP_CODE_MSG &without_hidden_bytes(const SIP_CODE_MSG &record);

// ---------------------------------------------------------------------------------------------------------------------
// Decoding

constexpr std::size_t longest_input = 16384;

// Decodes a text with every decoder and compares the results. The record is valid until the next decode.
struct Decoded {
    int result;
    const SIP_CODE_MSG &record;
};
Decoded decode(std::string_view text);

// Rebuilds a decoded text from its walk: the record must be the same. A part of decode().
void judge_walk(std::string_view text, int outcome, const SIP_CODE_MSG &record);

} // namespace fuzz

// Each target defines this. The input is any bytes.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size);
