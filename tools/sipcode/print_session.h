// What a message offers: one line per stream of its session description.
//
//     offer  audio 192.0.2.20:16384  PCMA PCMU G729 iLBC(96) telephone-event(101)  sendrecv  20 ms
//     offer  video 192.0.2.20:16386  H264(99) H263(34)
//     offer  fax 192.0.2.20:16388  T.38 version 0  14400 bit/s  transferredTCF  t38UDPRedundancy
#pragma once

#include <iosfwd>

#include "code.h"

// Prints nothing for a record without a session description. "offer" stands in front of what an INVITE or an UPDATE carries,
// "media" in front of any other, which may be an answer.
void print_session(std::ostream &out, const SIP_CODE_MSG &record);
