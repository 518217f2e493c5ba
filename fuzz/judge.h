// What the fuzz targets judge by. A violation ends the process, which is what a fuzzer looks for.
//
// Only header-only parts of the C++ library are used here and in the targets, so that they also run under MemorySanitizer, which
// wants all code instrumented but that of libc.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include <sipcode/code.h>

#include "record.h"

namespace fuzz {

// ---------------------------------------------------------------------------------------------------------------------
// Verdicts

// Ends the process with the reason unless it holds.
void demand(bool holds, const char *reason);

// ---------------------------------------------------------------------------------------------------------------------
// Memory

// Pages between two unreadable ones, used anew for each input. What is placed in them ends in front of the one or begins behind
// the other, so that a byte past it or before it faults; bytes on its open side tell of writes.
class Arena {
  public:
    explicit Arena(std::size_t capacity);

    std::size_t capacity() const { return room_; }

    enum class Side { before, behind };

    // Memory of which every byte is as given.
    char *fill(std::size_t size, unsigned char byte, Side guarded = Side::behind);

    // Memory that holds nothing yet: memory checkers tell when a byte of it counts.
    char *undefined(std::size_t size, Side guarded = Side::behind);

    // A copy.
    char *copy(std::string_view bytes, Side guarded = Side::behind);

    // A copy with a terminator.
    char *copy_terminated(std::string_view text, Side guarded = Side::behind);

    // Demands that the bytes around what was placed last are as they were.
    void demand_intact() const;

  private:
    char *place(std::size_t size, Side guarded);

    std::size_t room_; // whole pages
    char *pages_;
    char *fence_ = nullptr; // on the open side
};

// The two sides in turn, so that both are tried.
Arena::Side side_for(std::size_t number);

// ---------------------------------------------------------------------------------------------------------------------
// Members of the record

struct Leaf {
    char path[64]; // "sdp.rtpmap[0].a_coder"
    const sipcode::Member *member;
    std::size_t offset;

    const std::byte *in(const SIP_CODE_MSG &record) const {
        return reinterpret_cast<const std::byte *>(&record) + offset;
    }
    std::byte *in(SIP_CODE_MSG &record) const { return reinterpret_cast<std::byte *>(&record) + offset; }
    bool is_text() const { return member->kind == sipcode::Kind::text; }
};

// All texts, numbers and pointers, in the order of the record.
std::span<const Leaf> leaves();

// The one with this path, null when there is none.
const Leaf *leaf_named(std::string_view path);

// Texts count up to their terminator.
bool equal(const Leaf &leaf, const SIP_CODE_MSG &a, const SIP_CODE_MSG &b);

// Of all members, or of those within one: "via.addr" is within "via".
void demand_equal(const SIP_CODE_MSG &a, const SIP_CODE_MSG &b, const char *reason);
void demand_equal_within(std::string_view member, const SIP_CODE_MSG &a, const SIP_CODE_MSG &b, const char *reason);
bool is_within(std::string_view member, const Leaf &leaf);

void demand_terminated_texts(const SIP_CODE_MSG &record);

// A copy that holds nothing behind the terminators of its texts, valid until the next one.
const SIP_CODE_MSG &without_hidden_bytes(const SIP_CODE_MSG &record);

// ---------------------------------------------------------------------------------------------------------------------
// Decoding

constexpr std::size_t longest_input = 16384;

// Decodes a text in every way that there is and holds the results against each other. The record is valid until the next
// decode.
struct Decoded {
    int result;
    const SIP_CODE_MSG &record;
};
Decoded decode(std::string_view text);

} // namespace fuzz

// What each target defines. The text is any bytes.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size);
