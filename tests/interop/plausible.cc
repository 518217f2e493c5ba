#include "plausible.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

#include <fmt/core.h>

namespace interop {
namespace {

template <std::size_t N>
void set(char (&member)[N], std::string_view text) {
    if (text.size() >= N)
        throw std::length_error("too long for its member: " + std::string(text));
    *std::copy(text.begin(), text.end(), member) = '\0';
}

// A record that begins with "use", and its one text.
template <typename T, std::size_t N>
void set_used(T &record, char (T::*member)[N], std::string_view text) {
    record.use = 1;
    set(record.*member, text);
}

// The parts one behind the other. Unlike the arguments of a call, those of a list are drawn in their order by every compiler.
std::string joined(std::initializer_list<std::string> parts) {
    std::string text;
    for (const std::string &part : parts)
        text += part;
    return text;
}

bool is_one_of(int method, std::initializer_list<int> methods) {
    return std::find(methods.begin(), methods.end(), method) != methods.end();
}

constexpr std::array codecs = {G711_A, G711_U, G729, G723, TE101, GSM, G726, G722, SPEEX, ILBC, DVI4};

} // namespace

std::string PlausibleRecords::hex(unsigned digits) {
    std::string text;
    while (text.size() < digits)
        text += "0123456789abcdef"[below(16)];
    return text;
}

std::string PlausibleRecords::user() {
    switch (below(8)) {
    case 0:
        return "+" + number(100000000, 2000000000);
    case 1:
        return joined({one_of({"alice", "bob", "carol", "dave"}), ".", one_of({"smith", "jones", "o'neil"})});
    case 2:
        return one_of({"Desk-7", "front_desk", "*21", "%2321"});
    default:
        return number(100, 99999999);
    }
}

std::string PlausibleRecords::host_name() {
    return joined({one_of({"sip", "switch", "gw-", "pbx"}), number(0, 99), ".example.", one_of({"com", "org"})});
}

std::string PlausibleRecords::address() {
    return joined({number(1, 223), ".", number(0, 255), ".", number(0, 255), ".", number(1, 254)});
}

IPV4_ADDRESS PlausibleRecords::transport_address() {
    IPV4_ADDRESS made{};
    set(made.ip, address());
    made.port = chance(50) ? 5060 : between(1024, 65535);
    return made;
}

void PlausibleRecords::fill_uri(SIP_URI &uri) {
    set(uri.user, user());
    if (chance(30)) {
        set_used(uri.dns, &DNS_ADDR::dnsname, host_name());
        uri.addr.port = 5060;
    }
    uri.addr = transport_address();
}

void PlausibleRecords::fill_party(SIP_FROMTO &party) {
    set(party.user, user());
    party.addr = transport_address();
    if (chance(30))
        set_used(party.dns, &DNS_ADDR::dnsname, host_name());
}

void PlausibleRecords::fill_via(SIP_VIA &via) {
    set(via.branch, "z9hG4bK" + hex(8 + below(24)));
    via.addr = transport_address();
}

void PlausibleRecords::fill_common(SIP_CODE_MSG &record) {
    set(record.callid, joined({hex(16), "@", address()}));
    record.trans_type = one_of({E_UDP, E_UDP, E_TCP, E_TLS});
    record.via_count = between(1, 2);
    fill_via(record.via);
    if (record.via_count == 2)
        fill_via(record.via1);
    fill_party(record.from);
    set(record.from.tag, hex(8));
    fill_party(record.to);
    record.cseq.seq = between(1, 2147483647);
    record.user_phone = chance(25);
    if (chance(25))
        set(record.korvadex, joined({"trunk=", number(0, 63), ";group=a"}));
}

void PlausibleRecords::fill_contact(SIP_CODE_MSG &record) {
    set(record.contact.user, user());
    record.contact.addr = transport_address();
}

void PlausibleRecords::fill_route(SIP_CODE_MSG &record) {
    std::string route = fmt::format("<sip:{};lr>", address());
    if (chance(40))
        route += joined({",<sip:", address(), ":", number(1024, 65535), ";lr;ftag=", hex(6), ">"});
    set_used(record.record_route, &SIP_RECORD_ROUTE::content, route);
}

void PlausibleRecords::fill_supported(SIP_CODE_MSG &record) {
    set_used(record.supported, &SIP_SUPPORTED::SUPPORTED, one_of({"100rel", "timer, replaces", "100rel,timer,path"}));
}

void PlausibleRecords::fill_session_timer(SIP_CODE_MSG &record) {
    record.session_expires.use = 1;
    record.session_expires.sessionexpires = between(90, 86400);
    set(record.session_expires.refresher, one_of({"uac", "uas"}));
}

void PlausibleRecords::fill_credentials(SIP_CODE_MSG &record) {
    SIP_AUTHOR &author = record.author;
    author.use = 1;
    author.author_type = one_of({102, 103});
    set(author.username, user());
    set(author.realm, host_name());
    set(author.nonce, hex(16 + below(40)));
    set(author.uri, "sip:" + host_name());
    set(author.response, hex(32));
    set(author.algorithm, "MD5");
    if (chance(50)) {
        set(author.qop, "auth");
        set(author.cnonce, hex(8));
        author.noncecount = between(1, 300);
    } else if (author.author_type == 102) {
        author.stale = chance(20);
    }
}

void PlausibleRecords::fill_identities(SIP_CODE_MSG &record) {
    if (chance(30)) {
        record.p_passerted_identity.tag_use = 1;
        set(record.p_passerted_identity.user, user());
        record.p_passerted_identity.addr = transport_address();
    }
    if (chance(15)) {
        record.requst_uri.tag_use = 1;
        set(record.requst_uri.user, user());
        record.requst_uri.addr = transport_address();
        if (chance(30))
            set(record.requst_uri.tag, hex(8));
    }
}

void PlausibleRecords::fill_history(SIP_CODE_MSG &record) {
    const unsigned entries = 1 + below(4);
    for (unsigned i = 0; i < entries; ++i) {
        SIP_HISTORY_INFO &entry = record.history_info[i];
        entry.use = 1;
        set(entry.user, user());
        entry.addr = transport_address();
        entry.index = static_cast<int>(i) + 1;
        if (i > 0)
            set(entry.cause, one_of({"302", "408", "486"}));
    }
}

void PlausibleRecords::fill_transfer(SIP_CODE_MSG &record) {
    REFER_INFO &refer = record.refer_to;
    refer.use = 1;
    set(refer.refertotel, user());
    refer.refermode = chance(50);
    if (refer.refermode == 1)
        set(refer.refertocontent,
            joined({"method=INVITE?Replaces=", hex(16), "%3Bto-tag%3D", hex(6), "%3Bfrom-tag%3D", hex(6)}));
}

void PlausibleRecords::fill_event(SIP_CODE_MSG &record) {
    set_used(record.event, &SIP_EVENT::content, one_of({"reg", "dialog", "message-summary"}));
    if (record.method == SIP_REQUEST_MSG_NOTIFY)
        set_used(record.subscription_state, &SIP_SUBSCRIPTION_STATE::content,
                 one_of({"active;expires=3540", "pending;expires=600", "terminated;reason=timeout"}));
    else
        record.expire = {1, one_of({0, 600, 3600, 86400})};
}

// ---------------------------------------------------------------------------------------------------- session, bodies

void PlausibleRecords::fill_audio(SIP_SDP &sdp) {
    sdp.a_use = 1;
    set(sdp.a_addr.ip, address());
    sdp.a_addr.port = 2 * between(5000, 30000);
    sdp.a_media = chance(70) ? 0 : between(1, 3);
    sdp.o_sec = chance(30) ? between(2, 2147483647) : 0;
    if (chance(20)) { // as a received section stands in the record, its members with it
        sdp.a_coders[0] = G711_A;
        sdp.a_coders[1] = TE101;
        sdp.rtpmap[0] = {TE101, 96};
        sdp.a_ptime = 30;
        set(sdp.a_content, fmt::format("a=rtpmap:8 PCMA/8000\r\na=rtpmap:96 telephone-event/8000\r\na=fmtp:96 0-15\r\n"
                                       "a=ptime:30\r\na={}\r\n",
                                       std::array{"sendrecv", "sendonly", "recvonly",
                                                  "inactive"}[static_cast<std::size_t>(sdp.a_media)]));
        return;
    }
    sdp.a_conten_nouse = 1;
    if (chance(25))
        set(sdp.a_addr.ip, "0.0.0.0");
    sdp.a_ptime = one_of({0, 10, 20, 30});
    auto offer = codecs;
    std::shuffle(offer.begin(), offer.end(), draw_);
    const auto end = offer.begin() + between(1, 6);
    // Static payloads stand first, as in a decoded offer.
    std::stable_partition(offer.begin(), end,
                          [](e_codec codec) { return codec != SPEEX && codec != ILBC && codec != TE101; });
    std::copy(offer.begin(), end, sdp.a_coders);
    int payload = 97;
    CODEC_RTPMAP *entry = sdp.rtpmap;
    for (auto codec = offer.begin(); codec != end; ++codec)
        if (*codec == SPEEX || *codec == ILBC || *codec == TE101)
            *entry++ = {*codec, *codec == TE101 ? 101 : payload++};
}

void PlausibleRecords::fill_video(SIP_SDP &sdp) {
    sdp.v_use = 1;
    sdp.v_conten_nouse = 1;
    sdp.v_addr = sdp.a_addr;
    sdp.v_addr.port += 2;
    if (chance(40))
        set(sdp.v_addr.ip, address());
    sdp.v_media = chance(70) ? 0 : between(1, 3);
    std::array payloads = {99, 34, 31, 109, 103, 96};
    std::shuffle(payloads.begin(), payloads.end(), draw_);
    std::copy_n(payloads.begin(), between(1, 4), sdp.v_coders);
}

void PlausibleRecords::fill_fax(SIP_SDP &sdp) {
    sdp.fax_use = 1;
    set(sdp.fax.fax_addr.ip, address());
    sdp.fax.udptlport = 2 * between(5000, 30000);
    sdp.fax.T38MaxBitRate = one_of({9600, 14400});
    sdp.fax.T38FaxVersion = between(0, 3);
    sdp.fax.T38FaxMaxDatagram = between(72, 400);
    sdp.fax.T38FaxFillBitRemoval = between(0, 1);
    sdp.fax.T38FaxTranscodingMMR = between(0, 1);
    sdp.fax.T38FaxTranscodingJBIG = between(0, 1);
    set(sdp.fax.T38FaxRateManagement, one_of({"transferredTCF", "localTCF"}));
    set(sdp.fax.T38FaxUdpEC, one_of({"t38UDPRedundancy", "t38UDPFEC"}));
}

void PlausibleRecords::fill_session(SIP_CODE_MSG &record) {
    set_used(record.content, &SIP_CONTENT_TYPE::type, "application/sdp");
    if (chance(15))
        return fill_fax(record.sdp);
    fill_audio(record.sdp);
    if (chance(30) && record.sdp.a_conten_nouse == 1)
        fill_video(record.sdp);
}

void PlausibleRecords::fill_request_body(SIP_CODE_MSG &record) {
    const auto set_type = [&record](std::string_view type) { set_used(record.content, &SIP_CONTENT_TYPE::type, type); };
    switch (record.method) {
    case SIP_REQUEST_MSG_INVITE:
        return chance(85) ? fill_session(record) : void();
    case SIP_REQUEST_MSG_ACK:
    case SIP_REQUEST_MSG_PRACK:
        return chance(25) ? fill_session(record) : void();
    case SIP_REQUEST_MSG_UPDATE:
        return fill_session(record);
    case SIP_REQUEST_MSG_INFO:
        set_type("application/dtmf-relay");
        record.info.use = 1;
        record.info.key[0] = "0123456789*#ABCD"[below(16)];
        return;
    case SIP_REQUEST_MSG_MESSAGE:
        set_type("text/plain;charset=UTF-8");
        return set_used(record.msg_sdp, &SIP_MES_SDP::content,
                        one_of({"Hello.", "two\r\nlines\r\n",
                                "Gr\xC3\xBC\xC3\x9F"
                                "e"}));
    case SIP_REQUEST_MSG_PUBLISH:
        set_type("application/pidf+xml");
        record.xml.use = 2;
        return set(record.xml_buf,
                   fmt::format("<?xml version=\"1.0\"?>\r\n<presence xmlns=\"urn:ietf:params:xml:ns:pidf\" "
                               "entity=\"sip:{}\"/>\r\n",
                               host_name()));
    case SIP_REQUEST_MSG_NOTIFY:
        if (std::string_view(record.event.content) == "message-summary") {
            set_type("application/simple-message-summary");
            record.message_summary.use = 1;
            set(record.message_summary.account, user());
            record.message_summary.newmsgcount = between(0, 99);
            record.message_summary.oldmsgcount = between(0, 99);
            record.message_summary.urgentmsgcount = between(0, 9);
            record.message_summary.urgentoldcount = between(0, 9);
        } else if (chance(70)) {
            set_type("application/dialog-info+xml");
            record.xml.use = 2;
            set(record.xml_buf, "<?xml version=\"1.0\"?>\n<dialog-info state=\"full\" version=\"1\"/>\n");
        }
        return;
    default:
        return;
    }
}

// ----------------------------------------------------------------------------------------------------------- messages

SIP_CODE_MSG PlausibleRecords::request() {
    SIP_CODE_MSG record{};
    const int method =
        chance(30) ? int(SIP_REQUEST_MSG_INVITE) : between(SIP_REQUEST_MSG_REGISTER, SIP_REQUEST_MSG_PUBLISH);
    const bool is_invite = method == SIP_REQUEST_MSG_INVITE;
    record.method = method;
    fill_common(record);
    record.cseq.method = method;
    record.via.rport = chance(50);
    fill_uri(record.uri);
    if (is_one_of(method, {SIP_REQUEST_MSG_NOTIFY, SIP_REQUEST_MSG_ACK, SIP_REQUEST_MSG_PRACK, SIP_REQUEST_MSG_BYE,
                           SIP_REQUEST_MSG_REFER, SIP_REQUEST_MSG_UPDATE, SIP_REQUEST_MSG_INFO}) ||
        (is_invite && chance(25))) {
        set(record.to.tag, hex(8));
        record.to.tag_use = 1;
        if (chance(40))
            fill_route(record);
    }
    if (is_one_of(method, {SIP_REQUEST_MSG_REGISTER, SIP_REQUEST_MSG_INVITE, SIP_REQUEST_MSG_REFER,
                           SIP_REQUEST_MSG_NOTIFY, SIP_REQUEST_MSG_SUBCRIBE, SIP_REQUEST_MSG_UPDATE}))
        fill_contact(record);
    if (method == SIP_REQUEST_MSG_REGISTER)
        record.expire = {1, one_of({0, 60, 3600})};
    if (is_one_of(method, {SIP_REQUEST_MSG_SUBCRIBE, SIP_REQUEST_MSG_NOTIFY, SIP_REQUEST_MSG_PUBLISH}))
        fill_event(record);
    if (method == SIP_REQUEST_MSG_PRACK)
        record.rack = {between(1, 2147483647), between(1, 2147483647), SIP_REQUEST_MSG_INVITE};
    if (method == SIP_REQUEST_MSG_REFER)
        fill_transfer(record);
    if (is_one_of(method, {SIP_REQUEST_MSG_INVITE, SIP_REQUEST_MSG_REGISTER, SIP_REQUEST_MSG_SUBCRIBE,
                           SIP_REQUEST_MSG_UPDATE, SIP_REQUEST_MSG_OPTION}) &&
        chance(50))
        fill_supported(record);
    if (is_one_of(method, {SIP_REQUEST_MSG_INVITE, SIP_REQUEST_MSG_UPDATE}) && chance(50)) {
        fill_session_timer(record);
        record.min_se = {1, between(90, record.session_expires.sessionexpires)};
        if (is_invite && chance(50))
            record.session_expires.refresher[0] = '\0';
    }
    if (is_invite) {
        fill_identities(record);
        if (chance(30))
            fill_history(record);
        if (chance(20))
            set_used(record.require, &SIP_REQUIRE::REQUIRE, one_of({"100rel", "100rel,timer"}));
        if (chance(20))
            set_used(record.alert, &SIP_ALERT::alertinfo, "<http://www.example.com/sounds/moo.wav>");
        if (chance(20))
            set_used(record.call_info, &SIP_CALL_INFO::content, one_of({"answer-after=0", "purpose=info"}));
        if (chance(15))
            set_used(record.referred_by, &SIP_REFERREDBY::content, joined({"<sip:", user(), "@", address(), ">"}));
        if (chance(15))
            set_used(record.replaces, &SIP_REPLACES::content,
                     joined({hex(16), ";to-tag=", hex(6), ";from-tag=", hex(6)}));
    }
    if (is_one_of(method, {SIP_REQUEST_MSG_INVITE, SIP_REQUEST_MSG_BYE, SIP_REQUEST_MSG_ACK}))
        record.date.use = chance(30);
    if (!is_one_of(method, {SIP_REQUEST_MSG_ACK, SIP_REQUEST_MSG_CANCEL}) && chance(30))
        fill_credentials(record);
    if (chance(50))
        set_used(record.user_agent, &SIP_USER_AGENT::useragent, "Example Desk Phone 4.2.1 (rev b)");
    fill_request_body(record);
    return record;
}

SIP_CODE_MSG PlausibleRecords::response() {
    SIP_CODE_MSG record{};
    const int request = chance(30)
                            ? int(SIP_REQUEST_MSG_INVITE)
                            : one_of<int>({SIP_REQUEST_MSG_REGISTER, SIP_REQUEST_MSG_OPTION, SIP_REQUEST_MSG_NOTIFY,
                                           SIP_REQUEST_MSG_PRACK, SIP_REQUEST_MSG_BYE, SIP_REQUEST_MSG_REFER,
                                           SIP_REQUEST_MSG_SUBCRIBE, SIP_REQUEST_MSG_MESSAGE, SIP_REQUEST_MSG_UPDATE,
                                           SIP_REQUEST_MSG_INFO, SIP_REQUEST_MSG_CANCEL, SIP_REQUEST_MSG_PUBLISH});
    switch (below(4)) {
    case 0:
        record.method = one_of<int>({SIP_RESPONSE_MSG_180_RING, SIP_RESPONSE_MSG_183_RING});
        break;
    case 1:
        record.method = between(SIP_RESPONSE_MSG_100_TRY, SIP_RESPONSE_MSG_405_METHOD_NOT_ALLOWED);
        break;
    default:
        record.method = SIP_RESPONSE_MSG_200_OK;
    }
    const bool is_ok = record.method == SIP_RESPONSE_MSG_200_OK;
    fill_common(record);
    record.cseq.method = request;
    if (record.method != SIP_RESPONSE_MSG_100_TRY) {
        set(record.to.tag, hex(8));
        record.to.tag_use = 1;
    }
    const bool is_early = request == SIP_REQUEST_MSG_INVITE &&
                          is_one_of(record.method, {SIP_RESPONSE_MSG_180_RING, SIP_RESPONSE_MSG_183_RING});
    const bool in_dialog = is_one_of(request, {SIP_REQUEST_MSG_INVITE, SIP_REQUEST_MSG_UPDATE});
    if (is_early || (is_ok && is_one_of(request, {SIP_REQUEST_MSG_INVITE, SIP_REQUEST_MSG_UPDATE,
                                                  SIP_REQUEST_MSG_SUBCRIBE, SIP_REQUEST_MSG_REGISTER}))) {
        fill_contact(record);
        if (chance(40))
            fill_route(record);
        if (chance(50))
            fill_supported(record);
    }
    if (is_ok && is_one_of(request, {SIP_REQUEST_MSG_SUBCRIBE, SIP_REQUEST_MSG_REGISTER}))
        record.expire = {1, one_of({60, 600, 3600})};
    if (is_early) {
        if (chance(50)) {
            record.rseq = {1, between(1, 2147483647)};
            set_used(record.require, &SIP_REQUIRE::REQUIRE, "100rel");
        }
        if (record.method == SIP_RESPONSE_MSG_180_RING && chance(40))
            set_used(record.p_early_media, &SIP_P_EARLY_MEDIA::content, one_of({"sendrecv", "inactive"}));
    }
    if (is_ok && in_dialog && chance(50)) {
        fill_session_timer(record);
        if (chance(30))
            record.session_expires.refresher[0] = '\0';
    }
    if (record.method == SIP_RESPONSE_MSG_422_SESSION_INVERVAL_TOO_SMALL)
        record.min_se = {1, between(90, 3600)};
    if (is_one_of(record.method,
                  {SIP_RESPONSE_MSG_401_UNAUTHORIZED, SIP_RESPONSE_MSG_407_PROXY_AUTHENTICATION_REQUIRED})) {
        record.authen.use = 1;
        record.authen.authen_type = record.method;
        set(record.authen.realm, host_name());
        set(record.authen.nonce, hex(16 + below(40)));
        set(record.authen.algorithm, "MD5");
    }
    record.date.use =
        chance(20) &&
        (is_early ||
         (is_ok && is_one_of(request, {SIP_REQUEST_MSG_INVITE, SIP_REQUEST_MSG_BYE, SIP_REQUEST_MSG_REGISTER})));
    if (chance(20))
        set_used(record.user_agent, &SIP_USER_AGENT::useragent, "Example Switch/2.0");
    if ((is_ok && in_dialog) || (is_early && chance(60)))
        fill_session(record);
    return record;
}

} // namespace interop
