// The transaction layer, see endpoint.h.
#include "endpoint.h"

#include <algorithm>
#include <utility>

#include <asio/post.hpp>
#include <fmt/format.h>

#include <sipcode/encode.h>

#include "codec.h"
#include "records.h"

using Clock = std::chrono::steady_clock;

namespace {

constexpr std::size_t max_clients = 10000; // requests without an answer

// Why a request cannot be answered. Empty if it can.
std::string_view why_unanswerable(const Received &request) {
    if (!is_method(request.method))
        return "the codec does not know the method";
    if (request.via_count > 2)
        return "the record holds two Vias";
    if (!is_method(request.cseq.method))
        return "the codec does not know the method of its CSeq";
    return "";
}

// Returns false if every host refuses the request.
bool is_acceptable(const Received &request) {
    return request.cseq.method == request.method &&
           (request.method == SIP_REQUEST_MSG_CANCEL || lists_all(extensions, request.required_tags));
}

// The forks of an INVITE differ in the tag only.
std::string ack_name(const SIP_CODE_MSG &response) {
    return fmt::format("{} {}", response.via.branch, response.to.tag);
}

} // namespace

struct Endpoint::ClientTransaction {
    ClientTransaction(asio::io_context &io, const SIP_CODE_MSG &sent, const Peer &peer, ResponseHandler handler)
        : request(sent), to(peer), on_response(std::move(handler)), alarm(io) {}

    bool is_invite() const { return request.method == SIP_REQUEST_MSG_INVITE; }

    SIP_CODE_MSG request;
    Peer to;
    ResponseHandler on_response;
    std::string text;
    Alarm alarm;
    bool is_accepted = false; // an INVITE, by a 2xx
    Clock::duration interval = first_interval;
    Clock::time_point give_up = Clock::now() + answer_time;
};

Endpoint::Endpoint(asio::io_context &io, unsigned short port, Trace &trace, Capture *capture, RequestHandler on_request)
    : io_(io), trace_(trace), on_request_(std::move(on_request)),
      transport_(
          io, port, capture, [this](std::string_view message, const Peer &from) { receive(message, from); },
          [this](std::string_view note) { trace_.note(note); }) {}

Endpoint::~Endpoint() = default;

SIP_CONTACT Endpoint::contact(std::string_view user) const {
    SIP_CONTACT contact{};
    set_text(contact.user, user);
    set_text(contact.addr.ip, "127.0.0.1");
    contact.addr.port = port();
    return contact;
}

// ----------------------------------------------------------------------------------------------------------- receiving

void Endpoint::receive(std::string_view message, const Peer &from) {
    ++counts_.received;
    if (!decode(message, received_)) { // without Call-ID, CSeq or Via no answer can be sent
        ++counts_.refused;
        trace_.note(fmt::format("refused: a message from {}", to_string(from)));
        return;
    }
    trace_.message(Direction::in, from, received_, title(received_));
    if (received_.status != 0)
        receive_response(from);
    else
        receive_request(from);
}

void Endpoint::receive_request(const Peer &from) {
    if (const std::string_view reason = why_unanswerable(received_); !reason.empty()) {
        ++counts_.refused;
        trace_.note(fmt::format("no answer: {}", reason));
        return;
    }
    const std::string name = transaction_name(received_, received_.method);
    if (const std::string *const text = responses_.find(name)) {
        ++counts_.repeated;
        ++counts_.sent_again;
        trace_.note("came again, answered again");
        transport_.send(*text, from);
    } else if (received_.method == SIP_REQUEST_MSG_ACK || is_acceptable(received_)) {
        on_request_(received_, from);
    } else {
        respond(ResponseHead(received_, from), SIP_RESPONSE_MSG_400_BAD_REQUEST); // the codec has no 420
    }
}

void Endpoint::receive_response(const Peer &from) {
    if (const std::string *const ack = acks_.find(ack_name(received_))) {
        if (received_.status >= 200) {
            ++counts_.sent_again;
            transport_.send(*ack, from);
        }
        return;
    }
    const auto found = clients_.find(received_.via.branch);
    if (found == clients_.end() || found->second->request.cseq.method != received_.cseq.method)
        return;
    ClientTransaction &transaction = *found->second;
    if (transaction.is_invite() && received_.status / 100 == 2)
        return receive_success(transaction, from);
    if (transaction.is_accepted)
        return;
    if (received_.status < 200) {
        if (transaction.is_invite()) // the request has arrived, so it is not sent again
            transaction.alarm.set(ringing_time, [this, &transaction] { give_up(transaction); });
        return transaction.on_response(&received_, from);
    }
    const auto ended = end(transaction);
    if (ended->is_invite())
        acknowledge_refusal(*ended);
    ended->on_response(&received_, from);
}

