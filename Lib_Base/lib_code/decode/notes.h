// What a decode tells about itself, into a SIP_DECODE_REPORT when the caller wants one: why and where it refused a message,
// which values it cut. The bounds of the decoders stand here, so that no value is cut unseen.
#pragma once

#include "decode.h"
#include "host.h"
#include "safe.h"
#include "text.h"

namespace sipcode {

class decode_notes {
  public:
    // For decoders that are called alone: nothing is noted.
    decode_notes() = default;

    // The one store of the decoders, and the one bound of what they look at: a longer value is cut, and that is noted.
    template <std::size_t N>
    void store(char (&member)[N], text value, std::size_t longest = N - 1) const {
        sipcode::store(member, at_most(longest, value));
        if (value.size() > longest)
            note_cut(member, value, longest);
    }
    text within(std::size_t longest, text value) const {
        if (value.size() > longest)
            note_cut(nullptr, value, longest);
        return at_most(longest, value);
    }
    roomy_text within(std::size_t longest, roomy_text value) const { return roomy_text(within(longest, text(value))); }
    // The store of headers kept verbatim: the host's, whose bound counts the terminator.
    template <int N>
    void copy_verbatim(char (&member)[N], text value, int bound = N - 1) const {
        Str_N_Copy(member, value.data(), bound);
        if (const auto longest = static_cast<std::size_t>(bound - 1); value.size() > longest)
            note_cut(member, value, longest);
    }
    void note_cut(const void *member, text value, std::size_t kept) const;

    // Notes why the message is refused and where; a null place is the end of the header section. Returns -1.
    int refuse(SIP_DECODE_OUTCOME outcome, const char *header_name, const char *place) const;

  protected:
    decode_notes(const SIP_MSG &split, const SIP_CODE_MSG &record, SIP_DECODE_REPORT *decode_report)
        : source(&split), target(&record), report(decode_report) {}

    const char *body_begin = nullptr; // in source->data

  private:
    int offset_of(const char *place) const;

    const SIP_MSG *source = nullptr;
    const SIP_CODE_MSG *target = nullptr;
    SIP_DECODE_REPORT *report = nullptr; // when set, the others are
};

} // namespace sipcode
