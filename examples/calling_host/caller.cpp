// The calling host, see caller.h.
#include "caller.h"

#include <utility>

#include <fmt/format.h>

#include <sipcode/encode.h>

#include "hosts/records.h"

namespace {

constexpr std::chrono::seconds longest_transfer{30};
constexpr std::size_t max_forks = 16;

// As the encoder writes it into the request line. The credentials are computed for this URI.
std::string uri_of(const SIP_CODE_MSG &request) {
    const auto &[user, addr, dns] = request.uri;
    if (request.method == SIP_REQUEST_MSG_REGISTER)
        return fmt::format("sip:{}:{}", addr.ip, addr.port);
    return fmt::format("sip:{}@{}:{}", user, addr.ip, addr.port);
}

bool is_challenge(const Received &response) { return response.authen.use == 1; }

} // namespace

CallingHost::CallingHost(asio::io_context &io, Output &output, const CallerSettings &settings)
    : io_(io), output_(output), settings_(settings), trace_(output, settings.trace),
      endpoint_(io, settings.port, trace_, settings.capture,
                [this](const Received &request, const Peer &from) { on_request(request, from); }),
      server_(endpoint_.reach(settings.transport, settings.server)), alarm_(io) {}

void CallingHost::start() {
    if (settings_.registers)
        register_user();
    else
        call();
}

// --------------------------------------------------------------------------------------------------------------- steps

void CallingHost::register_user() {
    SIP_CODE_MSG request = request_to_server(SIP_REQUEST_MSG_REGISTER, settings_.account.user);
    request.expire = {1, 600};
    ask(request, [this](const Received &response, const Peer &) {
        done(fmt::format("registered for {} s", response.expire.expires));
        if (settings_.callee.empty())
            stop();
        else
            call();
    });
}

void CallingHost::call() {
    SIP_CODE_MSG request = request_to_server(SIP_REQUEST_MSG_INVITE, settings_.callee);
    request.supported.use = 1;
    set_text(request.supported.SUPPORTED, "100rel");
    set_session(request, make_offer(settings_.call.media), 0);
    ask(request, [this](const Received &response, const Peer &from) { on_taken(response, from); });
}

// The first fork that takes the call gets it. The call of any other is ended.
void CallingHost::on_taken(const Received &response, const Peer &from) {
    Dialog dialog(invite_, response, from);
    if (const auto early = early_.find(response.to.tag); early != early_.end())
        dialog.local_cseq = early->second.dialog.local_cseq;
    endpoint_.acknowledge(response, dialog.ack(invite_.cseq.seq), from);
    if (call_) {
        if (std::string_view(call_->dialog.remote.tag) != response.to.tag)
            endpoint_.request(dialog.request(SIP_REQUEST_MSG_BYE), from, [](const Received *, const Peer &) {});
        return;
    }
    call_.emplace(io_, endpoint_, settings_.call, dialog, [this] {
        call_.reset();
        fail("the call was hung up");
    });
    call_->run();
    done(fmt::format("{} took the call", printable(settings_.callee)));
    send_digit();
}

void CallingHost::send_digit() {
    if (settings_.digit.empty())
        return transfer();
    SIP_CODE_MSG request = call_->dialog.request(SIP_REQUEST_MSG_INFO);
    request.content.use = 1;
    set_text(request.content.type, "application/dtmf-relay");
    request.info.use = 1;
    set_text(request.info.key, settings_.digit);
    const auto on_taken = [this](const Received &, const Peer &) {
        done(fmt::format("digit {} sent", settings_.digit));
        transfer();
    };
    const auto on_refused = [this](const std::string &reason) { // the call goes on
        done(fmt::format("digit {} not taken: {}", settings_.digit, reason));
        failed_ = true;
        transfer();
    };
    ask(request, on_taken, on_refused);
}

// The encoder writes Refer-To with the host of From, so the other side looks for the user on the host of this one.
void CallingHost::transfer() {
    if (settings_.transfer_to.empty())
        return alarm_.set(settings_.talk, [this] { hang_up(); });
    SIP_CODE_MSG request = call_->dialog.request(SIP_REQUEST_MSG_REFER);
    set_text(request.contact.user, settings_.account.user);
    request.refer_to.use = 1;
    set_text(request.refer_to.refertotel, settings_.transfer_to);
    alarm_.set(longest_transfer, [this] { fail("no NOTIFY of the transfer"); });
    ask(request, [](const Received &, const Peer &) {}); // NOTIFY reports the outcome
}

void CallingHost::hang_up() {
    hanging_up_ = true;
    ask(call_->dialog.request(SIP_REQUEST_MSG_BYE), [this](const Received &, const Peer &) {
        done("hung up");
        stop();
    });
}

void CallingHost::stop() {
    succeeded_ = !failed_;
    io_.stop();
}

// ------------------------------------------------------------------------------------------------------------ requests

SIP_CODE_MSG CallingHost::request_to_server(sip_code_method method, std::string_view user) {
    SIP_CODE_MSG request{};
    request.method = method;
    request.cseq = {++last_cseq_, method};
    std::string host = settings_.server.address().to_string();
    Bulid_Call_id(request.callid, host.data());
    set_text(request.uri.user, user);
    set_text(request.uri.addr.ip, host);
    request.uri.addr.port = settings_.server.port();
    set_text(request.to.user, user);
    request.to.addr = request.uri.addr;
    set_text(request.from.user, settings_.account.user);
    request.from.addr = request.uri.addr;
    Build_Tag(request.from.tag);
    set_text(request.contact.user, settings_.account.user);
    return request;
}

