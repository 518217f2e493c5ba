// History-Info (RFC 7044). Only the first such header is read.
//
//   History-Info: <sip:2002@10.0.0.1;cause=302>;index=1, <sip:1001@10.0.0.2:5070>;index=1.1
//       history_info[0]: user 2002, addr 10.0.0.1 5060, cause 302; [1]: user 1001, addr 10.0.0.2 5070
//
// Four entries are kept. Nothing outside the brackets is read, and so neither is the index.
#include <algorithm>

#include "decoders.h"
#include "host.h"

namespace sipcode {
namespace {

constexpr std::size_t longest_value = 511;
constexpr std::size_t cause_length = 3;

void Parse_HistoryInfo_Cause(const message &msg, text entry, char (&cause)[16]) {
    const parts found = cut_at(entry, "cause=");
    if (!found.found)
        return;
    store(cause, at_most(found.after, cause_length)); // even past a ";"
    if (const text whole = cut_at(found.after, ';').before; whole.size() > cause_length)
        msg.store.note_cut(cause, whole, cause_length);
}

} // namespace

void Parse_History_info(const message &msg, SIP_CODE_MSG *pcode_msg) {
    const text value = msg.value(header::history_info);
    if (value.data() == nullptr)
        return;
    terminated<longest_value> scratch(msg.store.within(value, longest_value));
    char *cursor = scratch.data();
    const auto is_free = [](const SIP_HISTORY_INFO &slot) { return slot.use == 0; };
    for (auto *slot = pcode_msg->history_info;; ++slot) {
        slot = std::find_if(slot, std::end(pcode_msg->history_info), is_free);
        if (slot == std::end(pcode_msg->history_info))
            return;
        const char *const entry = Str_Two_Tok(&cursor, "<", ">");
        if (entry == nullptr)
            return;
        slot->use = 1;
        Parse_HistoryInfo_Cause(msg, entry, slot->cause);
        Parse_Uri(msg.store, padded_text(text(entry)), slot->user, slot->addr);
    }
}

} // namespace sipcode
