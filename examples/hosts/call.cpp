// A call, see call.h. One of the other side:
//
//   INVITE  -->                          start: refused, or
//           <-- 100
//           <-- 183 with RSeq            progress, if the caller supports 100rel; repeated until
//   PRACK   -->
//           <-- 200 to PRACK
//           <-- 180                      ring, for all other callers
//           <-- 200                      take; repeated until
//   ACK     -->                          run: re-INVITE, UPDATE
//   BYE     -->
//           <-- 200                      a CANCEL, or a BYE before the 200, ends the INVITE with 487
//
// One of this side begins with run.
#include "call.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include <asio/post.hpp>

#include "records.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr long first_version = 1073741825; // of a session description, as the encoder writes it

bool supports(const Received &request, std::string_view extension) {
    return lists(request.supported_tags, extension) || lists(request.required_tags, extension);
}

bool asks_for_timer(const Received &request) { return request.session_expires.use == 1 && supports(request, "timer"); }

} // namespace

Call::Call(asio::io_context &io, Endpoint &endpoint, const CallSettings &settings, const Dialog &with,
           EndHandler on_end)
    : dialog(with), io_(io), endpoint_(endpoint), settings_(settings), on_end_(std::move(on_end)),
      version_(first_version), alarm_(io) {}

// ----------------------------------------------------------------------------------------------------------- beginning

bool Call::start(const Received &request, const ResponseHead &head) {
    const std::optional<SIP_SDP> sdp = describe(request, head);
    SIP_CODE_MSG trying = head.response(SIP_RESPONSE_MSG_100_TRY);
    if (!sdp || endpoint_.respond(head, trying).empty())
        return false;
    invite_ = head;
    sdp_ = *sdp;
    has_offer_ = body_of(request) == Body::session;
    set_timer(request);
    if (supports(request, "100rel"))
        progress();
    else
        ring();
    return true;
}

// A provisional response that the caller acknowledges (RFC 3262).
void Call::progress() {
    state_ = State::proving;
    rseq_ = 1;
    SIP_CODE_MSG response = invite_->response(SIP_RESPONSE_MSG_183_RING);
    add_contact(response);
    response.rseq = {1, rseq_};
    response.require.use = 1;
    set_text(response.require.REQUIRE, "100rel");
    set_session(response, sdp_, version_);
    sdp_is_sent_ = true;
    await_answer(response);
}

void Call::ring() {
    SIP_CODE_MSG response = invite_->response(SIP_RESPONSE_MSG_180_RING);
    add_contact(response);
    endpoint_.respond(*invite_, response);
    take_after_ringing();
}

void Call::take_after_ringing() {
    if (settings_.ring.count() == 0)
        return take();
    alarm_.set(settings_.ring, [this] { take(); });
}

void Call::take() {
    was_taken_ = true;
    SIP_CODE_MSG response = accepted(*invite_);
    if (!sdp_is_sent_)
        set_session(response, sdp_, version_);
    sdp_is_sent_ = true;
    state_ = State::taken;
    await_answer(response);
}

void Call::run() {
    state_ = State::running;
    unanswered_.clear();
    const auto longest =
        session_timer_.use == 1 ? std::chrono::seconds(session_timer_.sessionexpires) : settings_.longest;
    alarm_.set(longest, [this] { hang_up(); });
}

// ------------------------------------------------------------------------------------------------------------ requests

bool Call::refuses(const Received &request, const ResponseHead &head) {
    if (state_ >= State::refused) {
        endpoint_.respond(head, SIP_RESPONSE_MSG_481_CALL_TRANSACTION_DOES_NOT_EXIST);
        return true;
    }
    if (request.cseq.seq <= dialog.remote_cseq) {
        endpoint_.respond(head, SIP_RESPONSE_MSG_500_SERVER_INTERNAL_ERROR);
        return true;
    }
    dialog.remote_cseq = request.cseq.seq;
    return false;
}

void Call::on_ack(const Received &request) {
    if (!invite_ || request.cseq.seq != invite_->cseq.seq)
        return;
    if (state_ == State::taken)
        run();
    else if (state_ == State::refused)
        finish();
}

void Call::on_prack(const Received &request, const ResponseHead &head) {
    const SIP_RACK &rack = request.rack;
    if (state_ != State::proving || rack.rack != rseq_ || rack.cseq != invite_->cseq.seq ||
        rack.method != SIP_REQUEST_MSG_INVITE)
        return endpoint_.respond(head, SIP_RESPONSE_MSG_481_CALL_TRANSACTION_DOES_NOT_EXIST);
    SIP_CODE_MSG response = head.response(SIP_RESPONSE_MSG_200_OK);
    const bool has_new_offer = has_offer_ && body_of(request) != Body::none; // the 183 answered that of the INVITE
    const std::optional<SIP_SDP> sdp = has_new_offer ? describe(request, head) : std::nullopt;
    if (sdp)
        set_session(response, *sdp, ++version_);
    if (sdp || !has_new_offer)
        endpoint_.respond(head, response);
    state_ = State::ringing;
    take_after_ringing();
}

void Call::on_invite(const Received &request, const ResponseHead &head) {
    if (state_ != State::running) // the earlier INVITE is not completed
        return endpoint_.respond(head, SIP_RESPONSE_MSG_500_SERVER_INTERNAL_ERROR);
    const std::optional<SIP_SDP> sdp = describe(request, head);
    if (!sdp)
        return;
    invite_ = head;
    set_timer(request);
    SIP_CODE_MSG response = accepted(head);
    set_session(response, *sdp, ++version_);
    state_ = State::taken;
    await_answer(response);
}

