// Incoming calls, see calls.h.
//
//   INVITE  -->                          start: refused, or
//           <-- 100
//           <-- 183 with RSeq            progress, if the caller supports 100rel; repeated until
//   PRACK   -->
//           <-- 200 to PRACK
//           <-- 180                      ring, for all other callers
//           <-- 200                      take; repeated until
//   ACK     -->                          run: INFO, re-INVITE, UPDATE
//   BYE     -->
//           <-- 200                      a CANCEL, or a BYE before the 200, ends the INVITE with 487
#include "calls.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

#include "hosts/records.h"
#include "registrar.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t max_calls = 10000;
constexpr long first_version = 1073741825; // of a session description, as the encoder writes it

bool supports(const SIP_CODE_MSG &request, std::string_view extension) {
    return lists(request.supported.SUPPORTED, extension) || lists(request.require.REQUIRE, extension);
}

bool asks_for_timer(const SIP_CODE_MSG &request) {
    return request.session_expires.use == 1 && supports(request, "timer");
}

} // namespace

struct Calls::Call {
    // In the order of a call. An ended one waits for the ACK to its refusal.
    enum class State { proving, ringing, taken, running, ended };

    Call(asio::io_context &io, const SIP_CODE_MSG &request, const ResponseHead &head)
        : invite(head), dialog(head, request), alarm(io) {}

    ResponseHead invite; // the last one
    Dialog dialog;
    State state = State::ringing;
    SIP_SDP sdp{}; // of this side
    long version = first_version;
    bool sdp_is_sent = false;
    int rseq = 0;
    SIP_SESSION_EXPIRES session_timer{};

    Alarm alarm;
    std::string unanswered; // the response that waits for PRACK or ACK
    Clock::duration interval{};
    Clock::time_point answer_due{};
};

Calls::Calls(asio::io_context &io, Endpoint &endpoint, Output &output, Registrar &registrar,
             const CallSettings &settings)
    : io_(io), endpoint_(endpoint), output_(output), registrar_(registrar), settings_(settings) {}

Calls::~Calls() = default;

// ----------------------------------------------------------------------------------------------------------- new calls

void Calls::on_invite(const SIP_CODE_MSG &request, const Peer &from) {
    const ResponseHead head(request, from);
    if (request.to.tag[0] == '\0') {
        if (!refused(request, head))
            start(request, head);
        return;
    }
    Call *const call = find_in_order(request, head);
    if (call == nullptr || refused(request, head))
        return;
    if (call->state != Call::State::running) // the earlier INVITE is not completed
        return endpoint_.respond(head, SIP_RESPONSE_MSG_500_SERVER_INTERNAL_ERROR);
    change(*call, request, head);
}

bool Calls::refused(const SIP_CODE_MSG &request, const ResponseHead &head) {
    const bool is_new = request.to.tag[0] == '\0';
    if (is_new && settings_.authenticate && !registrar_.admit(request, head))
        return true;
    if (is_new && calls_.size() == max_calls) {
        endpoint_.respond(head, SIP_RESPONSE_MSG_503);
        return true;
    }
    if (request.require.use == 1 && !lists_all(extensions, request.require.REQUIRE)) {
        endpoint_.respond(head, SIP_RESPONSE_MSG_400_BAD_REQUEST); // the codec has no 420
        return true;
    }
    if (asks_for_timer(request) && request.session_expires.sessionexpires < settings_.shortest_session.count()) {
        SIP_CODE_MSG response = head.response(SIP_RESPONSE_MSG_422_SESSION_INVERVAL_TOO_SMALL);
        response.min_se = {1, static_cast<int>(settings_.shortest_session.count())};
        endpoint_.respond(head, response);
        return true;
    }
    return false;
}

// The session description of this side: an answer to the offer, or an offer if there is none.
std::optional<SIP_SDP> Calls::describe(const SIP_CODE_MSG &request) const {
    if (!has_session(request))
        return make_offer(settings_.media);
    SIP_SDP sdp{};
    if (!answer_offer(request, settings_.media, sdp))
        return std::nullopt;
    return sdp;
}

void Calls::start(const SIP_CODE_MSG &request, const ResponseHead &head) {
    const std::optional<SIP_SDP> sdp = describe(request);
    if (!sdp)
        return endpoint_.respond(head, SIP_RESPONSE_MSG_488_NOT_ACCEPTABLE_HERE);
    endpoint_.respond(head, SIP_RESPONSE_MSG_100_TRY);
    Call &call = *calls_.emplace(dialog_name(head.callid, head.to.tag), std::make_unique<Call>(io_, request, head))
                      .first->second;
    invites_[head.transaction] = &call;
    call.sdp = *sdp;
    set_timer(call, request);
    if (supports(request, "100rel"))
        progress(call);
    else
        ring(call);
}

