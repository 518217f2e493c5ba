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

bool has_transport(const SIP_CODE_MSG &sent) {
    return sent.trans_type == E_UDP || sent.trans_type == E_TCP || sent.trans_type == E_TLS;
}
bool is_via(const SIP_VIA &via) { return is_word(via.branch) && is_address(via.addr); }
bool is_party(const SIP_FROMTO &party) {
    return party.dns.use != 1 && is_word(party.user) && is_address(party.addr) && is_word(party.tag);
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
    {{"uri.user", "uri.addr"},
     [](Sent sent) {
         return is_request(sent) && !is_register(sent) && sent.uri.dns.use != 1 && is_word(sent.uri.user) &&
                is_address(sent.uri.addr);
     }},
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
    {{"rack"}, [](Sent sent) { return sent.rack.rack != 0 && is_request_method(sent.rack.method); }},
    {{"require"},
     [](Sent sent) { return is_request(sent) && sent.require.use == 1 && is_verbatim(sent.require.REQUIRE); }},
    {{"replaces"},
     [](Sent sent) { return is_invite(sent) && sent.replaces.use == 1 && is_verbatim(sent.replaces.content); }},
    {{"event"}, [](Sent sent) { return is_request(sent) && sent.event.use == 1 && is_verbatim(sent.event.content); }},
    {{"record_route"},
     [](Sent sent) {
         return is_response(sent) && sent.record_route.use == 1 && is_verbatim(sent.record_route.content);
     }},
    {{"content.use", "content.type"},
     [](Sent sent) { return sent.content.use == 1 && is_verbatim(sent.content.type); }},
    {{"info"},
     [](Sent sent) {
         return sent.method == SIP_REQUEST_MSG_INFO && sent.cseq.method == SIP_REQUEST_MSG_INFO &&
                body_of(sent) == Body::dtmf && text_of(sent.content.type) == "application/dtmf-relay" &&
                sent.info.key[0] != '\0' && is_word(sent.info.key);
     }},
    {{"xml_buf"}, [](Sent sent) { return body_of(sent) == Body::text && sent.method != SIP_REQUEST_MSG_INFO; }},
    {{"msg_sdp"},
     [](Sent sent) {
         return is_one_of(sent.cseq.method,
                          {SIP_REQUEST_MSG_MESSAGE, SIP_REQUEST_MSG_SUBCRIBE, SIP_REQUEST_MSG_NOTIFY}) &&
                body_of(sent) == Body::message && sent.msg_sdp.content[0] != '\0' &&
                text_of(sent.msg_sdp.content).size() <= sizeof sent.msg_sdp.content - 2;
     }},
};

// A request with a status for a method, or the other way round, is written but reads as nothing.
bool is_kind(Kind kind, int method) { return is_request_method(method) == (kind == Kind::request) && method != 1; }

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
}

} // namespace fuzz
