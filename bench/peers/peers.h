// Other SIP stacks, measured on the same messages: each reads the same fields of a text and prints the same message.
#ifndef SIPCODE_BENCH_PEERS_H
#define SIPCODE_BENCH_PEERS_H

#include <functional>
#include <string>
#include <string_view>

#include "fields.h"

namespace bench {

// Reads one text, all of it anew with each call, and shows the fields while the stack's own message lives.
using consumer = std::function<void(const fields &)>;
using reader = std::function<void(const consumer &)>;

// Prints one message out of the stack's structures with each call. The text holds until the next one.
using printer = std::function<std::string_view()>;

struct peer {
    const char *name;
    reader (*reader_of)(const std::string &text);
    printer (*printer_of)(const std::string &text); // the structures are those of this text, read beforehand
};

extern const peer osip2;
extern const peer sofia_sip;
extern const peer re;

inline const peer *const peers[] = {&sofia_sip, &osip2, &re};

// Ends the process with the difference unless every peer reads of each sample message what this library does, and
// prints of each sample record a message of the same headers and fields.
void check_peers();

} // namespace bench

#endif
