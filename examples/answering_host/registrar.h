// REGISTER (RFC 3261 section 10) with digest authentication, and the check of credentials for other requests.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "hosts/digest.h"
#include "hosts/endpoint.h"

class Registrar {
  public:
    Registrar(Endpoint &endpoint, Output &output, std::string realm, const std::vector<Account> &accounts);

    void on_register(const Received &request, const Peer &from);

    bool knows(std::string_view user) const;

    // Returns true for a request with valid credentials of the account in From. Refuses any other request.
    bool admit(const Received &request, const ResponseHead &head);

  private:
    using Clock = std::chrono::steady_clock;

    struct Binding {
        SIP_CONTACT contact{};
        Clock::time_point until{};
    };
    struct User {
        std::string password;
        Binding binding;
    };

    void challenge(const ResponseHead &head, sip_code_method status);
    bool is_right(const SIP_AUTHOR &credentials, int method) const;
    void bind(const Received &request, Binding &binding);
    void tell(const ResponseHead &head, const Binding &binding);

    Endpoint &endpoint_;
    Output &output_;
    std::string realm_;
    NonceMaker nonces_;
    std::map<std::string, User, std::less<>> users_;
};
