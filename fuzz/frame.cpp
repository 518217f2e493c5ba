// A stream, framed message by message. Each message is decoded, and its body has the stated length. More data never
// changes a decision.
#include "judge.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <sipcode/safe.h>

namespace {

using fuzz::demand;

struct Framed {
    int outcome;
    std::size_t length;

    bool operator==(const Framed &) const = default;
};

Framed frame(std::string_view data) {
    static fuzz::Arena pages(fuzz::longest_input);
    char *const copy = pages.copy(data, fuzz::side_for(data.size()));
    Framed framed{0, SIZE_MAX};
    framed.outcome = SIP_Frame_Stream(copy, data.size(), &framed.length);
    demand(data.empty() || std::memcmp(copy, data.data(), data.size()) == 0, "framing only reads the data");
    pages.demand_intact();
    return framed;
}

void judge_lengths(const Framed &framed, std::size_t size) {
    const auto [outcome, length] = framed;
    switch (outcome) {
    case SIP_FRAME_KEEP_ALIVE:
        return demand(length > 0 && length <= size, "a keep-alive is in the data");
    case SIP_FRAME_COMPLETE:
        return demand(length > 0 && length <= size && length <= SIP_LONGEST_MESSAGE, "a message is in the data");
    case SIP_FRAME_LONG_MESSAGE:
        return demand(length > SIP_LONGEST_MESSAGE, "a long message is long");
    case SIP_FRAME_NUL:
        return demand(length <= SIP_LONGEST_MESSAGE, "the end of a message with a NUL is known or not");
    case SIP_FRAME_MORE:
    case SIP_FRAME_LONG_HEADERS:
    case SIP_FRAME_NO_LENGTH:
    case SIP_FRAME_BAD_LENGTH:
    case SIP_FRAME_DIFFERENT_LENGTHS:
        return demand(length == 0, "no end is told");
    default:
        demand(false, "framing has an outcome that is listed");
    }
}

// A prefix of the data has the same outcome as all of it, or none yet.
void judge_part(std::string_view data, std::size_t size, const Framed &whole) {
    const Framed part = frame(data.substr(0, size));
    judge_lengths(part, size);
    if (part.outcome == SIP_FRAME_MORE)
        demand(whole.outcome != SIP_FRAME_COMPLETE || size < whole.length, "what is whole is found whole");
    else if (part.outcome == SIP_FRAME_KEEP_ALIVE)
        demand(whole.outcome == SIP_FRAME_KEEP_ALIVE && part.length <= whole.length, "a keep-alive grows or stays");
    else
        demand(part == whole, "what is decided stays");
}

void judge_parts(std::string_view data, const Framed &whole) {
    constexpr std::size_t parts = 16;
    const std::size_t step = std::max<std::size_t>(1, data.size() / parts);
    for (std::size_t size = 0; size < data.size(); size += step)
        judge_part(data, size, whole);
    for (std::size_t behind_end = std::min(whole.length + 2, data.size()), size = behind_end;
         size + 4 >= behind_end && size > 0; --size)
        judge_part(data, size, whole);
}

// The body has the stated length. A length after a comma that joins lines is no header line of its own.
void judge_message(std::string_view message) {
    SIP_SLICE body;
    SIP_SLICE stated;
    SIP_Find_Body(message.data(), message.size(), &body);
    if (SIP_Find_Header(message.data(), message.size(), "Content-Length", SIP_NAME_ANY_FORM, 0, &stated) == 1)
        demand(std::strtoul(message.data() + stated.at, nullptr, 10) == body.length, "the body has the stated length");
    fuzz::decode(message);
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    std::string_view stream(reinterpret_cast<const char *>(data), std::min(size, fuzz::longest_input));
    for (;;) {
        const Framed framed = frame(stream);
        judge_lengths(framed, stream.size());
        judge_parts(stream, framed);
        if (framed.outcome == SIP_FRAME_COMPLETE)
            judge_message(stream.substr(0, framed.length));
        if (framed.length == 0 || framed.length > stream.size())
            return 0;
        stream.remove_prefix(framed.length);
    }
}
