// Prints a decoded message for a reader: its streams, then one line per member of its record.
//
//     offer  audio 192.0.2.20:16384  PCMA PCMU G729 iLBC(96) telephone-event(101)  sendrecv  20 ms
//     offer  video 192.0.2.20:16386  H264(99) H263(34)
//     offer  fax 192.0.2.20:16388  T.38 version 0  14400 bit/s  transferredTCF  t38UDPRedundancy
//     method             5 (INVITE)
//     callid             "a84b4c76e66710"
//     sdp.a_coders[0]    1 (G711_A)
//     xml_buf            "v=0\r\n"
//                        "s=-\r\n"
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

#include "record.h"

// The text with C's escapes: received text must not reach a terminal as a control sequence.
std::string printable(std::string_view text);

// The same between quotes, at the end of out.
void append_quoted(std::string &out, std::string_view text);

// Name of a codec on the wire: "PCMA". Empty for a value that is none.
std::string_view codec_wire_name(int codec);

// Prints one line per stream, and nothing for a record without a session description. The line of an INVITE or UPDATE
// begins with "offer". Any other begins with "media", since it may be an answer.
void print_session(std::ostream &out, const SIP_CODE_MSG &record);

// Prints texts in quotes with C's escapes, broken after each line feed, and the name of a number after the number. The
// members come in the order of the record, except for the body, which is last.
void print_record(std::ostream &out, const SIP_CODE_MSG &record, sipcode::Scope scope);
