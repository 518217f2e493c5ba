// The calling host: it registers, places a call, sends a digit, transfers the call and hangs up, one step after the
// other.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "hosts/call.h"
#include "hosts/digest.h"
#include "hosts/endpoint.h"

struct CallerSettings {
    unsigned short port = 0;
    bool trace = false;
    Capture *capture = nullptr; // none if null
    TRANS_TYPE_E transport = E_UDP;
    asio::ip::udp::endpoint server;
    Account account{"1001", ""};
    bool registers = false;
    std::string callee;      // none if empty
    std::string digit;       // none if empty
    std::string transfer_to; // none if empty
    std::chrono::milliseconds talk{0};
    CallSettings call{.media = {.port = 41000}};
};

class CallingHost {
  public:
    CallingHost(asio::io_context &io, Output &output, const CallerSettings &settings);

    // Takes the steps. The context stops after the last one, or after the first that fails.
    void start();
    bool succeeded() const { return succeeded_; }

  private:
    using Answered = std::function<void(const Received &response, const Peer &from)>;
    using Refused = std::function<void(const std::string &reason)>;

    // Begun by a provisional response. Each fork of the INVITE has its own.
    struct EarlyDialog {
        Dialog dialog;
        int rseq; // the last one acknowledged
    };

    void register_user();
    void call();
    void send_digit();
    void transfer();
    void hang_up();

    void on_progress(const Received &response, const Peer &from);
    void on_taken(const Received &response, const Peer &from);
    bool is_of_call(const Received &request) const;
    sip_code_method refusal(const Received &request) const;
    void on_request(const Received &request, const Peer &from);
    void on_notify(const Received &request);

    SIP_CODE_MSG request_to_server(sip_code_method method, std::string_view user);
    void ask(const SIP_CODE_MSG &request, Answered on_accepted); // a refusal ends the call
    void ask(const SIP_CODE_MSG &request, Answered on_accepted, Refused on_refused);
    void ask_with_credentials(SIP_CODE_MSG request, const SIP_AUTHEN &challenge, Answered on_accepted,
                              Refused on_refused);
    void stop();
    void fail(std::string_view reason);
    void done(std::string_view what);

    asio::io_context &io_;
    Output &output_;
    CallerSettings settings_;
    Trace trace_;
    Endpoint endpoint_;
    Peer server_;
    Alarm alarm_;
    SIP_CODE_MSG invite_{};                                 // the last one sent
    std::map<std::string, EarlyDialog, std::less<>> early_; // by the tag of the other side
    std::optional<Call> call_;
    int last_cseq_ = 0; // outside the call
    bool hanging_up_ = false;
    bool failed_ = false;
    bool succeeded_ = false;
};
