// The lines that requests and responses share, in the order of the address lines, then the others.
#include "lines.h"

#include <cstdio>

#include "methods.h"

namespace sipcode {

void strip_ims_prefix(char (&callid)[128]) {
    constexpr std::size_t prefix_length = 4;
    char prefix[prefix_length + 1]; // the member itself may be unterminated
    std::memcpy(prefix, callid, prefix_length);
    prefix[prefix_length] = '\0';
    if (Str_N_Cmp(prefix, "ims-", prefix_length) != 0)
        return;
    const text rest = drop(member_text(callid), prefix_length);
    std::memmove(callid, rest.data(), rest.size());
    callid[rest.size()] = '\0';
}

bool is_known_method(int method) { return method > SIP_REQUEST_MSG_UNKNOWN && method < SIP_CODE_METHOD_COUNT; }

bool prepare(SIP_CODE_MSG &record) {
    strip_ims_prefix(record.callid);
    if (is_known_method(record.method))
        return true;
    std::printf("Encode Method : method = %d is not belong to us defined\n", record.method);
    return false;
}

const transport_token &transport_text(TRANS_TYPE_E transport) {
    static constexpr transport_token udp = "UDP";
    static constexpr transport_token tcp = "TCP";
    static constexpr transport_token tls = "TLS";
    static constexpr transport_token none = "";
    switch (transport) {
    case E_UDP:
        return udp;
    case E_TCP:
        return tcp;
    case E_TLS:
        return tls;
    default:
        return none;
    }
}

// ------------------------------------------------------------------------------------------------------- To and From

namespace {

bool is_bare(const SIP_FROMTO &party, bare_form bare) {
    return bare == bare_form::when_user_is_empty && party.dns.use != 1 && party.user[0] == '\0';
}

// Ends a line after its URI, with ";user=phone" at its position.
template <format_string Uri, format_string End, class... Values>
void write_after_uri(writer &out, phone user_phone, const Values &...values) {
    switch (user_phone) {
    case phone::none:
        return out.line<joined<Uri, ">", End>>(values...);
    case phone::inside:
        return out.line<joined<Uri, ";user=phone>", End>>(values...);
    case phone::outside:
        return out.line<joined<Uri, ">;user=phone", End>>(values...);
    }
}

// A line with display name and URI, by host name or by address.
template <format_string Name, format_string End, class... Values>
void write_party(writer &out, const SIP_FROMTO &party, phone user_phone, const Values &...end) {
    const auto &[tag_use, user, tag, addr, dns, flag] = party;
    if (dns.use == 1)
        write_after_uri<joined<Name, ": \"%s\" <sip:%s@%s">, End>(out, user_phone, user, user, dns.dnsname, end...);
    else
        write_after_uri<joined<Name, ": \"%s\" <sip:%s@%s:%d">, End>(out, user_phone, user, user, addr.ip, addr.port,
                                                                     end...);
}

template <format_string Name>
void write_tagged_party(writer &out, const SIP_FROMTO &party, phone user_phone, bare_form bare) {
    if (is_bare(party, bare))
        write_after_uri<joined<Name, ": <sip:%s:%d">, ";tag=%s\r\n">(out, user_phone, party.addr.ip, party.addr.port,
                                                                     party.tag);
    else
        write_party<Name, ";tag=%s\r\n">(out, party, user_phone, party.tag);
}

} // namespace

void write_to(writer &out, const SIP_FROMTO &to, phone user_phone, bare_form bare) {
    if (to.tag_use == 1)
        write_tagged_party<"To">(out, to, user_phone, bare);
    else
        write_party<"To", "\r\n">(out, to, user_phone);
}

void write_from(writer &out, const SIP_FROMTO &from, phone user_phone, bare_form bare) {
    write_tagged_party<"From">(out, from, user_phone, bare);
}

void write_preferred_identity(writer &out, const SIP_FROMTO &from, phone user_phone) {
    write_party<"P-Preferred-Identity", "\r\n">(out, from, user_phone);
}

// ------------------------------------------------------------------------------------------------------ other lines

void write_via(writer &out, const transport_token &transport, const SIP_VIA &via) {
    out.line<"Via: SIP/2.0/%s %s:%d;branch=%s\r\n">(own_text{transport}, via.addr.ip, via.addr.port, via.branch);
}

bool has_contact(const SIP_CONTACT &contact) {
    return contact.user[0] != '\0' && contact.addr.ip[0] != '\0' && contact.addr.port > 0;
}

void write_contact(writer &out, const transport_token &transport, const SIP_CONTACT &contact) {
    out.line<"Contact: <sip:%s@%s:%d;transport=%s>\r\n">(contact.user, contact.addr.ip, contact.addr.port,
                                                         own_text{transport});
}

void write_call_id(writer &out, const SIP_CODE_MSG &record) { out.line<"Call-ID: %s\r\n">(record.callid); }

void write_cseq(writer &out, const SIP_CODE_MSG &record) {
    out.line<"CSeq: %d %s\r\n">(record.cseq.seq, own_text{method_text(record.cseq.method)});
}

void write_korvadex(writer &out, const SIP_CODE_MSG &record) { out.line<"Korvadex-Extern: %s\r\n">(record.korvadex); }

void write_allow(writer &out) {
    out.line<"Allow: INVITE,MESSAGE,INFO,PRACK,PUBLISH,SUBSCRIBE,OPTIONS,UPDATE,BYE,CANCEL,NOTIFY,ACK,REFER\r\n">();
}

void write_date(writer &out) {
    out.line<"Date: ">();
    write_time(out);
    out.line<"\r\n">();
}

void write_session_expires(writer &out, const SIP_SESSION_EXPIRES &session_expires) {
    out.line<"Session-Expires: %d;refresher=%s\r\n">(session_expires.sessionexpires, session_expires.refresher);
}

void write_rack(writer &out, const SIP_CODE_MSG &record) {
    out.line<"RAck: %d %d %s\r\n">(record.rack.rack, record.rack.cseq, own_text{method_text(record.rack.method)});
}

void write_rseq(writer &out, const SIP_CODE_MSG &record) { out.line<"RSeq: %d\r\n">(record.rseq.RSeq); }

void write_min_se(writer &out, const SIP_CODE_MSG &record) { out.line<"Min-SE: %d\r\n">(record.min_se.minse); }

void write_call_info(writer &out, const SIP_CODE_MSG &record) {
    const SIP_FROMTO &from = record.from;
    out.line<"Call-Info: <sip:%s@%s:%d>;%s\r\n">(from.user, from.addr.ip, from.addr.port, record.call_info.content);
}

void write_supported(writer &out, const SIP_CODE_MSG &record) {
    out.line<"Supported: %s\r\n">(record.supported.SUPPORTED);
}

void write_require(writer &out, const SIP_CODE_MSG &record) { out.line<"Require: %s\r\n">(record.require.REQUIRE); }

void write_expires(writer &out, int seconds) { out.line<"Expires: %d\r\n">(seconds); }

} // namespace sipcode
