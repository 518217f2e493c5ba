// The bounded store of the decoders. It puts every value into the record and bounds how much of a value is read. It
// notes each cut in the caller's SIP_DECODE_REPORT, if there is one.
#pragma once

#include "decode.h"
#include "host.h"
#include "safe.h"
#include "text.h"

namespace sipcode {

class bounded_store {
  public:
    // For a decoder called on its own. Notes nothing.
    bounded_store() = default;

    // For a decode of split into record.
    bounded_store(const SIP_MSG &split, const SIP_CODE_MSG &record, SIP_DECODE_REPORT *decode_report)
        : source(&split), target(&record), report(decode_report) {}

    // A longer value is cut.
    template <std::size_t N>
    void put(char (&member)[N], text value, std::size_t longest = N - 1) const {
        store(member, at_most(value, longest));
        if (value.size() > longest)
            note_cut(member, value, longest);
    }

    // The part of a value that is read.
    text within(text value, std::size_t longest) const {
        if (value.size() > longest)
            note_cut(nullptr, value, longest);
        return at_most(value, longest);
    }
    padded_text within(padded_text value, std::size_t longest) const {
        return padded_text(within(text(value), longest));
    }

    // For headers kept verbatim. The host copies them, with a bound that counts the terminator.
    template <int N>
    void put_verbatim(char (&member)[N], text value, int bound = N - 1) const {
        Str_N_Copy(member, value.data(), bound);
        if (const auto longest = static_cast<std::size_t>(bound - 1); value.size() > longest)
            note_cut(member, value, longest);
    }

    // Notes a cut; a null member is a value that was cut before it was read.
    void note_cut(const void *member, text value, std::size_t kept) const;

    // Notes why the message is refused and where; a null place is the end of the header section. Returns -1.
    int refuse(SIP_DECODE_OUTCOME outcome, const char *header_name, const char *place) const;

    const char *body_begin = nullptr; // in the text of the split message

  private:
    int offset_of(const char *place) const;

    const SIP_MSG *source = nullptr;
    const SIP_CODE_MSG *target = nullptr;
    SIP_DECODE_REPORT *report = nullptr; // if it is set, the others are too
};

} // namespace sipcode
