// A record as the seeds of the encoders write it, and tests/data/encoded: members that are set, the others zero.
//
//   method=INVITE | cseq.seq=1   on lines, or parted by " | "; a value may be given by its name
//   *=A5                         all bytes of the record, in hexadecimal digits
//   callid=ims-a@b               a text is cut at the end of its member, and has no terminator when it fills it
//   via.branch=a\xFF\r\n         "\\" is a backslash
//   uri.user=a\+                 the last character again and again, to the end of the member
//   xml.xml=0                    a document; the number tells how wrong the host is about its length
//
// What makes no sense is passed over: a fuzzer makes much of it.
#pragma once

#include <string_view>

#include <sipcode/code.h>

namespace fuzz {

void read_record(std::string_view text, SIP_CODE_MSG &record);

} // namespace fuzz
