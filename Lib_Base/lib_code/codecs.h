// The audio codecs of session descriptions, read and written.
#pragma once

#include "code.h"

namespace sipcode {

inline constexpr int dynamic_payload = -1; // given by a=rtpmap (RFC 3551 section 3)

struct audio_codec {
    e_codec codec;
    int payload;
    char encoding[24]; // as in a=rtpmap, with its clock rate if it has one
};

inline constexpr audio_codec audio_codecs[] = {
    {G711_A, 8, "PCMA/8000"},
    {G711_U, 0, "PCMU/8000"},
    {G729, 18, "G729/8000"},
    {G723, 4, "G723/8000"},
    {TE101, dynamic_payload, "telephone-event/8000"},
    {GSM, 3, "GSM/8000"},
    {G726, 2, "G726-32"},
    {G722, 9, "G722/8000"},
    {SPEEX, dynamic_payload, "speex/8000"},
    {ILBC, dynamic_payload, "ilbc/8000"},
    {DVI4, 5, "dvi4/8000"},
};
static_assert([] {
    for (const audio_codec &row : audio_codecs)
        if (&row != &audio_codecs[row.codec - 1])
            return false;
    return true;
}());

// The other payload of DVI4, at another clock rate: read, never written.
inline constexpr int second_dvi4_payload = 6;

} // namespace sipcode
