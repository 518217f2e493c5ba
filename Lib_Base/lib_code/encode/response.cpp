// A response from the record, usually the one that was decoded from the request: the status line, the header lines in
// their fixed order, the body. Several lines depend on cseq.method, the method of the answered request.
#include "lines.h"
#include "methods.h"

namespace sipcode {
namespace {

void write_vias(writer &out, const transport_token &transport, SIP_CODE_MSG &r) {
    const SIP_VIA &via = r.via;
    if (r.via_count == 2) {
        if (r.via1.addr.port == 0)
            r.via1.addr.port = default_port;
        write_via(out, transport, r.via1);
    }
    if (r.cseq.method == SIP_REQUEST_MSG_MESSAGE)
        out.line<"Via: SIP/2.0/%s %s:%d;received=%s;rport=%d;branch=%s\r\n">(
            own_text{transport}, via.addr.ip, via.addr.port, via.addr.ip, via.addr.port, via.branch);
    else
        write_via(out, transport, via);
}

void write_parties(writer &out, SIP_CODE_MSG &r) {
    const phone user_phone = r.user_phone == 1 ? phone::inside : phone::none;
    if (r.to.tag[0] == '\0')
        r.to.tag_use = 0;
    write_to(out, r.to, user_phone, bare_form::when_user_is_empty);
    write_from(out, r.from, user_phone, bare_form::when_user_is_empty);
}

void write_session_timer(writer &out, const SIP_SESSION_EXPIRES &session_expires) {
    if (session_expires.refresher[0] != '\0')
        write_session_expires(out, session_expires);
    else
        out.line<"Session-Expires: %d;refresher=uas\r\n">(session_expires.sessionexpires);
}

// A registrar and a notifier state how long the contact is valid.
void write_contact_of_response(writer &out, const transport_token &transport, const SIP_CODE_MSG &r, bool with_expiry) {
    const SIP_CONTACT &contact = r.contact;
    if (with_expiry)
        out.line<"Contact: <sip:%s@%s:%d;transport=%s>;expires=%d\r\n">(
            contact.user, contact.addr.ip, contact.addr.port, own_text{transport}, r.expire.expires);
    else
        write_contact(out, transport, contact);
}

void write_challenge(writer &out, const SIP_AUTHEN &authen) {
    if (authen.authen_type == SIP_RESPONSE_MSG_407_PROXY_AUTHENTICATION_REQUIRED)
        out.line<"Proxy-Authenticate: Digest realm=\"%s\",nonce=\"%s\",stale=FALSE,algorithm=MD5\r\n">(authen.realm,
                                                                                                       authen.nonce);
    else
        out.line<"WWW-Authenticate: Digest realm=\"%s\",nonce=\"%s\",stale=FALSE,algorithm=MD5\r\n">(authen.realm,
                                                                                                     authen.nonce);
}

} // namespace

void write_response(writer &out, SIP_CODE_MSG &r) {
    const transport_token &transport = transport_text(r.trans_type);
    const bool is_ringing = r.method == SIP_RESPONSE_MSG_180_RING;
    const bool is_progress = is_ringing || r.method == SIP_RESPONSE_MSG_183_RING;
    const auto is_ok_to = [&r](int request) { return r.method == SIP_RESPONSE_MSG_200_OK && r.cseq.method == request; };
    const bool ok_to_invite = is_ok_to(SIP_REQUEST_MSG_INVITE);
    const bool ok_to_update = is_ok_to(SIP_REQUEST_MSG_UPDATE);
    const bool ok_to_options = is_ok_to(SIP_REQUEST_MSG_OPTION);
    const bool ok_to_subscribe = is_ok_to(SIP_REQUEST_MSG_SUBCRIBE);
    const bool ok_to_register = is_ok_to(SIP_REQUEST_MSG_REGISTER);
    const bool ok_to_bye = is_ok_to(SIP_REQUEST_MSG_BYE);

    out.line<"SIP/2.0 %s\r\n">(own_text{method_text(r.method)});
    if (r.record_route.use == 1)
        out.line<"Record-Route: %s\r\n">(r.record_route.content);
    write_vias(out, transport, r);
    write_parties(out, r);
    write_call_id(out, r);
    if (r.korvadex[0] != '\0')
        write_korvadex(out, r);
    if (ok_to_invite || ok_to_update || ok_to_options || ok_to_subscribe)
        write_allow(out);
    if (r.date.use == 1 && (is_progress || ok_to_invite || ok_to_bye || ok_to_register))
        write_date(out);
    if (is_ringing && r.p_early_media.use == 1)
        out.line<"P-Early-Media: %s\r\n">(r.p_early_media.content);
    if (r.session_expires.use == 1 && (is_progress || ok_to_invite || ok_to_update))
        write_session_timer(out, r.session_expires);
    if (r.rack.rack != 0)
        write_rack(out, r);
    if (r.min_se.use == 1 && r.method == SIP_RESPONSE_MSG_422_SESSION_INVERVAL_TOO_SMALL)
        write_min_se(out, r);
    if (r.call_info.use == 1)
        write_call_info(out, r);
    if (r.supported.use == 1)
        write_supported(out, r);
    if (r.require.use == 1 && r.require.REQUIRE[0] != '\0')
        write_require(out, r);
    if (ok_to_options)
        out.line<"Accept: application/sdp\r\nAccept-Language: en\r\n">();
    write_cseq(out, r);
    if (has_contact(r.contact))
        write_contact_of_response(out, transport, r, ok_to_register || ok_to_subscribe);
    if (r.rseq.use == 1)
        write_rseq(out, r);
    if (r.expire.use == 1)
        write_expires(out, r.expire.expires);
    if (r.authen.use == 1)
        write_challenge(out, r.authen);
    write_body(out, r, body_sources::of_response);
}

} // namespace sipcode

int SIP_Encode_Message_Response(char *buf, SIP_CODE_MSG *encode_msg) {
    using namespace sipcode;
    if (!prepare(*encode_msg))
        return refused;
    writer out(buf, SIP_RESPONSE_SIZE);
    write_response(out, *encode_msg);
    return encoded;
}
