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
    Clock::duration interval = first_interval;
    Clock::time_point give_up = Clock::now() + answer_time;
};

Endpoint::Endpoint(asio::io_context &io, unsigned short port, Trace &trace, RequestHandler on_request)
    : io_(io), trace_(trace), on_request_(std::move(on_request)),
      transport_(
          io, port, [this](std::string_view message, const Peer &from) { receive(message, from); },
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
    if (!decode(message, received_) || received_.via_count > 2) {
        // Without Call-ID, CSeq or Via, or with more Vias than a record holds, no answer can be sent.
        ++counts_.refused;
        trace_.note(fmt::format("refused: a message from {}", to_string(from)));
        return;
    }
    trace_.message(Direction::in, from, received_);
    if (is_request(received_))
        receive_request(from);
    else if (is_response(received_))
        receive_response(from);
}

void Endpoint::receive_request(const Peer &from) {
    const std::string name = transaction_name(received_, received_.method);
    if (const std::string *const text = responses_.find(name)) {
        ++counts_.repeated;
        ++counts_.sent_again;
        trace_.note("came again, answered again");
        transport_.send(*text, from);
        return;
    }
    on_request_(received_, from);
}

void Endpoint::receive_response(const Peer &from) {
    const std::string branch = received_.via.branch;
    if (const std::string *const ack = acks_.find(branch)) {
        if (status_code(received_) >= 200) {
            ++counts_.sent_again;
            transport_.send(*ack, from);
        }
        return;
    }
    const auto found = clients_.find(branch);
    if (found == clients_.end() || found->second->request.cseq.method != received_.cseq.method)
        return;
    if (status_code(received_) < 200) {
        ClientTransaction &transaction = *found->second;
        if (transaction.is_invite()) // the request has arrived, so it is not sent again
            transaction.alarm.set(ringing_time, [this, &transaction] { give_up(transaction); });
        return transaction.on_response(&received_, from);
    }
    const auto transaction = std::move(found->second);
    clients_.erase(found);
    if (transaction->is_invite() && status_code(received_) >= 300)
        acknowledge_refusal(*transaction);
    transaction->on_response(&received_, from);
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
    acks_.keep(response.via.branch, send(ack, to));
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
    acks_.keep(invite.via.branch, send(ack, transaction.to));
}

void Endpoint::send_later(ClientTransaction &transaction) {
    const Clock::duration left = transaction.give_up - Clock::now();
    transaction.alarm.set(std::min(transaction.interval, left), [this, &transaction] {
        if (Clock::now() >= transaction.give_up)
            return give_up(transaction);
        if (transaction.to.transport == E_UDP) {
            ++counts_.sent_again;
            trace_.message(Direction::out, transaction.to, transaction.request);
            transport_.send(transaction.text, transaction.to);
        }
        transaction.interval = std::min<Clock::duration>(2 * transaction.interval, longest_interval);
        send_later(transaction);
    });
}

void Endpoint::give_up(const ClientTransaction &transaction) {
    const auto kept = std::move(clients_.extract(std::string(transaction.request.via.branch)).mapped());
    kept->on_response(nullptr, kept->to);
}

std::string Endpoint::send(SIP_CODE_MSG &message, const Peer &to) {
    std::string text = encode(message);
    if (text.empty()) {
        ++counts_.refused;
        trace_.note(fmt::format("refused: to write {} with what the other side sent", name_of(message.method)));
        return text;
    }
    ++counts_.sent;
    trace_.message(Direction::out, to, message);
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
