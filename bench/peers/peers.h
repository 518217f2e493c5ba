// Other SIP stacks on the same messages: each reads the same fields from a text and prints the same message.
#ifndef SIPCODE_BENCH_PEERS_H
#define SIPCODE_BENCH_PEERS_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "fields.h"

namespace bench {

// Each call parses one text from the start and shows its fields while the stack's own message lives. The fields are
// empty if the stack refuses the text.
using consumer = std::function<void(const fields &)>;
using reader = std::function<void(const consumer &)>;

// Each call prints one message from the stack's structures. The text is valid until the next call.
using printer = std::function<std::string_view()>;

struct peer {
    const char *name;
    reader (*reader_of)(const std::string &text);
    printer (*printer_of)(const std::string &text); // prints the structures that were read from this text
};

template <typename MessagePrinter>
printer printer_of(const std::string &text) {
    return [own = std::make_shared<MessagePrinter>(text)] { return own->print(); };
}

// Deleter that calls a function of the stack.
template <auto release>
struct freed_by {
    template <typename Object>
    void operator()(Object *object) const {
        release(object);
    }
};

extern const peer osip2;
extern const peer sofia_sip;
extern const peer re;

inline const peer *const peers[] = {&sofia_sip, &osip2, &re};

// The fields that a peer reads from a text, as lines.
std::string fields_read_by(const peer &p, const std::string &text);

// Every peer must read the same fields as this library from each sample message, and print each sample record with the
// same headers and fields. Otherwise the difference is printed and the process ends.
void check_peers();

} // namespace bench

#endif
