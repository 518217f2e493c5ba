// SUBSCRIBE to the message summary (RFC 3842, RFC 6665) and REFER (RFC 3515), with the NOTIFY requests that follow.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "hosts/endpoint.h"

class Calls;
class Registrar;

class Notifier {
  public:
    Notifier(asio::io_context &io, Endpoint &endpoint, Output &output, Calls &calls, const Registrar &registrar);
    ~Notifier();

    void on_subscribe(const Received &request, const Peer &from);
    void on_refer(const Received &request, const Peer &from);

    std::size_t count() const { return subscriptions_.size(); }

  private:
    struct Subscription;

    Subscription *find_or_add(const Received &request, const ResponseHead &head);
    void renew(const std::string &name, int seconds);
    void notify(const std::string &name, std::string_view reason);

    asio::io_context &io_;
    Endpoint &endpoint_;
    Output &output_;
    Calls &calls_;
    const Registrar &registrar_;
    std::unordered_map<std::string, std::unique_ptr<Subscription>> subscriptions_; // by dialog
};
