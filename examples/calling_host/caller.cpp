// The calling host, see caller.h.
#include "caller.h"

#include <utility>

#include <fmt/format.h>

#include <sipcode/encode.h>

#include "hosts/records.h"

namespace {

constexpr std::chrono::seconds longest_transfer{30};

// As the encoder writes it into the request line. The credentials are computed for this URI.
std::string uri_of(const SIP_CODE_MSG &request) {
    const auto &[user, addr, dns] = request.uri;
    if (request.method == SIP_REQUEST_MSG_REGISTER)
        return fmt::format("sip:{}:{}", addr.ip, addr.port);
    return fmt::format("sip:{}@{}:{}", user, addr.ip, addr.port);
}

bool is_challenge(const SIP_CODE_MSG &response) { return response.authen.use == 1; }

} // namespace

CallingHost::CallingHost(asio::io_context &io, Output &output, const CallerSettings &settings)
    : io_(io), output_(output), settings_(settings), trace_(output, settings.trace),
      endpoint_(io, settings.port, trace_,
                [this](const SIP_CODE_MSG &request, const Peer &from) { on_request(request, from); }),
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
    ask(request, [this](const SIP_CODE_MSG &response, const Peer &) {
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
    set_session(request, make_offer(settings_.media), 0);
    ask(request, [this](const SIP_CODE_MSG &response, const Peer &from) { on_taken(response, from); });
}

void CallingHost::on_taken(const SIP_CODE_MSG &response, const Peer &from) {
    if (dialog_ && std::string_view(dialog_->remote.tag) == response.to.tag) // known since a provisional response
        dialog_->target = Dialog(invite_, response, from).target;
    else
        dialog_.emplace(invite_, response, from);
    endpoint_.acknowledge(response, dialog_->ack(invite_.cseq.seq), dialog_->peer);
    done(fmt::format("{} took the call", printable(settings_.callee)));
    send_digit();
}

void CallingHost::send_digit() {
    if (settings_.digit.empty())
        return transfer();
    SIP_CODE_MSG request = dialog_->request(SIP_REQUEST_MSG_INFO);
    request.content.use = 1;
    set_text(request.content.type, "application/dtmf-relay");
    request.info.use = 1;
    set_text(request.info.key, settings_.digit);
    ask(request, [this](const SIP_CODE_MSG &, const Peer &) {
        done(fmt::format("digit {} sent", settings_.digit));
        transfer();
    });
}

// The encoder writes Refer-To with the host of From, so the other side looks for the user on the host of this one.
void CallingHost::transfer() {
    if (settings_.transfer_to.empty())
        return alarm_.set(settings_.talk, [this] { hang_up(); });
    SIP_CODE_MSG request = dialog_->request(SIP_REQUEST_MSG_REFER);
    set_text(request.contact.user, settings_.account.user);
    request.refer_to.use = 1;
    set_text(request.refer_to.refertotel, settings_.transfer_to);
    alarm_.set(longest_transfer, [this] { fail("no NOTIFY of the transfer"); });
    ask(request, [](const SIP_CODE_MSG &, const Peer &) {}); // NOTIFY reports the outcome
}

void CallingHost::hang_up() {
    hanging_up_ = true;
    ask(dialog_->request(SIP_REQUEST_MSG_BYE), [this](const SIP_CODE_MSG &, const Peer &) {
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

// Sends a request. If it is challenged, sends it again with credentials.
void CallingHost::ask(SIP_CODE_MSG request, Answered on_accepted) {
    if (request.method == SIP_REQUEST_MSG_INVITE)
        invite_ = request;
    endpoint_.request(request, server_, [this, request, on_accepted](const SIP_CODE_MSG *response, const Peer &from) {
        if (response == nullptr)
            return fail(fmt::format("no answer to {}", name_of(request.method)));
        const int status = status_code(*response);
        if (status < 200)
            return on_progress(*response, from);
        if (status < 300)
            return on_accepted(*response, from);
        if (is_challenge(*response) && request.author.use == 0 && !settings_.account.password.empty())
            return ask_with_credentials(request, response->authen, on_accepted);
        if (request.method == SIP_REQUEST_MSG_INVITE)
            dialog_.reset();
        fail(fmt::format("{} to {}", name_of(response->method), name_of(request.method)));
    });
}

void CallingHost::ask_with_credentials(SIP_CODE_MSG request, const SIP_AUTHEN &challenge, Answered on_accepted) {
    request.author = answer_challenge(challenge, settings_.account, name_of(request.method), uri_of(request));
    request.cseq.seq = dialog_ ? ++dialog_->local_cseq : ++last_cseq_;
    ask(request, std::move(on_accepted));
}

void CallingHost::on_progress(const SIP_CODE_MSG &response, const Peer &from) {
    if (response.rseq.use != 1 || (dialog_ && response.rseq.RSeq <= last_rseq_))
        return;
    last_rseq_ = response.rseq.RSeq;
    if (!dialog_)
        dialog_.emplace(invite_, response, from);
    SIP_CODE_MSG request = dialog_->request(SIP_REQUEST_MSG_PRACK);
    request.rack = {response.rseq.RSeq, response.cseq.seq, SIP_REQUEST_MSG_INVITE};
    ask(request, [](const SIP_CODE_MSG &, const Peer &) {});
}

// --------------------------------------------------------------------------------------------------- received messages

void CallingHost::on_request(const SIP_CODE_MSG &request, const Peer &from) {
    if (request.method == SIP_REQUEST_MSG_ACK)
        return;
    const ResponseHead head(request, from);
    const bool is_of_call =
        dialog_ && dialog_->callid == request.callid && std::string_view(dialog_->local.tag) == request.to.tag;
    if (!is_of_call) {
        const bool is_call = request.method == SIP_REQUEST_MSG_INVITE && request.to.tag[0] == '\0';
        endpoint_.respond(head, is_call ? SIP_RESPONSE_MSG_486_BUSY_HERE
                                        : SIP_RESPONSE_MSG_481_CALL_TRANSACTION_DOES_NOT_EXIST);
        return;
    }
    const bool is_notify = request.method == SIP_REQUEST_MSG_NOTIFY;
    const bool is_bye = request.method == SIP_REQUEST_MSG_BYE;
    endpoint_.respond(head, is_notify || is_bye ? SIP_RESPONSE_MSG_200_OK : SIP_RESPONSE_MSG_501_NOT_IMPLEMENTED);
    if (is_notify)
        on_notify(request);
    if (is_bye) {
        dialog_.reset();
        fail("the other side hung up");
    }
}

// The transfer succeeded: its last NOTIFY holds "SIP/2.0 200 OK".
void CallingHost::on_notify(const SIP_CODE_MSG &request) {
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
    if (dialog_ && !hanging_up_)
        hang_up();
    else
        stop();
}
