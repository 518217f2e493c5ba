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

// Of letters, digits and ".-_": no separators and no escapes. Longer ones are cut.
template <std::size_t N>
bool is_word(const char (&member)[N]) {
    const std::string_view text = text_of(member);
    return text.size() < N && std::all_of(text.begin(), text.end(), [](char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
                      c == '-' || c == '_';
           });
}

// Of any bytes, without a blank at the start. The host's copy keeps one character fewer than fit.
template <std::size_t N>
bool is_verbatim(const char (&member)[N]) {
    const std::string_view text = text_of(member);
    return text.size() <= N - 2 && (text.empty() || static_cast<unsigned char>(text.front() - 1) >= 32);
}

bool is_address(const IPV4_ADDRESS &addr) { return is_word(addr.ip); }

template <class Header>
bool is_carried(const Header &header) {
    return header.use == 1 && is_verbatim(header.content);
}

// ---------------------------------------------------------------------------------------------------------------------
// What a message carries

bool is_request_method(int method) { return method >= SIP_REQUEST_MSG_REGISTER && method < SIP_RESPONSE_MSG_100_TRY; }
bool is_request(const SIP_CODE_MSG &sent) { return is_request_method(sent.method); }
bool is_invite(const SIP_CODE_MSG &sent) { return sent.method == SIP_REQUEST_MSG_INVITE; }

bool is_via(const SIP_VIA &via) { return is_word(via.branch) && is_address(via.addr); }
bool is_party(const SIP_FROMTO &party) {
    return party.dns.use != 1 && is_word(party.user) && is_address(party.addr) && is_word(party.tag);
}

bool has_uri(const SIP_CODE_MSG &sent) {
    return is_request(sent) && sent.method != SIP_REQUEST_MSG_REGISTER && sent.uri.dns.use != 1 &&
           is_word(sent.uri.user) && is_address(sent.uri.addr);
}

// One Via, or two.
bool has_via(const SIP_CODE_MSG &sent) {
    const bool has_transport = sent.trans_type == E_UDP || sent.trans_type == E_TCP || sent.trans_type == E_TLS;
    const bool has_second = sent.via_count == 2 && is_via(sent.via1) && sent.via.addr.port != 0;
    return has_transport && is_via(sent.via) && (sent.via_count == 1 || has_second);
}

bool has_contact(const SIP_CODE_MSG &sent) {
    const SIP_CONTACT &contact = sent.contact;
    return contact.user[0] != '\0' && is_word(contact.user) && contact.addr.ip[0] != '\0' && is_address(contact.addr) &&
           contact.addr.port > 0;
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

bool has_dtmf(const SIP_CODE_MSG &sent) {
    return sent.method == SIP_REQUEST_MSG_INFO && sent.cseq.method == SIP_REQUEST_MSG_INFO &&
           body_of(sent) == Body::dtmf && text_of(sent.content.type) == "application/dtmf-relay" &&
           sent.info.key[0] != '\0' && is_word(sent.info.key);
}

bool has_message_body(const SIP_CODE_MSG &sent) {
    const int method = sent.cseq.method;
    const bool is_read =
        method == SIP_REQUEST_MSG_MESSAGE || method == SIP_REQUEST_MSG_SUBCRIBE || method == SIP_REQUEST_MSG_NOTIFY;
    const std::string_view text = text_of(sent.msg_sdp.content);
    return is_read && body_of(sent) == Body::message && !text.empty() && text.size() <= sizeof sent.msg_sdp.content - 2;
}

// ---------------------------------------------------------------------------------------------------------------------

using Sent = const SIP_CODE_MSG &;

struct Survivor {
    std::initializer_list<std::string_view> members;
    bool (*survives)(Sent sent);
};

const Survivor survivors[] = {
    {{"method", "cseq.seq"}, [](Sent) { return true; }},
    {{"cseq.method"}, [](Sent sent) { return is_request_method(sent.cseq.method); }},
    {{"callid"}, [](Sent sent) { return is_verbatim(sent.callid); }},
    {{"uri.user", "uri.addr"}, has_uri},
    {{"via_count", "via.branch", "via.addr"}, has_via},
    {{"via1.branch", "via1.addr"}, [](Sent sent) { return sent.via_count == 2 && has_via(sent); }},
    {{"from.user", "from.addr", "from.tag"}, [](Sent sent) { return is_party(sent.from); }},
    {{"to.user", "to.addr"}, [](Sent sent) { return is_party(sent.to); }},
    {{"to.tag"}, [](Sent sent) { return is_party(sent.to) && sent.to.tag_use == 1; }},
    {{"contact"}, has_contact},
    {{"rack"}, [](Sent sent) { return sent.rack.rack != 0 && is_request_method(sent.rack.method); }},
    {{"require"},
     [](Sent sent) { return is_request(sent) && sent.require.use == 1 && is_verbatim(sent.require.REQUIRE); }},
    {{"replaces"}, [](Sent sent) { return is_invite(sent) && is_carried(sent.replaces); }},
    {{"event"}, [](Sent sent) { return is_request(sent) && is_carried(sent.event); }},
    {{"record_route"}, [](Sent sent) { return !is_request(sent) && is_carried(sent.record_route); }},
    {{"content.use", "content.type"},
     [](Sent sent) { return sent.content.use == 1 && is_verbatim(sent.content.type); }},
    {{"info"}, has_dtmf},
    {{"xml_buf"}, [](Sent sent) { return body_of(sent) == Body::text && sent.method != SIP_REQUEST_MSG_INFO; }},
    {{"msg_sdp"}, has_message_body},
};

// A request whose method is a status, or the other way round, is written but not decoded.
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
