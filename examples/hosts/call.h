// A call, placed by either side: its session, its timer and its end.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "endpoint.h"
#include "session.h"

struct CallSettings {
    std::chrono::milliseconds ring{0};         // how long a call rings before it is taken
    std::chrono::seconds longest{3600};        // limit of a call without a session timer
    std::chrono::seconds shortest_session{90}; // of the session timer (RFC 4028)
    Media media;
};

class Call {
  public:
    using EndHandler = std::function<void()>;

    // The settings must outlive the call. When it is over, on_end is called once, and not from within the call.
    Call(asio::io_context &io, Endpoint &endpoint, const CallSettings &settings, const Dialog &with, EndHandler on_end);

    // Answers the INVITE of the other side. Returns false if the call does not begin.
    bool start(const Received &request, const ResponseHead &head);
    // Begins a call of this side that the other one has taken.
    void run();

    // Refuses a request that is too late or out of order.
    bool refuses(const Received &request, const ResponseHead &head);

    // Requests that are in order, and ACK
    void on_ack(const Received &request);
    void on_prack(const Received &request, const ResponseHead &head);
    void on_invite(const Received &request, const ResponseHead &head);
    void on_update(const Received &request, const ResponseHead &head);
    void on_bye(const ResponseHead &head);
    void on_cancel(ResponseHead head);

    bool was_taken() const { return was_taken_; }

    Dialog dialog;

  private:
    // In the order of a call. A refused one waits for the ACK.
    enum class State { proving, ringing, taken, running, refused, over };

    void progress();
    void ring();
    void take_after_ringing();
    void take();
    void terminate(sip_code_method status);
    void hang_up();
    void finish();

    std::optional<SIP_SDP> describe(const Received &request, const ResponseHead &head);
    void add_contact(SIP_CODE_MSG &response) const;
    SIP_CODE_MSG accepted(const ResponseHead &head) const;
    void set_timer(const Received &request);

    void await_answer(SIP_CODE_MSG &response);
    void send_later();
    void give_up();

    asio::io_context &io_;
    Endpoint &endpoint_;
    const CallSettings &settings_;
    EndHandler on_end_;
    State state_ = State::ringing;
    bool was_taken_ = false;
    std::optional<ResponseHead> invite_; // the last one of the other side
    SIP_SDP sdp_{};                      // the answer to the first one, or an offer
    bool has_offer_ = false;             // the first one
    bool sdp_is_sent_ = false;
    long version_; // of the last description
    int rseq_ = 0;
    SIP_SESSION_EXPIRES session_timer_{};

    Alarm alarm_;
    std::string unanswered_; // the response that waits for PRACK or ACK
    std::chrono::steady_clock::duration interval_{};
    std::chrono::steady_clock::time_point answer_due_{};
};