void CallingHost::ask(const SIP_CODE_MSG &request, Answered on_accepted) {
    ask(request, std::move(on_accepted), [this](const std::string &reason) { fail(reason); });
}

// Sends a request. If it is challenged, sends it again with credentials.
void CallingHost::ask(const SIP_CODE_MSG &request, Answered on_accepted, Refused on_refused) {
    const bool is_invite = request.method == SIP_REQUEST_MSG_INVITE;
    if (is_invite) {
        invite_ = request;
        early_.clear();
    }
    endpoint_.request(request, server_, [=, this](const Received *response, const Peer &from) {
        if (response == nullptr)
            return on_refused(fmt::format("no answer to {}", name_of(request.method)));
        if (response->status < 200)
            return is_invite ? on_progress(*response, from) : void();
        if (response->status < 300)
            return on_accepted(*response, from);
        if (is_challenge(*response) && request.author.use == 0 && !settings_.account.password.empty())
            return ask_with_credentials(request, response->authen, on_accepted, on_refused);
        on_refused(fmt::format("{} to {}", title(*response), name_of(request.method)));
    });
}

void CallingHost::ask_with_credentials(SIP_CODE_MSG request, const SIP_AUTHEN &challenge, Answered on_accepted,
                                       Refused on_refused) {
    request.author = answer_challenge(challenge, settings_.account, name_of(request.method), uri_of(request));
    request.cseq.seq = call_ ? ++call_->dialog.local_cseq : ++last_cseq_;
    ask(request, std::move(on_accepted), std::move(on_refused));
}

// Acknowledges a reliable provisional response if it is the next one of its fork.
void CallingHost::on_progress(const Received &response, const Peer &from) {
    const int received = response.rseq.RSeq;
    if (response.rseq.use != 1 || received < 1 || response.to.tag[0] == '\0')
        return;
    auto early = early_.find(response.to.tag);
    if (early == early_.end() && early_.size() < max_forks)
        early = early_.emplace(response.to.tag, EarlyDialog{{invite_, response, from}, received - 1}).first;
    if (early == early_.end() || received - 1 != early->second.rseq)
        return;
    auto &[dialog, rseq] = early->second;
    rseq = received;
    SIP_CODE_MSG request = dialog.request(SIP_REQUEST_MSG_PRACK);
    request.rack = {rseq, response.cseq.seq, SIP_REQUEST_MSG_INVITE};
    endpoint_.request(request, dialog.peer, [](const Received *, const Peer &) {});
}

// --------------------------------------------------------------------------------------------------- received messages

bool CallingHost::is_of_call(const Received &request) const {
    return call_ && call_->dialog.callid == request.callid &&
           std::string_view(call_->dialog.local.tag) == request.to.tag &&
           std::string_view(call_->dialog.remote.tag) == request.from.tag;
}

void CallingHost::on_request(const Received &request, const Peer &from) {
    if (request.method == SIP_REQUEST_MSG_ACK) {
        if (is_of_call(request))
            call_->on_ack(request);
        return;
    }
    const ResponseHead head(request, from);
    if (!is_of_call(request) || request.method == SIP_REQUEST_MSG_CANCEL)
        return endpoint_.respond(head, refusal(request));
    if (call_->refuses(request, head))
        return;
    switch (request.method) {
    case SIP_REQUEST_MSG_INVITE:
        return call_->on_invite(request, head);
    case SIP_REQUEST_MSG_UPDATE:
        return call_->on_update(request, head);
    case SIP_REQUEST_MSG_BYE:
        return call_->on_bye(head);
    case SIP_REQUEST_MSG_NOTIFY:
        endpoint_.respond(head, SIP_RESPONSE_MSG_200_OK);
        return on_notify(request);
    default:
        endpoint_.respond(head, SIP_RESPONSE_MSG_501_NOT_IMPLEMENTED);
    }
}

// For a request outside the call.
sip_code_method CallingHost::refusal(const Received &request) const {
    if (!call_ && early_.find(request.from.tag) != early_.end())
        return SIP_RESPONSE_MSG_491_REQUEST_PENDING;
    const bool is_call = request.method == SIP_REQUEST_MSG_INVITE && request.to.tag[0] == '\0';
    return is_call ? SIP_RESPONSE_MSG_486_BUSY_HERE : SIP_RESPONSE_MSG_481_CALL_TRANSACTION_DOES_NOT_EXIST;
}

// The transfer succeeded: its last NOTIFY holds "SIP/2.0 200 OK".
void CallingHost::on_notify(const Received &request) {
    if (!std::string_view(request.subscription_state.content).starts_with("terminated"))
        return;
    const std::string_view outcome = request.msg_sdp.content;
    if (!outcome.starts_with("SIP/2.0 2"))
        return fail(fmt::format("the transfer ended with {}", printable(outcome)));
    done(fmt::format("transferred to {}", settings_.transfer_to));
    alarm_.set(settings_.talk, [this] { hang_up(); });
}

void CallingHost::done(std::string_view what) { output_.line(what); }

// Hangs up an established call first.
void CallingHost::fail(std::string_view reason) {
    output_.line(fmt::format("failed: {}", reason));
    failed_ = true;
    if (call_ && !hanging_up_)
        hang_up();
    else
        stop();
}