// A provisional response that the caller acknowledges (RFC 3262).
void Calls::progress(Call &call) {
    call.state = Call::State::proving;
    call.rseq = 1;
    SIP_CODE_MSG response = call.invite.response(SIP_RESPONSE_MSG_183_RING);
    add_contact(response);
    response.rseq = {1, call.rseq};
    response.require.use = 1;
    set_text(response.require.REQUIRE, "100rel");
    set_session(response, call.sdp, call.version);
    call.sdp_is_sent = true;
    await_answer(call, response);
}

void Calls::on_prack(const SIP_CODE_MSG &request, const Peer &from) {
    const ResponseHead head(request, from);
    Call *const call = find_in_order(request, head);
    if (call == nullptr)
        return;
    const SIP_RACK &rack = request.rack;
    if (call->state != Call::State::proving || rack.rack != call->rseq || rack.cseq != call->invite.cseq.seq ||
        rack.method != SIP_REQUEST_MSG_INVITE)
        return endpoint_.respond(head, SIP_RESPONSE_MSG_481_CALL_TRANSACTION_DOES_NOT_EXIST);
    endpoint_.respond(head, SIP_RESPONSE_MSG_200_OK);
    call->state = Call::State::ringing;
    take_after_ringing(*call);
}

void Calls::ring(Call &call) {
    SIP_CODE_MSG response = call.invite.response(SIP_RESPONSE_MSG_180_RING);
    add_contact(response);
    endpoint_.respond(call.invite, response);
    take_after_ringing(call);
}

void Calls::take_after_ringing(Call &call) {
    if (settings_.ring.count() == 0)
        return take(call);
    call.alarm.set(settings_.ring, [this, &call] { take(call); });
}

void Calls::take(Call &call) {
    ++taken_;
    SIP_CODE_MSG response = accepted(call, call.invite);
    if (!call.sdp_is_sent)
        set_session(response, call.sdp, call.version);
    call.sdp_is_sent = true;
    call.state = Call::State::taken;
    await_answer(call, response);
}

// -------------------------------------------------------------------------------------------------------- inside calls

void Calls::on_ack(const SIP_CODE_MSG &request) {
    Call *const call = find(request);
    if (call == nullptr || request.cseq.seq != call->invite.cseq.seq)
        return;
    if (call->state == Call::State::taken)
        run(*call);
    else if (call->state == Call::State::ended)
        erase(*call);
}

// A re-INVITE or an UPDATE.
void Calls::change(Call &call, const SIP_CODE_MSG &request, const ResponseHead &head) {
    const std::optional<SIP_SDP> sdp = describe(request);
    if (!sdp)
        return endpoint_.respond(head, SIP_RESPONSE_MSG_488_NOT_ACCEPTABLE_HERE);
    set_timer(call, request);
    const bool is_invite = request.method == SIP_REQUEST_MSG_INVITE;
    if (is_invite) {
        invites_.erase(call.invite.transaction);
        invites_[head.transaction] = &call;
        call.invite = head;
    }
    SIP_CODE_MSG response = accepted(call, head);
    if (is_invite || has_session(request)) {
        call.sdp = *sdp;
        set_session(response, call.sdp, ++call.version);
    }
    if (is_invite) {
        call.state = Call::State::taken;
        return await_answer(call, response);
    }
    endpoint_.respond(head, response);
    if (call.state == Call::State::running)
        run(call);
}

void Calls::on_update(const SIP_CODE_MSG &request, const Peer &from) {
    const ResponseHead head(request, from);
    Call *const call = find_in_order(request, head);
    if (call == nullptr || refused(request, head))
        return;
    if (has_session(request) && !call->sdp_is_sent) // the offer of the INVITE is not answered yet
        return endpoint_.respond(head, SIP_RESPONSE_MSG_500_SERVER_INTERNAL_ERROR);
    change(*call, request, head);
}

void Calls::on_info(const SIP_CODE_MSG &request, const Peer &from) {
    const ResponseHead head(request, from);
    if (find_in_order(request, head) == nullptr)
        return;
    if (request.info.use == 1)
        output_.line(fmt::format("digit {} from {}", printable(request.info.key), printable(request.from.user)));
    endpoint_.respond(head, SIP_RESPONSE_MSG_200_OK);
}

void Calls::on_bye(const SIP_CODE_MSG &request, const Peer &from) {
    const ResponseHead head(request, from);
    Call *const call = find_in_order(request, head);
    if (call == nullptr)
        return;
    endpoint_.respond(head, SIP_RESPONSE_MSG_200_OK);
    if (call->state < Call::State::taken)
        terminate(*call, SIP_RESPONSE_MSG_487_REQUEST_TERMINATED);
    else
        erase(*call);
}

void Calls::on_cancel(const SIP_CODE_MSG &request, const Peer &from) {
    ResponseHead head(request, from);
    const auto invite = invites_.find(transaction_name(request, SIP_REQUEST_MSG_INVITE));
    if (invite == invites_.end())
        return endpoint_.respond(head, SIP_RESPONSE_MSG_481_CALL_TRANSACTION_DOES_NOT_EXIST);
    Call &call = *invite->second;
    head.to = call.invite.to;
    endpoint_.respond(head, SIP_RESPONSE_MSG_200_OK);
    if (call.state < Call::State::taken) // otherwise it is too late and has no effect
        terminate(call, SIP_RESPONSE_MSG_487_REQUEST_TERMINATED);
}

