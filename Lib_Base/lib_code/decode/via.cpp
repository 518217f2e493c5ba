// Via (RFC 3261 section 20.42): the count, and the topmost one or two.
//
//   Via   = transport SP sent-by *(";" parameter)
//   good:   Via: SIP/2.0/UDP 10.0.0.1:5062;branch=z9hG4bK1;rport    branch, addr.ip, addr.port of via
//   bad:    Via: SIP/2.0/WS 10.0.0.1;branch=z9hG4bK3                only branch; the transport is logged
//
// Differs from the RFC on purpose: the first "branch=" anywhere in the parameters counts. If there are two Vias, each
// value is assumed to begin after the colon and exactly one blank.
#include <algorithm>

#include "decoders.h"
#include "log.h"
#include "methods.h"

namespace sipcode {
namespace {

constexpr std::size_t longest_via = 255;
constexpr char branch_name[] = "branch=";

padded_text via_value(const message &msg) {
    return msg.store.within(message::padded(msg.filled_value(header::via, header::compact_via)), longest_via);
}

padded_text value_of_via_line(padded_text line) { return drop(line, starts_nocase(line, "v:") ? 3 : 5); }

[[gnu::always_inline]] inline void read_branch(const message &msg, padded_text parameters, SIP_VIA &via) {
    const auto branch = cut_at(parameters, branch_name);
    if (branch.found)
        msg.store.put(via.branch, cut_at(branch.after, ';').before);
}

bool is_known_transport(padded_text word) {
    static constexpr nocase known[] = {"SIP/2.0/UDP", "SIP/2.0/TCP", "SIP/2.0/SCTP", "SIP/2.0/TLS"};
    return std::any_of(std::begin(known), std::end(known),
                       [word](const nocase &transport) { return equals_nocase(word, transport); });
}

// Reads transport and sent-by, the text before the first ";". Without a port, addr.port becomes port_if_none. Stores
// nothing if the transport is unknown and returns its word; returns a null text otherwise.
[[gnu::always_inline]] inline text read_sent_by(const message &msg, padded_text head, SIP_VIA &via, int port_if_none) {
    const auto words = cut_at(head, ' ');
    if (!words.found)
        return {};
    if (!is_known_transport(words.before))
        return words.before;
    const auto host_port = cut_at(padded_text(skip_blanks(words.after)), ':');
    via.addr.port = host_port.found ? to_int(host_port.after) : port_if_none;
    msg.store.put(via.addr.ip, host_port.before);
    return {};
}

void read_sent_by_or_log(const message &msg, padded_text head, SIP_VIA &via, int port_if_none) {
    if (const text unknown = read_sent_by(msg, head, via, port_if_none); unknown.data() != nullptr)
        SIPCODE_TRACE(0, "Don't know how to respond via '%s'", terminated(unknown).c_str());
}

void Parse_Via_Not_Branch(SIP_VIA *pvia, const message &msg, padded_text value) {
    read_sent_by_or_log(msg, value, *pvia, default_port);
}

// One whole Via line.
void Parse_Via_Str(const message &msg, SIP_VIA *pvia, padded_text value) {
    const auto via = cut_at(value, ';');
    read_branch(msg, via.after, *pvia);
    read_sent_by_or_log(msg, via.before, *pvia, pvia->addr.port);
}

// The first Via line of a pair. If a comma follows its branch, the line holds both Vias. The second one is everything
// after the first comma of the line, blanks included.
void Parse_Via_Str1(const message &msg, SIP_VIA *pvia, SIP_VIA *pvia1, padded_text line) {
    const auto via = cut_at(value_of_via_line(line), ';');
    const auto branch = cut_at(via.after, branch_name);
    if (branch.found) {
        const auto joined = cut_at(branch.after, ',');
        if (joined.found)
            Parse_Via_Str(msg, pvia1, cut_at(line, ',').after);
        msg.store.put(pvia->branch, joined.found ? joined.before : cut_at(branch.after, ';').before);
    }
    if (const text unknown = read_sent_by(msg, via.before, *pvia, pvia->addr.port); unknown.data() != nullptr)
        MT_Log_Process(0, 1, -1, "Don't know how to respond via '%s'\n", terminated(unknown).c_str());
}

// A line with a comma counts twice.
template <class Line>
int count_vias(const message &msg) {
    int count = 0;
    for (line_set lines = msg.via_lines(); lines != 0;)
        count += contains(Line(msg.header_line(take_first(lines))), ',') ? 2 : 1;
    return count;
}

} // namespace

int SIP_Decode_Judge_Via_Count(const message &msg) { return count_vias<padded_text>(msg); }

void Parse_Via(SIP_VIA *pvia, const message &msg) {
    const padded_text value = via_value(msg);
    const auto via = cut_at(value, ';');
    if (!via.found) {
        SIPCODE_TRACE(0, "via is wrong, via '%s'", terminated(value).c_str());
        Parse_Via_Not_Branch(pvia, msg, value);
        return;
    }
    read_branch(msg, via.after, *pvia);
    read_sent_by_or_log(msg, via.before, *pvia, default_port);
}

void Parse_Via_Pair(SIP_VIA *pvia1, SIP_VIA *pvia, const message &msg) {
    bool first = true;
    for (line_set lines = msg.via_lines(); lines != 0; first = !first) {
        const padded_text line = msg.store.within(message::padded(msg.header_line(take_first(lines))), longest_via);
        if (first)
            Parse_Via_Str1(msg, pvia1, pvia, line);
        else
            Parse_Via_Str(msg, pvia, value_of_via_line(line));
    }
    if (pvia->addr.port == 0)
        pvia->addr.port = default_port;
}

} // namespace sipcode

int SIP_Decode_Judge_Via_Count(SIP_MSG *psip_msg) {
    return sipcode::count_vias<sipcode::text>(sipcode::message(*psip_msg));
}
