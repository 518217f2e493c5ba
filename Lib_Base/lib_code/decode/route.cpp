// Route set and option tags: Record-Route and Supported (RFC 3261 sections 20.30 and 20.37).
//
//   Record-Route: <sip:10.0.0.1;lr>        one line: kept verbatim, however many routes it lists
//   Record-Route: <sip:10.0.0.2;lr>        two lines: joined by a comma, in the order of the host's next message
//   Supported: timer,replaces              supported_type 2, 3
//   bad:  Supported: timer, replaces       supported_type 2, 0: the blank is part of the second tag
//
// Three or more Record-Route lines are ignored.
#include "decoders.h"
#include "host.h"
#include "writer.h"

namespace sipcode {
namespace {

constexpr std::size_t longest_line = 255;

int SIP_Decode_Judge_RecordRoute_Count(const message &msg) {
    int count = 0;
    for (line_set lines = msg.record_route_lines(); lines != 0; ++count)
        take_first(lines);
    return count;
}

void Decode_Record_Route(const message &msg, SIP_CODE_MSG *pcode_msg) {
    const text value = msg.value(header::record_route);
    if (value.data() == nullptr)
        return;
    pcode_msg->record_route.use = 1;
    msg.store.put_verbatim(pcode_msg->record_route.content, value);
}

// The value of the last line, after its colon and exactly one blank.
text second_route(const message &msg) {
    const auto last = static_cast<std::size_t>(std::bit_width(msg.record_route_lines()) - 1);
    return drop(cut_at(msg.store.within(msg.header_line(last), longest_line), ':').after, 1);
}

// A response that sets up a dialog lists the routes from the far end; requests need them from the near one.
bool routes_are_reversed(int method, int cseq_method) {
    return method == SIP_RESPONSE_MSG_180_RING || method == SIP_RESPONSE_MSG_183_RING ||
           (method == SIP_RESPONSE_MSG_200_OK && cseq_method == SIP_REQUEST_MSG_INVITE);
}

// first may be a view of the member itself.
template <std::size_t N>
void store_joined(const message &msg, char (&member)[N], text first, text second) {
    char scratch[N];
    writer joined(scratch, sizeof scratch);
    joined.append(first);
    joined.append(",");
    joined.append(second);
    store(member, {scratch, joined.length()});
    if (const std::size_t length = first.size() + 1 + second.size(); length >= N)
        msg.store.note_cut(member, {scratch, length}, N - 1); // no place: the joined text is not in the message
}

int CompareSupportedString(const char *pSupported) {
    if (pSupported == nullptr || *pSupported == '\0')
        return SUP_UNKOWN;
    if (Str_Cmp(pSupported, "timer") == 0)
        return SUP_TIMER;
    if (Str_Cmp(pSupported, "replaces") == 0)
        return SUP_REPLACES;
    if (Str_Cmp(pSupported, "P_Early_Media") == 0)
        return SUP_EARLY_MEDIA;
    return SUP_UNKOWN;
}

} // namespace

void Parse_Record_Route(const message &msg, SIP_CODE_MSG *pcode_msg) {
    const int count = SIP_Decode_Judge_RecordRoute_Count(msg);
    if (count == 1 || count == 2)
        Decode_Record_Route(msg, pcode_msg);
    if (count != 2)
        return;
    SIP_RECORD_ROUTE &routes = pcode_msg->record_route;
    const text first = member_text(routes.content);
    const text second = second_route(msg);
    routes.use = 1;
    if (routes_are_reversed(msg.split().method, pcode_msg->cseq.method))
        store_joined(msg, routes.content, second, first);
    else
        store_joined(msg, routes.content, first, second);
}

int Parse_Supported(const message &msg, SIP_CODE_MSG *pcode_msg) {
    SIP_SUPPORTED &supported = pcode_msg->supported;
    const text value = msg.value(header::supported, header::compact_supported);
    if (value.data() == nullptr) {
        supported.use = 0;
        return -1;
    }
    constexpr int slots = sizeof supported.supported_type / sizeof supported.supported_type[0];
    msg.store.put_verbatim(supported.SUPPORTED, value);
    supported.use = 1;
    char tags[sizeof supported.SUPPORTED]; // cut in place
    std::memcpy(tags, supported.SUPPORTED, sizeof tags);

    char *cursor = tags;
    const char *tag = Str_Tok(&cursor, ",");
    supported.supported_type[0] = static_cast<SIP_SUPPORTED_TYPE>(CompareSupportedString(tag));
    if (cursor == nullptr || *cursor == '\0')
        return 1;
    for (int slot = 1; slot < slots && (tag = Str_Tok(&cursor, ",")) != nullptr; ++slot)
        supported.supported_type[slot] = static_cast<SIP_SUPPORTED_TYPE>(CompareSupportedString(tag));
    return 1;
}

} // namespace sipcode

int SIP_Decode_Judge_RecordRoute_Count(SIP_MSG *psip_msg) {
    return psip_msg == nullptr ? -1 : sipcode::SIP_Decode_Judge_RecordRoute_Count(sipcode::message(*psip_msg));
}