Dialog *Calls::find_dialog(const SIP_CODE_MSG &request, const ResponseHead &head) {
    Call *const call = find_in_order(request, head);
    return call != nullptr ? &call->dialog : nullptr;
}

Calls::Call *Calls::find(const SIP_CODE_MSG &request) {
    const auto found = calls_.find(dialog_name(request.callid, request.to.tag));
    return found != calls_.end() ? found->second.get() : nullptr;
}

Calls::Call *Calls::find_in_order(const SIP_CODE_MSG &request, const ResponseHead &head) {
    Call *const call = find(request);
    if (call == nullptr || call->state == Call::State::ended) {
        endpoint_.respond(head, SIP_RESPONSE_MSG_481_CALL_TRANSACTION_DOES_NOT_EXIST);
        return nullptr;
    }
    if (request.cseq.seq <= call->dialog.remote_cseq) {
        endpoint_.respond(head, SIP_RESPONSE_MSG_500_SERVER_INTERNAL_ERROR);
        return nullptr;
    }
    call->dialog.remote_cseq = request.cseq.seq;
    return call;
}

// ------------------------------------------------------------------------------------------------------------- answers

void Calls::add_contact(SIP_CODE_MSG &response) const {
    response.contact = endpoint_.contact(response.to.user[0] != '\0' ? response.to.user : "host");
}

// The 200 to an INVITE or UPDATE. The caller refreshes the session: this side would need an UPDATE with
// Session-Expires, and the encoder writes that header only in an INVITE.
SIP_CODE_MSG Calls::accepted(const Call &call, const ResponseHead &head) const {
    SIP_CODE_MSG response = head.response(SIP_RESPONSE_MSG_200_OK);
    add_contact(response);
    response.supported.use = 1;
    set_text(response.supported.SUPPORTED, extensions);
    response.session_expires = call.session_timer;
    if (call.session_timer.use == 1) {
        response.require.use = 1;
        set_text(response.require.REQUIRE, "timer");
    }
    return response;
}

// A caller that wants this side to refresh gets no timer (RFC 4028 section 7.2).
void Calls::set_timer(Call &call, const SIP_CODE_MSG &request) const {
    call.session_timer = {};
    if (!asks_for_timer(request) || std::string_view(request.session_expires.refresher) == "uas")
        return;
    call.session_timer.use = 1;
    call.session_timer.sessionexpires = request.session_expires.sessionexpires;
    set_text(call.session_timer.refresher, "uac");
}

// -------------------------------------------------------------------------------------------------------------- timers

// Sends a response to the INVITE and repeats it until the PRACK or ACK arrives (RFC 3261 section 13.3.1.4, RFC 3262
// section 3).
void Calls::await_answer(Call &call, SIP_CODE_MSG &response) {
    call.unanswered = endpoint_.respond(call.invite, response);
    call.interval = first_interval;
    call.answer_due = Clock::now() + answer_time;
    send_later(call);
}

void Calls::send_later(Call &call) {
    call.alarm.set(call.interval, [this, &call] {
        if (Clock::now() >= call.answer_due)
            return give_up(call);
        if (call.state != Call::State::ended || call.invite.peer.transport == E_UDP)
            endpoint_.respond_again(call.invite, call.unanswered);
        call.interval = std::min<Clock::duration>(2 * call.interval, longest_interval);
        send_later(call);
    });
}

void Calls::give_up(Call &call) {
    if (call.state == Call::State::proving)
        terminate(call, SIP_RESPONSE_MSG_504_SERVER_TIME_OUT);
    else if (call.state == Call::State::taken)
        hang_up(call);
    else
        erase(call);
}

void Calls::terminate(Call &call, sip_code_method status) {
    call.state = Call::State::ended;
    SIP_CODE_MSG response = call.invite.response(status);
    await_answer(call, response);
}

void Calls::run(Call &call) {
    call.state = Call::State::running;
    call.unanswered.clear();
    invites_.erase(call.invite.transaction);
    const auto longest =
        call.session_timer.use == 1 ? std::chrono::seconds(call.session_timer.sessionexpires) : settings_.longest;
    call.alarm.set(longest, [this, &call] { hang_up(call); });
}

void Calls::hang_up(Call &call) {
    endpoint_.request(call.dialog.request(SIP_REQUEST_MSG_BYE), call.dialog.peer,
                      [](const SIP_CODE_MSG *, const Peer &) {});
    erase(call);
}

void Calls::erase(const Call &call) {
    invites_.erase(call.invite.transaction);
    calls_.erase(dialog_name(call.dialog.callid, call.dialog.local.tag));
}
