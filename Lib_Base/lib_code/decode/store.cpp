#include "store.h"

namespace sipcode {

// The split message holds received text twice: cut into lines, and the body as received.
int bounded_store::offset_of(const char *place) const {
    if (place >= source->data && place < source->data + sizeof source->data)
        return static_cast<int>(place - source->data);
    if (place >= source->content && place < source->content + sizeof source->content)
        return static_cast<int>(body_begin - source->data + (place - source->content));
    return -1;
}

int bounded_store::refuse(SIP_DECODE_OUTCOME outcome, const char *header_name, const char *place) const {
    if (report != nullptr) {
        report->outcome = outcome;
        report->header = header_name;
        report->at = offset_of(place != nullptr ? place : body_begin);
    }
    return -1;
}

void bounded_store::note_cut(const void *member, text value, std::size_t kept) const {
    if (report == nullptr)
        return;
    if (report->cut_count < SIP_DECODE_CUTS) {
        SIP_DECODE_CUT &cut = report->cuts[report->cut_count];
        cut.member = member != nullptr
                         ? static_cast<int>(static_cast<const char *>(member) - reinterpret_cast<const char *>(target))
                         : -1;
        cut.length = static_cast<unsigned>(value.size());
        cut.kept = static_cast<unsigned>(kept);
        cut.at = offset_of(value.data());
    }
    ++report->cut_count;
}

} // namespace sipcode
