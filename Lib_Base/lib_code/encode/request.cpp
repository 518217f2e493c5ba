// A request from the record: the request line, the header lines in their fixed order, the body.
#include "lines.h"
#include "methods.h"

namespace sipcode {
namespace {

bool is_one_of(int method, int a, int b) { return method == a || method == b; }

void write_request_line(writer &out, const SIP_CODE_MSG &r) {
    const text method = method_text(r.method); // a status, which has blanks, is refused here
    const auto &[user, addr, dns] = r.uri;
    const bool phone_number = r.method == SIP_REQUEST_MSG_INVITE && r.user_phone == 1;
    if (dns.use == 1) {
        if (phone_number)
            out.line<"%s sip:%s@%s;user=phone SIP/2.0\r\n">(method, user, dns.dnsname);
        else if (r.method == SIP_REQUEST_MSG_REGISTER)
            out.line<"%s sip:%s SIP/2.0\r\n">(method, dns.dnsname);
        else if (is_one_of(r.method, SIP_REQUEST_MSG_BYE, SIP_REQUEST_MSG_ACK))
            out.line<"%s sip:%s:%d SIP/2.0\r\n">(method, addr.ip, addr.port);
        else
            out.line<"%s sip:%s@%s SIP/2.0\r\n">(method, user, dns.dnsname);
    } else {
        if (r.method == SIP_REQUEST_MSG_REGISTER)
            out.line<"%s sip:%s:%d SIP/2.0\r\n">(method, addr.ip, addr.port);
        else if (phone_number)
            out.line<"%s sip:%s@%s:%d;user=phone SIP/2.0\r\n">(method, user, addr.ip, addr.port);
        else
            out.line<"%s sip:%s@%s:%d SIP/2.0\r\n">(method, user, addr.ip, addr.port);
    }
}

void write_vias(writer &out, const transport_token &transport, const SIP_CODE_MSG &r) {
    const SIP_VIA &via = r.via;
    if (r.via_count == 2)
        write_via(out, transport, r.via1);
    if (via.rport == 1)
        out.line<"Via: SIP/2.0/%s %s:%d;branch=%s;rport\r\n">(own_text{transport}, via.addr.ip, via.addr.port,
                                                              via.branch);
    else
        write_via(out, transport, via);
}

phone phone_of_parties(const SIP_CODE_MSG &r) {
    if (r.user_phone != 1)
        return phone::none;
    return r.method == SIP_REQUEST_MSG_REGISTER ? phone::outside : phone::inside;
}

void write_session_timer(writer &out, const SIP_SESSION_EXPIRES &session_expires) {
    if (session_expires.refresher[0] != '\0')
        write_session_expires(out, session_expires);
    else
        out.line<"Session-Expires: %d\r\n">(session_expires.sessionexpires);
}

void write_authorization(writer &out, const SIP_AUTHOR &a) {
    if (a.qop[0] != '\0')
        out.line<"Authorization: Digest username=\"%s\",realm=\"%s\",nonce=\"%s\",uri=\"%s\",response=\"%s\","
                 "algorithm=MD5,cnonce=\"%s\",qop=auth,nc=%08x\r\n">(a.username, a.realm, a.nonce, a.uri, a.response,
                                                                     a.cnonce, a.noncecount);
    else if (a.stale == 0)
        out.line<"Authorization: Digest username=\"%s\",realm=\"%s\",nonce=\"%s\",uri=\"%s\",response=\"%s\","
                 "algorithm=MD5\r\n">(a.username, a.realm, a.nonce, a.uri, a.response);
    else
        out.line<"Authorization: Digest username=\"%s\",realm=\"%s\",nonce=\"%s\",uri=\"%s\",response=\"%s\","
                 "algorithm=MD5,stale=true\r\n">(a.username, a.realm, a.nonce, a.uri, a.response);
}

void write_proxy_authorization(writer &out, const SIP_AUTHOR &a, int method) {
    if (a.qop[0] == '\0')
        out.line<"Proxy-Authorization: Digest username=\"%s\",realm=\"%s\",nonce=\"%s\",uri=\"%s\",response=\"%s\","
                 "algorithm=MD5\r\n">(a.username, a.realm, a.nonce, a.uri, a.response);
    else if (method == SIP_REQUEST_MSG_SUBCRIBE)
        out.line<"Proxy-Authorization: Digest username=\"%s\",realm=\"%s\",nonce=\"%s\",uri=\"%s\",opaque=\"\","
                 "response=\"%s\",algorithm=MD5,qop=auth,cnonce=\"%s\", nc=%08x\r\n">(
            a.username, a.realm, a.nonce, a.uri, a.response, a.cnonce, a.noncecount);
    else
        out.line<"Proxy-Authorization: Digest username=\"%s\",realm=\"%s\",nonce=\"%s\",uri=\"%s\",response=\"%s\","
                 "algorithm=MD5,qop=auth,cnonce=\"%s\", nc=%08x\r\n">(a.username, a.realm, a.nonce, a.uri, a.response,
                                                                      a.cnonce, a.noncecount);
}

void write_credentials(writer &out, const SIP_CODE_MSG &r) {
    if (r.author.author_type == SIP_DIGEST_WWW_AUTHENTICATE)
        write_authorization(out, r.author);
    else if (r.author.author_type == SIP_DIGEST_PROXY_AUTHENTICATE)
        write_proxy_authorization(out, r.author, r.method);
}

// "Request URI" and P-Asserted-Identity.
template <format_string Name, class Party>
void write_identity(writer &out, const Party &party) {
    const auto &[use, user, tag, addr] = party;
    if (tag[0] == '\0')
        out.line<joined<Name, ": \"%s\" <sip:%s@%s:%d>\r\n">>(user, user, addr.ip, addr.port);
    else
        out.line<joined<Name, ": \"%s\" <sip:%s@%s:%d>;tag=%s\r\n">>(user, user, addr.ip, addr.port, tag);
}

// One header, folded with one line per entry. Writes the entries up to the first unused one.
void write_history(writer &out, const SIP_HISTORY_INFO (&entries)[4]) {
    out.line<"History-Info: ">();
    for (std::size_t i = 0; i < std::size(entries) && entries[i].use == 1; ++i) {
        const auto &[use, user, addr, index, cause] = entries[i];
        if (i > 0)
            out.line<",\r\n ">();
        if (cause[0] != '\0')
            out.line<"<sip:%s@%s:%d;cause=%s>;index=%d">(user, addr.ip, addr.port, cause, index);
        else
            out.line<"<sip:%s@%s:%d>;index=%d">(user, addr.ip, addr.port, index);
    }
    out.line<"\r\n">();
}

void write_transfer(writer &out, const SIP_CODE_MSG &r) {
    const text host = r.from.dns.use == 1 ? member_text(r.from.dns.dnsname) : member_text(r.from.addr.ip);
    const REFER_INFO &refer = r.refer_to;
    out.line<"Referred-By: <sip:%s@%s;user=phone>\r\n">(r.from.user, host);
    if (refer.refermode == 1)
        out.line<"Refer-To: <sip:%s@%s;user=phone;%s>\r\n">(refer.refertotel, host, refer.refertocontent);
    else
        out.line<"Refer-To: <sip:%s@%s;user=phone>\r\n">(refer.refertotel, host);
}

// A SUBSCRIBE asks for 0 or for at least 900 seconds.
int requested_expiry(const SIP_CODE_MSG &r) {
    constexpr int least = 900;
    const int seconds = r.expire.expires;
    if (r.method != SIP_REQUEST_MSG_SUBCRIBE || seconds > least)
        return seconds;
    return seconds <= 0 ? 0 : least;
}

void write_accept(writer &out, const SIP_EVENT &event) {
    if (same_text(event.content, "reg"))
        out.line<"Accept: application/reginfo+xml\r\n">();
    else if (same_text(event.content, "dialog"))
        out.line<"Accept: application/dialog-info+xml\r\n">();
}

} // namespace

void write_request(writer &out, SIP_CODE_MSG &r) {
    const transport_token &transport = transport_text(r.trans_type);
    const bool is_invite = r.method == SIP_REQUEST_MSG_INVITE;
    const bool is_register = r.method == SIP_REQUEST_MSG_REGISTER;
    write_request_line(out, r);
    if (r.record_route.use == 1)
        out.line<"Route: %s\r\n">(r.record_route.content);
    write_vias(out, transport, r);
    write_to(out, r.to, phone_of_parties(r), bare_form::never);
    write_from(out, r.from, phone_of_parties(r), bare_form::never);
    write_call_id(out, r);
    write_cseq(out, r);
    if (has_contact(r.contact))
        write_contact(out, transport, r.contact);
    if (r.korvadex[0] != '\0')
        write_korvadex(out, r);
    if (is_invite || is_register)
        write_allow(out);
    if (r.date.use == 1 && (is_invite || is_one_of(r.method, SIP_REQUEST_MSG_BYE, SIP_REQUEST_MSG_ACK)))
        write_date(out);
    if (r.referred_by.use == 1 && is_invite)
        out.line<"Referred-By: %s\r\n">(r.referred_by.content);
    if (r.replaces.use == 1 && is_invite)
        out.line<"Replaces: %s\r\n">(r.replaces.content);
    if (r.subscription_state.use == 1 && r.method == SIP_REQUEST_MSG_NOTIFY)
        out.line<"Subscription-State: %s\r\n">(r.subscription_state.content);
    if (r.rack.rack != 0)
        write_rack(out, r);
    if (r.rseq.use == 1)
        write_rseq(out, r);
    if (r.require.use == 1)
        write_require(out, r);
    if (r.alert.use == 1)
        out.line<"Alert-Info: %s\r\n">(r.alert.alertinfo);
    if (r.session_expires.use == 1 && is_invite)
        write_session_timer(out, r.session_expires);
    if (r.min_se.use == 1 && is_invite)
        write_min_se(out, r);
    if (r.call_info.use == 1)
        write_call_info(out, r);
    if (r.supported.use == 1 && is_invite)
        write_supported(out, r);
    if (is_invite && r.to.tag_use == 0)
        write_preferred_identity(out, r.from, phone_of_parties(r));
    if (r.author.use == 1)
        write_credentials(out, r);
    if (r.requst_uri.tag_use == 1)
        write_identity<"Request URI">(out, r.requst_uri);
    if (r.history_info[0].use == 1)
        write_history(out, r.history_info);
    if (r.p_passerted_identity.tag_use == 1)
        write_identity<"P-Asserted-Identity">(out, r.p_passerted_identity);
    if (r.refer_to.use == 1)
        write_transfer(out, r);
    if (r.expire.use == 1)
        write_expires(out, requested_expiry(r));
    if (r.user_agent.use == 1)
        out.line<"User-Agent: %s\r\n">(r.user_agent.useragent);
    if (r.event.use == 1)
        out.line<"Event: %s\r\n">(r.event.content);
    if (r.method == SIP_REQUEST_MSG_SUBCRIBE)
        write_accept(out, r.event);
    out.line<"Max-Forwards: 70\r\n">();
    write_body(out, r, body_sources::of_request);
}

} // namespace sipcode

int SIP_Encode_Message_Reuqest(char *buf, SIP_CODE_MSG *encode_msg) {
    using namespace sipcode;
    if (!prepare(*encode_msg))
        return refused;
    writer out(buf, SIP_REQUEST_SIZE);
    write_request(out, *encode_msg);
    return encoded;
}
