// The answering host: it passes each request to the part that handles its method.
#pragma once

#include <string>
#include <vector>

#include "calls.h"
#include "hosts/endpoint.h"
#include "notifier.h"
#include "registrar.h"

struct HostSettings {
    unsigned short port = 5060;
    bool trace = false;
    Capture *capture = nullptr; // none if null
    std::string realm = "example.com";
    std::vector<Account> accounts;
    bool authenticate = false; // callers need an account
    CallSettings calls;
};

class AnsweringHost {
  public:
    AnsweringHost(asio::io_context &io, Output &output, const HostSettings &settings);

    unsigned short port() const { return endpoint_.port(); }

    // A summary of what happened so far, on one line.
    std::string summary() const;

  private:
    void on_request(const Received &request, const Peer &from);
    void on_options(const Received &request, const Peer &from);
    void on_message(const Received &request, const Peer &from);

    Output &output_;
    Trace trace_;
    Endpoint endpoint_;
    Registrar registrar_;
    Calls calls_;
    Notifier notifier_;
};
