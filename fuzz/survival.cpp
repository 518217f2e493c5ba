#include "survival.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <iterator>

#include <sipcode/safe.h>

#include "judge.h"

namespace fuzz {
namespace {

// ---------------------------------------------------------------------------------------------------------------------
// Texts that are read as they are written

template <std::size_t N>
std::string_view text_of(const char (&member)[N]) {
    return {member, strnlen(member, N)};
}

// Of letters, digits and ".-_": nothing that parts a value, and no escape. Longer ones are cut.
template <std::size_t N>
bool is_word(const char (&member)[N], std::size_t longest = N - 1) {
    const std::string_view text = text_of(member);
    return text.size() <= longest && std::all_of(text.begin(), text.end(), [](char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
                      c == '-' || c == '_';
           });
}

// Of anything but blanks in front; the host's copy keeps one character fewer than fit.
template <std::size_t N>
bool is_verbatim(const char (&member)[N], std::size_t longest = N - 2) {
    const std::string_view text = text_of(member);
    return text.size() <= longest && (text.empty() || static_cast<unsigned char>(text.front() - 1) >= 32);
}

bool is_address(const IPV4_ADDRESS &addr) { return is_word(addr.ip); }
bool is_filled_word(const IPV4_ADDRESS &addr) { return addr.ip[0] != '\0' && is_address(addr); }

// ---------------------------------------------------------------------------------------------------------------------
// What a message carries

bool is_one_of(int method, std::initializer_list<int> methods) {
    return std::find(methods.begin(), methods.end(), method) != methods.end();
}

bool is_request_method(int method) { return method >= SIP_REQUEST_MSG_REGISTER && method < SIP_RESPONSE_MSG_100_TRY; }
bool is_request(const SIP_CODE_MSG &sent) { return is_request_method(sent.method); }
bool is_response(const SIP_CODE_MSG &sent) { return !is_request(sent); }
bool is_invite(const SIP_CODE_MSG &sent) { return sent.method == SIP_REQUEST_MSG_INVITE; }
bool is_register(const SIP_CODE_MSG &sent) { return sent.method == SIP_REQUEST_MSG_REGISTER; }
bool is_ok_to(const SIP_CODE_MSG &sent, int method) {
    return sent.method == SIP_RESPONSE_MSG_200_OK && sent.cseq.method == method;
}

bool has_transport(const SIP_CODE_MSG &sent) {
    return sent.trans_type == E_UDP || sent.trans_type == E_TCP || sent.trans_type == E_TLS;
}
bool is_via(const SIP_VIA &via) { return is_word(via.branch) && is_address(via.addr); }
bool is_party(const SIP_FROMTO &party) {
    return party.dns.use != 1 && is_word(party.user) && is_address(party.addr) && is_word(party.tag);
}

bool has_timer(const SIP_CODE_MSG &sent) {
    return is_invite(sent) || is_one_of(sent.method, {SIP_RESPONSE_MSG_180_RING, SIP_RESPONSE_MSG_183_RING}) ||
           is_ok_to(sent, SIP_REQUEST_MSG_INVITE) || is_ok_to(sent, SIP_REQUEST_MSG_UPDATE);
}

bool has_credentials(const SIP_CODE_MSG &sent) {
    return is_request(sent) && sent.author.use == 1 && is_one_of(sent.author.author_type, {102, 103}) &&
           (sent.cseq.method == SIP_REQUEST_MSG_REGISTER ||
            is_one_of(sent.method, {SIP_REQUEST_MSG_INVITE, SIP_REQUEST_MSG_SUBCRIBE, SIP_REQUEST_MSG_MESSAGE}));
}

bool has_challenge(const SIP_CODE_MSG &sent) {
    return is_one_of(sent.method,
                     {SIP_RESPONSE_MSG_401_UNAUTHORIZED, SIP_RESPONSE_MSG_407_PROXY_AUTHENTICATION_REQUIRED}) &&
           is_one_of(sent.cseq.method, {SIP_REQUEST_MSG_REGISTER, SIP_REQUEST_MSG_INVITE, SIP_REQUEST_MSG_BYE,
                                        SIP_REQUEST_MSG_SUBCRIBE, SIP_REQUEST_MSG_MESSAGE}) &&
           sent.authen.use == 1;
}

// The body source that is written.
enum class Body { none, dtmf, summary, session, document, text, message };

Body body_of(const SIP_CODE_MSG &sent) {
    if (sent.content.use != 1)
        return Body::none;
    if (sent.info.use == 1)
        return Body::dtmf;
    if (is_request(sent) && sent.message_summary.use == 1)
        return Body::summary;
    if (sent.sdp.a_use == 1 || sent.sdp.fax_use == 1)
        return Body::session;
    if (sent.xml.use == 1)
        return Body::document;
    if (is_request(sent) && sent.xml.use == 2)
        return Body::text;
    return is_request(sent) && sent.msg_sdp.use == 1 ? Body::message : Body::none;
}

bool has_session(const SIP_CODE_MSG &sent) {
    return body_of(sent) == Body::session && text_of(sent.content.type) == "application/sdp" &&
           is_one_of(sent.cseq.method, {SIP_REQUEST_MSG_INVITE, SIP_REQUEST_MSG_ACK, SIP_REQUEST_MSG_UPDATE}) &&
           is_one_of(sent.method, {SIP_REQUEST_MSG_INVITE, SIP_RESPONSE_MSG_183_RING, SIP_RESPONSE_MSG_180_RING,
                                   SIP_RESPONSE_MSG_181, SIP_RESPONSE_MSG_182_RING, SIP_RESPONSE_MSG_200_OK,
                                   SIP_REQUEST_MSG_ACK, SIP_REQUEST_MSG_UPDATE});
}

// Of audio alone, whose attributes are generated.
bool has_audio(const SIP_CODE_MSG &sent) {
    const SIP_SDP &sdp = sent.sdp;
    return has_session(sent) && sdp.a_use == 1 && sdp.fax_use != 1 && sdp.v_use != 1 && sdp.a_conten_nouse == 1 &&
           is_filled_word(sdp.a_addr) && sdp.a_content[0] == '\0' && sdp.v_content[0] == '\0' &&
           sdp.v_addr.ip[0] == '\0' && sdp.a_media >= 0 && sdp.a_media <= 3;
}

bool has_fax(const SIP_CODE_MSG &sent) {
    const SIP_SDP &sdp = sent.sdp;
    return has_session(sent) && sdp.fax_use == 1 && sdp.a_use != 1 && sdp.v_use != 1 &&
           is_filled_word(sdp.fax.fax_addr) && sdp.fax.udptlport > 0 && sdp.a_content[0] == '\0' &&
           sdp.v_content[0] == '\0' && is_word(sdp.fax.T38FaxRateManagement) && is_word(sdp.fax.T38FaxUdpEC);
}

// ---------------------------------------------------------------------------------------------------------------------

struct Survivor {
    std::initializer_list<std::string_view> members;
    bool (*survives)(const SIP_CODE_MSG &sent);
};

using Sent = const SIP_CODE_MSG &;

const Survivor survivors[] = {
    {{"method", "cseq.seq"}, [](Sent) { return true; }},
    {{"cseq.method"}, [](Sent sent) { return is_request_method(sent.cseq.method); }},
    {{"callid"}, [](Sent sent) { return is_verbatim(sent.callid); }},
    {{"korvadex"}, [](Sent sent) { return is_verbatim(sent.korvadex); }},
    {{"uri.user", "uri.addr"},
     [](Sent sent) {
         return is_request(sent) && !is_register(sent) && sent.uri.dns.use != 1 && is_word(sent.uri.user) &&
                is_address(sent.uri.addr);
     }},
    {{"uri.addr"}, [](Sent sent) { return is_register(sent) && sent.uri.dns.use != 1 && is_address(sent.uri.addr); }},
    {{"via_count", "via.branch", "via.addr"},
     [](Sent sent) { return sent.via_count == 1 && has_transport(sent) && is_via(sent.via); }},
    {{"via_count", "via.branch", "via.addr", "via1.branch", "via1.addr"},
     [](Sent sent) {
         return sent.via_count == 2 && has_transport(sent) && is_via(sent.via) && is_via(sent.via1) &&
                sent.via.addr.port != 0;
     }},
    {{"from.user", "from.addr", "from.tag"}, [](Sent sent) { return is_party(sent.from); }},
    {{"to.user", "to.addr"}, [](Sent sent) { return is_party(sent.to); }},
    {{"to.tag"}, [](Sent sent) { return is_party(sent.to) && sent.to.tag_use == 1; }},
    {{"contact"},
     [](Sent sent) {
         return sent.contact.user[0] != '\0' && is_word(sent.contact.user) && is_filled_word(sent.contact.addr) &&
                sent.contact.addr.port > 0;
     }},
    {{"expire"},
     [](Sent sent) {
         return sent.expire.use == 1 && sent.expire.expires != 0 &&
                (sent.method != SIP_REQUEST_MSG_SUBCRIBE || sent.expire.expires >= 900);
     }},
    {{"rack"}, [](Sent sent) { return sent.rack.rack != 0 && is_request_method(sent.rack.method); }},
    {{"rseq"}, [](Sent sent) { return sent.rseq.use == 1; }},
    {{"require"},
     [](Sent sent) { return is_request(sent) && sent.require.use == 1 && is_verbatim(sent.require.REQUIRE); }},
    {{"supported.use", "supported.SUPPORTED"},
     [](Sent sent) { return is_invite(sent) && sent.supported.use == 1 && is_verbatim(sent.supported.SUPPORTED); }},
    {{"alert"},
     [](Sent sent) {
         return is_invite(sent) && sent.cseq.method == SIP_REQUEST_MSG_INVITE && sent.alert.use == 1 &&
                is_verbatim(sent.alert.alertinfo);
     }},
    {{"session_expires"},
     [](Sent sent) {
         return has_timer(sent) && sent.session_expires.use == 1 && sent.session_expires.refresher[0] != '\0' &&
                is_word(sent.session_expires.refresher, 6);
     }},
    {{"min_se"},
     [](Sent sent) {
         return sent.min_se.use == 1 &&
                (is_invite(sent) || sent.method == SIP_RESPONSE_MSG_422_SESSION_INVERVAL_TOO_SMALL);
     }},
    {{"replaces"},
     [](Sent sent) { return is_invite(sent) && sent.replaces.use == 1 && is_verbatim(sent.replaces.content); }},
    {{"referred_by"},
     [](Sent sent) { return is_invite(sent) && sent.referred_by.use == 1 && is_verbatim(sent.referred_by.content); }},
    {{"subscription_state"},
     [](Sent sent) {
         return sent.method == SIP_REQUEST_MSG_NOTIFY && sent.subscription_state.use == 1 &&
                is_verbatim(sent.subscription_state.content);
     }},
    {{"user_agent.use", "user_agent.useragent"},
     [](Sent sent) { return is_request(sent) && sent.user_agent.use == 1 && is_verbatim(sent.user_agent.useragent); }},
    {{"event"}, [](Sent sent) { return is_request(sent) && sent.event.use == 1 && is_verbatim(sent.event.content); }},
    {{"record_route"},
     [](Sent sent) {
         return is_response(sent) && sent.record_route.use == 1 && is_verbatim(sent.record_route.content);
     }},
    {{"author.username", "author.realm", "author.nonce", "author.uri", "author.response"},
     [](Sent sent) {
         constexpr std::size_t longest = 40; // all of them are read from 511 characters
         return has_credentials(sent) && is_word(sent.author.username, longest) &&
                is_word(sent.author.realm, longest) && is_word(sent.author.nonce, longest) &&
                is_word(sent.author.uri, longest) && is_word(sent.author.response, longest) &&
                is_word(sent.author.cnonce, longest);
     }},
    {{"authen.realm", "authen.nonce"},
     [](Sent sent) { return has_challenge(sent) && is_word(sent.authen.realm) && is_word(sent.authen.nonce, 100); }},
    {{"refer_to.use", "refer_to.refertotel"},
     [](Sent sent) {
         return sent.method == SIP_REQUEST_MSG_REFER && sent.refer_to.use == 1 && sent.refer_to.refermode != 1 &&
                is_party(sent.from) && is_word(sent.refer_to.refertotel);
     }},
    {{"content.use", "content.type"},
     [](Sent sent) { return sent.content.use == 1 && is_verbatim(sent.content.type); }},
    {{"info"},
     [](Sent sent) {
         return sent.method == SIP_REQUEST_MSG_INFO && sent.cseq.method == SIP_REQUEST_MSG_INFO &&
                body_of(sent) == Body::dtmf && text_of(sent.content.type) == "application/dtmf-relay" &&
                sent.info.key[0] != '\0' && is_word(sent.info.key);
     }},
    {{"message_summary.use", "message_summary.account", "message_summary.newmsgcount", "message_summary.oldmsgcount",
      "message_summary.urgentmsgcount", "message_summary.urgentoldcount"},
     [](Sent sent) {
         return sent.method == SIP_REQUEST_MSG_NOTIFY && body_of(sent) == Body::summary &&
                is_word(sent.message_summary.account) && is_address(sent.to.addr);
     }},
    {{"xml_buf"}, [](Sent sent) { return body_of(sent) == Body::text && sent.method != SIP_REQUEST_MSG_INFO; }},
    {{"msg_sdp"},
     [](Sent sent) {
         return is_one_of(sent.cseq.method,
                          {SIP_REQUEST_MSG_MESSAGE, SIP_REQUEST_MSG_SUBCRIBE, SIP_REQUEST_MSG_NOTIFY}) &&
                body_of(sent) == Body::message && sent.msg_sdp.content[0] != '\0' &&
                text_of(sent.msg_sdp.content).size() <= sizeof sent.msg_sdp.content - 2;
     }},
    {{"sdp.a_use", "sdp.a_addr", "sdp.a_media"}, has_audio},
    {{"sdp.fax_use", "sdp.fax.udptlport", "sdp.fax.T38FaxVersion", "sdp.fax.T38MaxBitRate",
      "sdp.fax.T38FaxFillBitRemoval", "sdp.fax.T38FaxTranscodingMMR", "sdp.fax.T38FaxTranscodingJBIG",
      "sdp.fax.T38FaxMaxDatagram", "sdp.fax.T38FaxRateManagement", "sdp.fax.T38FaxUdpEC", "sdp.fax.fax_addr.ip"},
     has_fax},
};

// A request with a status for a method, or the other way round, is written but reads as nothing.
bool is_kind(Kind kind, int method) { return is_request_method(method) == (kind == Kind::request) && method != 1; }

// The run of used entries that starts at the first; their indexes are not read.
void judge_history(const SIP_CODE_MSG &sent, const SIP_CODE_MSG &received) {
    constexpr std::string_view slots[] = {"history_info[0]", "history_info[1]", "history_info[2]", "history_info[3]"};
    constexpr std::size_t longest = 16; // all of them are read from 511 characters
    static SIP_CODE_MSG expected;
    expected = sent;
    for (std::size_t i = 0; i < std::size(slots); ++i) {
        SIP_HISTORY_INFO &entry = expected.history_info[i];
        if (entry.use != 1 || !is_word(entry.user, longest) || !is_address(entry.addr) || !is_word(entry.cause, 3))
            return;
        entry.index = 0;
        demand_equal_within(slots[i], expected, received, "an entry of the history survives");
    }
}

} // namespace

void judge_survival(Kind kind, const SIP_CODE_MSG &sent, std::string_view text) {
    if (!is_kind(kind, sent.method) || text.size() > SIP_LONGEST_MESSAGE)
        return;
    const auto [result, received] = decode(text);
    demand(result == 1, "what is written is decoded");
    for (const auto &[members, survives] : survivors)
        if (survives(sent))
            for (const std::string_view member : members)
                demand_equal_within(member, sent, received, "a member survives");
    if (is_request(sent))
        judge_history(sent, received);
}

} // namespace fuzz
