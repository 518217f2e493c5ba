// A capture through the reader of packets and to calls. Each message is counted in exactly one call.
#include "judge.h"

#include <sipcode/safe.h>

#include "call_tracker.h"
#include "capture_messages.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    std::FILE *const file = size == 0 ? nullptr : fmemopen(const_cast<unsigned char *>(data), size, "rb");
    if (file == nullptr)
        return 0;
    std::size_t messages = 0;
    std::size_t reported = 0;
    CallTracker tracker([&](const Call &call) {
        fuzz::demand(call.repeated < call.messages, "the first message of a call repeats none");
        reported += call.messages;
    });
    try {
        CaptureFile capture(file, "");
        CaptureMessages finder(capture.link_type(), [&](const CapturedMessage &message) {
            MessageFacts facts;
            if (!read_facts(message.text, facts))
                return;
            tracker.add(message, facts);
            ++messages;
        });
        for (Packet packet; capture.next(packet);)
            finder.add(packet);
        finder.finish();
    } catch (const CaptureError &) { // a damaged file ends there
    }
    tracker.finish();
    fuzz::demand(reported == messages, "each message is counted in one call");
    return 0;
}