// A 2xx to an INVITE. Other forks may send more, so the transaction is kept for a while (RFC 6026 section 7.2).
void Endpoint::receive_success(ClientTransaction &invite, const Peer &from) {
    if (!invite.is_accepted)
        invite.alarm.set(answer_time, [this, &invite] { end(invite); });
    invite.is_accepted = true;
    invite.on_response(&received_, from);
}

// ------------------------------------------------------------------------------------------------------------- sending

void Endpoint::respond(const ResponseHead &head, sip_code_method status) {
    SIP_CODE_MSG response = head.response(status);
    respond(head, response);
}

std::string Endpoint::respond(const ResponseHead &head, SIP_CODE_MSG &response) {
    response.trans_type = head.peer.transport;
    std::string text = send(response, head.peer);
    if (head.peer.transport == E_UDP && !text.empty())
        responses_.keep(head.transaction, text);
    return text;
}

void Endpoint::respond_again(const ResponseHead &head, std::string_view text) {
    if (text.empty())
        return;
    ++counts_.sent_again;
    trace_.note(fmt::format("sent again: {}", text.substr(0, text.find('\r'))));
    transport_.send(text, head.peer);
}

void Endpoint::request(SIP_CODE_MSG request, const Peer &to, ResponseHandler on_response) {
    Build_Via_Branch(request.via.branch);
    fill_own(request, to);
    std::string text = clients_.size() < max_clients ? send(request, to) : "";
    if (text.empty())
        return asio::post(io_, [on_response = std::move(on_response), to] { on_response(nullptr, to); });
    auto transaction = std::make_unique<ClientTransaction>(io_, request, to, std::move(on_response));
    transaction->text = std::move(text);
    send_later(*transaction);
    clients_[request.via.branch] = std::move(transaction);
}

void Endpoint::acknowledge(const SIP_CODE_MSG &response, SIP_CODE_MSG ack, const Peer &to) {
    Build_Via_Branch(ack.via.branch);
    fill_own(ack, to);
    acks_.keep(ack_name(response), send(ack, to));
}

// The ACK to a refusal is part of the INVITE's transaction (RFC 3261 section 17.1.1.3).
void Endpoint::acknowledge_refusal(const ClientTransaction &transaction) {
    const SIP_CODE_MSG &invite = transaction.request;
    SIP_CODE_MSG ack{};
    ack.method = SIP_REQUEST_MSG_ACK;
    ack.cseq = {invite.cseq.seq, SIP_REQUEST_MSG_ACK};
    ack.uri = invite.uri;
    ack.via = invite.via;
    ack.from = invite.from;
    ack.to = received_.to;
    ack.to.tag_use = ack.to.tag[0] != '\0';
    ack.record_route = invite.record_route;
    set_text(ack.callid, invite.callid);
    fill_own(ack, transaction.to);
    acks_.keep(ack_name(received_), send(ack, transaction.to));
}

void Endpoint::send_later(ClientTransaction &transaction) {
    const Clock::duration left = transaction.give_up - Clock::now();
    transaction.alarm.set(std::min(transaction.interval, left), [this, &transaction] {
        if (Clock::now() >= transaction.give_up)
            return give_up(transaction);
        if (transaction.to.transport == E_UDP) {
            ++counts_.sent_again;
            trace_.message(Direction::out, transaction.to, transaction.request, name_of(transaction.request.method));
            transport_.send(transaction.text, transaction.to);
        }
        transaction.interval = std::min<Clock::duration>(2 * transaction.interval, longest_interval);
        send_later(transaction);
    });
}

void Endpoint::give_up(const ClientTransaction &transaction) {
    const auto ended = end(transaction);
    ended->on_response(nullptr, ended->to);
}

std::unique_ptr<Endpoint::ClientTransaction> Endpoint::end(const ClientTransaction &transaction) {
    return std::move(clients_.extract(std::string(transaction.request.via.branch)).mapped());
}

std::string Endpoint::send(SIP_CODE_MSG &message, const Peer &to) {
    std::string text = encode(message);
    if (text.empty()) {
        ++counts_.refused;
        trace_.note(fmt::format("refused: to write {} with what the other side sent", name_of(message.method)));
        return text;
    }
    ++counts_.sent;
    trace_.message(Direction::out, to, message, name_of(message.method));
    transport_.send(text, to);
    return text;
}

// Via and Contact of this side.
void Endpoint::fill_own(SIP_CODE_MSG &request, const Peer &to) {
    request.trans_type = to.transport;
    request.via_count = 1;
    request.via.addr = contact("").addr;
    request.via.rport = 1;
    if (request.contact.user[0] != '\0')
        request.contact.addr = contact("").addr;
}
