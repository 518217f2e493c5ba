// Incoming calls: who may call, and which call a request belongs to.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "hosts/call.h"

class Registrar;

class Calls {
  public:
    // With authenticate callers need an account.
    Calls(asio::io_context &io, Endpoint &endpoint, Output &output, Registrar &registrar, const CallSettings &settings,
          bool authenticate);

    void on_invite(const Received &request, const Peer &from);
    void on_ack(const Received &request);
    void on_prack(const Received &request, const Peer &from);
    void on_update(const Received &request, const Peer &from);
    void on_info(const Received &request, const Peer &from);
    void on_bye(const Received &request, const Peer &from);
    void on_cancel(const Received &request, const Peer &from);

    // The dialog of the call that a request belongs to. Null if there is none, or if the request is out of order. Both
    // are refused.
    Dialog *find_dialog(const Received &request, const ResponseHead &head);

    std::size_t count() const { return calls_.size(); }
    std::uint64_t taken() const;

  private:
    struct Entry {
        std::string invite; // its first transaction
        std::unique_ptr<Call> call;
    };

    Call *find(const Received &request) const;
    Call *find_in_order(const Received &request, const ResponseHead &head) const;
    bool admit(const Received &request, const ResponseHead &head);
    void start(const Received &request, const ResponseHead &head);
    void erase(const std::string &name);

    asio::io_context &io_;
    Endpoint &endpoint_;
    Output &output_;
    Registrar &registrar_;
    CallSettings settings_;
    bool authenticate_;
    std::unordered_map<std::string, Entry> calls_;    // by dialog
    std::unordered_map<std::string, Call *> invites_; // by their first transaction
    std::uint64_t over_and_taken_ = 0;
};
