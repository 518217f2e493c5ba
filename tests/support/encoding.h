// Encoding as the tests see it: a record in; the result, the text and what became of the record out.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <sipcode/encode.h>

#include "support/members.h"

namespace support {

struct Encoded {
    int result;
    std::string text; // "(untouched)" when nothing was written
    SIP_CODE_MSG record;
};

// A record whose members are set as read_record does. Every line must name a member.
SIP_CODE_MSG record_of(std::string_view list);

// The members in which two records differ; texts count up to their terminator.
std::string difference(const SIP_CODE_MSG &a, const SIP_CODE_MSG &b);

// Encodes a record that ends at an unreadable page into a buffer of the stated room that does.
Encoded encode_request(const SIP_CODE_MSG &record);
Encoded encode_response(const SIP_CODE_MSG &record);
std::string dump(const SIP_CODE_MSG &record);

// A file of data/encoded: the members that are set, an empty line, and what is written.
struct EncodedCase {
    std::string title;
    std::string members;
    std::string expected;
};

std::vector<EncodedCase> encoded_cases(const std::string &extension);

// Compares the rows of data/encoded/<name>.lines with what is written. The first line sets members for all rows. In the
// row "method=BYE ; require.use=1 => Require: ", the members after the semicolon make the change. "-To | To: <sip:h>"
// replaces a line.
void expect_line_changes(const std::string &name, std::string (*write)(const SIP_CODE_MSG &record));

// A message as the tests write it, with "\n" for CR LF.
std::string wire(std::string_view text);

} // namespace support
