// The texts to decode and the records to encode.
#ifndef SIPCODE_BENCH_MESSAGES_H
#define SIPCODE_BENCH_MESSAGES_H

#include <string>
#include <vector>

#include <sipcode/code.h>

namespace bench {

struct message {
    std::string name;
    std::string text;
};

// The messages of bench/messages, smallest first.
std::vector<message> sample_messages();
std::string sample(const std::string &name);

// An INVITE of this many bytes, at least 400, whose session description grows with it.
std::string invite_of_bytes(std::size_t bytes);
// An INVITE with this many lines of about 55 bytes before its empty line, the start line included.
std::string invite_of_headers(int headers);

// Zeroes the record, as every host has to, and decodes the text into it. Ends the process if the text is refused.
void decode(std::string &text, SIP_CODE_MSG &record);

struct record_to_encode {
    std::string name;
    SIP_CODE_MSG record;
};

// The records that a relaying host sends: those of the samples, with the marks that the host sets.
std::vector<record_to_encode> sample_records();

bool is_request(const SIP_CODE_MSG &record);
// Writes the record as the request or response that it is; out holds SIP_REQUEST_SIZE bytes.
void encode(SIP_CODE_MSG &record, char *out);
std::string encoded(SIP_CODE_MSG record);

} // namespace bench

#endif
