// Single-valued headers: those kept verbatim, those with one or two numbers, and the two with a method word.
//
//   verbatim:  User-Agent: acme 1.0 (x)              the text after the blanks, cut to its member
//   number:    Expires: 3600                         read as atoi or "%d" does
//   CSeq:      CSeq: 102 INVITE                      seq 102, method 5
//   RAck:      RAck: 776656 1 INVITE                 rack 776656, cseq 1, method 5
//   bad:       CSeq: x                               logged, and the message is refused
//
// The host's Str_N_Copy copies verbatim texts. Its bound counts the terminator, so most members keep one character
// fewer than they could hold.
#include "decoders.h"
#include "host.h"
#include "log.h"
#include "methods.h"

// A missing header is logged as a null text, which the host prints harmlessly (host.h); g++ cannot know.
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wformat-overflow"
#endif

namespace sipcode {
namespace {

constexpr int found = 1;
constexpr int not_found = -1;
constexpr const char *absent = nullptr;
constexpr int default_expiry = 3600;
constexpr std::size_t longest_contact = 255;

// Copies a value into a text member. Returns false and writes nothing if there is none.
template <int N>
bool copy_if_any(const message &msg, char (&member)[N], text value, int bound = N - 1) {
    if (value.data() == nullptr)
        return false;
    msg.store.put_verbatim(member, value, bound);
    return true;
}

// The same for a member whose record has a presence flag. Sets the flag if there is a value.
template <class Record, int N>
bool copy_present(const message &msg, Record &record, char (&member)[N], text value, int bound = N - 1) {
    const bool present = copy_if_any(msg, member, value, bound);
    if (present)
        record.use = 1;
    return present;
}

// A number of seconds. At most 63 characters are read.
int seconds(const message &msg, text value) {
    constexpr std::size_t longest = 63;
    return Str_Atoi(terminated<longest>(msg.store.within(value, longest)).c_str());
}

} // namespace

int Parse_Callid(const message &msg, SIP_CODE_MSG *pcode_msg) {
    if (copy_if_any(msg, pcode_msg->callid, msg.value(header::call_id, header::compact_call_id)))
        return found;
    SIPCODE_TRACE(0, "Decode CALL-ID; CALL-ID = %s", absent);
    return not_found;
}

int Parse_Cseq(SIP_CSEQ *pcseq, const message &msg) {
    const padded_text value = message::padded(msg.value(header::cseq));
    if (value.data() == nullptr) {
        SIPCODE_TRACE(0, "Decode Cseq : there is no cseq header '%s'", absent);
        return not_found;
    }
    const number seq = read_number(value);
    if (seq.length == 0) {
        SIPCODE_TRACE(0, "Decode Cseq : there is no seq in '%s'", value.data());
        return not_found;
    }
    pcseq->seq = seq.value;
    pcseq->method = SIP_Decode_Parse_Method(cut_at(value, ' ').after);
    return found;
}

void Parse_Service_Route(const message &msg, SIP_CODE_MSG *pcode_msg) {
    copy_present(msg, pcode_msg->service_route, pcode_msg->service_route.content, msg.value(header::service_route));
}

int Parse_Korvadex(const message &msg, SIP_CODE_MSG *pcode_msg) {
    return copy_if_any(msg, pcode_msg->korvadex, msg.value(header::korvadex_extern)) ? found : not_found;
}

int Parse_Korvadex_Trunk(const message &msg, SIP_CODE_MSG *pcode_msg) {
    const text value = msg.value(header::korvadex, header::korvadex_extern);
    return copy_if_any(msg, pcode_msg->korvadex_trunk, value) ? found : not_found;
}

void Parse_Forwards(int *forward, const message &msg) {
    const text value = msg.value(header::max_forwards);
    if (value.data() == nullptr)
        return;
    const number hops = read_number(message::padded(value));
    if (hops.length == 0)
        SIPCODE_TRACE(0, "Decode max-forward : '%s'", value.data());
    else
        *forward = hops.value;
}

int Parse_Require(const message &msg, SIP_CODE_MSG *pcode_msg) {
    return copy_present(msg, pcode_msg->require, pcode_msg->require.REQUIRE, msg.value(header::require)) ? found
                                                                                                         : not_found;
}

int Parse_RAck(SIP_RACK *prack_msg, const message &msg) {
    const text value = msg.value(header::rack);
    if (value.data() == nullptr)
        return not_found;
    constexpr std::size_t longest_method = 31;
    scanner items(message::padded(value));
    int rack = 0;
    int cseq = 0;
    const bool both = items.integer(rack) && items.integer(cseq);
    prack_msg->rack = rack;
    prack_msg->cseq = cseq;
    prack_msg->method = SIP_Decode_Parse_Method(at_most(both ? items.word() : text(), longest_method));
    return found;
}

int Parse_RSeq(const message &msg, SIP_CODE_MSG *pcode_msg) {
    const text value = msg.value(header::rseq);
    if (value.data() == nullptr)
        return not_found;
    pcode_msg->rseq.RSeq = Str_Atoi(value.data());
    return found;
}

void Parse_Expires(int *expiry, const message &msg) {
    if (const text value = msg.value(header::expires); !value.empty()) {
        *expiry = to_int(message::padded(value));
        return;
    }
    const padded_text contact = message::padded(at_most(msg.value(header::contact), longest_contact));
    const padded_parts parameter = cut_at(contact, ";expires=");
    *expiry = parameter.found ? to_int(parameter.after) : default_expiry;
}

void Parse_Alert(SIP_ALERT *palert, const message &msg) {
    copy_present(msg, *palert, palert->alertinfo, msg.value(header::alert_info));
}

int Parse_Event(SIP_EVENT *pEvent, const message &msg) {
    return copy_present(msg, *pEvent, pEvent->content, msg.value(header::event)) ? found : not_found;
}

void Parse_Date(const message &msg, SIP_CODE_MSG *pcode_msg) {
    copy_present(msg, pcode_msg->date, pcode_msg->date.datetime, msg.value(header::date));
}

void Parse_Replaces(const message &msg, SIP_CODE_MSG *pcode_msg) {
    copy_present(msg, pcode_msg->replaces, pcode_msg->replaces.content, msg.value(header::replaces));
}

void Parse_ReferredBy(const message &msg, SIP_CODE_MSG *pcode_msg) {
    copy_present(msg, pcode_msg->referred_by, pcode_msg->referred_by.content, msg.value(header::referred_by));
}

void Parse_Subscription_State(const message &msg, SIP_CODE_MSG *pcode_msg) {
    SIP_SUBSCRIPTION_STATE &state = pcode_msg->subscription_state;
    copy_present(msg, state, state.content, msg.value(header::subscription_state));
}

void Parse_User_Agent(const message &msg, SIP_CODE_MSG *pcode_msg) {
    copy_present(msg, pcode_msg->user_agent, pcode_msg->user_agent.useragent, msg.value(header::user_agent));
}

void Parse_Session_Expires(SIP_SESSION_EXPIRES *psessionexpires, const message &msg) {
    const text value = msg.value(header::session_expires, header::compact_session_expires);
    if (value.data() == nullptr)
        return;
    constexpr std::size_t longest = 63;
    const terminated<longest> scratch(msg.store.within(value, longest));
    const padded_parts interval = cut_at(scratch.whole(), ';');
    psessionexpires->use = 1;
    psessionexpires->sessionexpires = seconds(msg, interval.before);
    if (const padded_parts parameter = cut_at(interval.after, '='); parameter.found)
        msg.store.put_verbatim(psessionexpires->refresher, parameter.after, sizeof psessionexpires->refresher);
}

void Parse_Min_Se(SIP_MIN_SE *pMinSe, const message &msg) {
    const text value = msg.value(header::min_se);
    if (value.data() == nullptr)
        return;
    pMinSe->use = 1;
    pMinSe->minse = seconds(msg, value);
}

void Parse_Min_Expires(SIP_MIN_EXPIRES *pMinExpires, const message &msg) {
    const text value = msg.value(header::min_expires);
    if (value.data() == nullptr)
        return;
    pMinExpires->use = 1;
    pMinExpires->min_expires = seconds(msg, value);
}

// Only Call-Info is not copied by the host, so it keeps all 127 characters.
int Parse_Call_Info(const message &msg, SIP_CODE_MSG *pcode_msg) {
    const text value = msg.value(header::call_info);
    if (value.data() == nullptr)
        return not_found;
    pcode_msg->call_info.use = 1;
    msg.store.put(pcode_msg->call_info.content, value);
    return found;
}

void Parse_Content_Type(SIP_CONTENT_TYPE *content_type, const message &msg) {
    content_type->use = 0;
    copy_present(msg, *content_type, content_type->type, msg.value(header::content_type, header::compact_content_type),
                 sizeof content_type->type);
}

} // namespace sipcode

void Parse_Session_Expires(SIP_SESSION_EXPIRES *psessionexpires, SIP_MSG *psip_msg) {
    sipcode::Parse_Session_Expires(psessionexpires, sipcode::message(*psip_msg));
}

void Parse_Min_Se(SIP_MIN_SE *pMinSe, SIP_MSG *psip_msg) { sipcode::Parse_Min_Se(pMinSe, sipcode::message(*psip_msg)); }

void Parse_Min_Expires(SIP_MIN_EXPIRES *pMinExpires, SIP_MSG *psip_msg) {
    sipcode::Parse_Min_Expires(pMinExpires, sipcode::message(*psip_msg));
}

int Parse_Call_Info(SIP_MSG *psip_msg, SIP_CODE_MSG *pcode_msg) {
    return sipcode::Parse_Call_Info(sipcode::message(*psip_msg), pcode_msg);
}
