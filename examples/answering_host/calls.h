// Incoming calls, from the INVITE to the BYE.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "hosts/endpoint.h"
#include "hosts/session.h"

class Registrar;

struct CallSettings {
    std::chrono::milliseconds ring{0};         // how long a call rings before it is taken
    std::chrono::seconds longest{3600};        // limit of a call without a session timer
    std::chrono::seconds shortest_session{90}; // of the session timer (RFC 4028)
    bool authenticate = false;                 // callers need an account
    Media media;
};

class Calls {
  public:
    static constexpr std::string_view extensions = "100rel,timer";

    Calls(asio::io_context &io, Endpoint &endpoint, Output &output, Registrar &registrar, const CallSettings &settings);
    ~Calls();

    void on_invite(const SIP_CODE_MSG &request, const Peer &from);
    void on_ack(const SIP_CODE_MSG &request);
    void on_prack(const SIP_CODE_MSG &request, const Peer &from);
    void on_update(const SIP_CODE_MSG &request, const Peer &from);
    void on_info(const SIP_CODE_MSG &request, const Peer &from);
    void on_bye(const SIP_CODE_MSG &request, const Peer &from);
    void on_cancel(const SIP_CODE_MSG &request, const Peer &from);

    // The call whose dialog a request belongs to. Null if there is none, or if the request is out of order. Both are
    // refused.
    Dialog *find_dialog(const SIP_CODE_MSG &request, const ResponseHead &head);

    std::size_t count() const { return calls_.size(); }
    std::uint64_t taken() const { return taken_; }

  private:
    struct Call;

    Call *find(const SIP_CODE_MSG &request);
    Call *find_in_order(const SIP_CODE_MSG &request, const ResponseHead &head);
    bool refused(const SIP_CODE_MSG &request, const ResponseHead &head);
    std::optional<SIP_SDP> describe(const SIP_CODE_MSG &request) const;

    void start(const SIP_CODE_MSG &request, const ResponseHead &head);
    void progress(Call &call);
    void ring(Call &call);
    void take_after_ringing(Call &call);
    void take(Call &call);
    void change(Call &call, const SIP_CODE_MSG &request, const ResponseHead &head);
    void terminate(Call &call, sip_code_method status);

    void add_contact(SIP_CODE_MSG &response) const;
    SIP_CODE_MSG accepted(const Call &call, const ResponseHead &head) const;
    void set_timer(Call &call, const SIP_CODE_MSG &request) const;

    void await_answer(Call &call, SIP_CODE_MSG &response);
    void send_later(Call &call);
    void give_up(Call &call);
    void run(Call &call);
    void hang_up(Call &call);
    void erase(const Call &call);

    asio::io_context &io_;
    Endpoint &endpoint_;
    Output &output_;
    Registrar &registrar_;
    CallSettings settings_;
    std::unordered_map<std::string, std::unique_ptr<Call>> calls_; // by dialog
    std::unordered_map<std::string, Call *> invites_;              // by the transaction of an INVITE without its ACK
    std::uint64_t taken_ = 0;
};