void Call::on_update(const Received &request, const ResponseHead &head) {
    const bool has_offer = body_of(request) != Body::none;
    if (has_offer && state_ < State::running && !sdp_is_sent_) // the offer of the INVITE is not answered yet
        return endpoint_.respond(head, SIP_RESPONSE_MSG_500_SERVER_INTERNAL_ERROR);
    const std::optional<SIP_SDP> sdp = describe(request, head);
    if (!sdp)
        return;
    set_timer(request);
    SIP_CODE_MSG response = accepted(head);
    if (has_offer)
        set_session(response, *sdp, ++version_);
    endpoint_.respond(head, response);
    if (state_ == State::running)
        run();
}

void Call::on_bye(const ResponseHead &head) {
    endpoint_.respond(head, SIP_RESPONSE_MSG_200_OK);
    if (state_ < State::taken)
        terminate(SIP_RESPONSE_MSG_487_REQUEST_TERMINATED);
    else
        finish();
}

void Call::on_cancel(ResponseHead head) {
    head.to = invite_->to;
    endpoint_.respond(head, SIP_RESPONSE_MSG_200_OK);
    if (state_ < State::taken) // otherwise it is too late and has no effect
        terminate(SIP_RESPONSE_MSG_487_REQUEST_TERMINATED);
}

// ------------------------------------------------------------------------------------------------------------- answers

// The session description of this side: an answer to the offer, or an offer if there is none. Nothing if the request
// was refused.
std::optional<SIP_SDP> Call::describe(const Received &request, const ResponseHead &head) {
    if (asks_for_timer(request) && request.session_expires.sessionexpires < settings_.shortest_session.count()) {
        SIP_CODE_MSG response = head.response(SIP_RESPONSE_MSG_422_SESSION_INVERVAL_TOO_SMALL);
        response.min_se = {1, static_cast<int>(settings_.shortest_session.count())};
        endpoint_.respond(head, response);
        return std::nullopt;
    }
    const Body body = body_of(request);
    if (body == Body::none)
        return make_offer(settings_.media);
    SIP_SDP sdp{};
    if (body == Body::session && answer_offer(request.xml_buf, settings_.media, sdp))
        return sdp;
    endpoint_.respond(head, SIP_RESPONSE_MSG_488_NOT_ACCEPTABLE_HERE);
    return std::nullopt;
}

void Call::add_contact(SIP_CODE_MSG &response) const {
    response.contact = endpoint_.contact(dialog.local.user[0] != '\0' ? dialog.local.user : "host");
}

// The 200 to an INVITE or UPDATE. The other side refreshes the session: this one would need an UPDATE with
// Session-Expires, and the encoder writes that header only in an INVITE.
SIP_CODE_MSG Call::accepted(const ResponseHead &head) const {
    SIP_CODE_MSG response = head.response(SIP_RESPONSE_MSG_200_OK);
    add_contact(response);
    response.supported.use = 1;
    set_text(response.supported.SUPPORTED, extensions);
    response.session_expires = session_timer_;
    if (session_timer_.use == 1) {
        response.require.use = 1;
        set_text(response.require.REQUIRE, "timer");
    }
    return response;
}

// The other side gets no timer if it wants this one to refresh (RFC 4028 section 7.2).
void Call::set_timer(const Received &request) {
    session_timer_ = {};
    if (!asks_for_timer(request) || std::string_view(request.session_expires.refresher) == "uas")
        return;
    session_timer_.use = 1;
    session_timer_.sessionexpires = request.session_expires.sessionexpires;
    set_text(session_timer_.refresher, "uac");
}

// -------------------------------------------------------------------------------------------------------------- timers

// Sends a response to the INVITE and repeats it until the PRACK or ACK arrives (RFC 3261 section 13.3.1.4, RFC 3262
// section 3).
void Call::await_answer(SIP_CODE_MSG &response) {
    unanswered_ = endpoint_.respond(*invite_, response);
    if (unanswered_.empty()) // the codec does not write it
        return give_up();
    interval_ = first_interval;
    answer_due_ = Clock::now() + answer_time;
    send_later();
}

void Call::send_later() {
    alarm_.set(interval_, [this] {
        if (Clock::now() >= answer_due_)
            return give_up();
        if (state_ != State::refused || invite_->peer.transport == E_UDP)
            endpoint_.respond_again(*invite_, unanswered_);
        interval_ = std::min<Clock::duration>(2 * interval_, longest_interval);
        send_later();
    });
}

void Call::give_up() {
    if (state_ == State::proving)
        terminate(SIP_RESPONSE_MSG_504_SERVER_TIME_OUT);
    else if (state_ == State::taken)
        hang_up();
    else
        finish();
}

// ----------------------------------------------------------------------------------------------------------------- end

void Call::terminate(sip_code_method status) {
    state_ = State::refused;
    SIP_CODE_MSG response = invite_->response(status);
    await_answer(response);
}

void Call::hang_up() {
    endpoint_.request(dialog.request(SIP_REQUEST_MSG_BYE), dialog.peer, [](const Received *, const Peer &) {});
    finish();
}

void Call::finish() {
    state_ = State::over;
    alarm_.cancel();
    asio::post(io_, on_end_);
}
