// Digest authentication (RFC 2617, MD5), both sides.
#pragma once

#include <string>
#include <string_view>

#include <sipcode/code.h>

struct Account {
    std::string user;
    std::string password;
};

// Nonces without a table: the time, signed with a secret that lives as long as the object.
class NonceMaker {
  public:
    NonceMaker();
    std::string make() const;
    bool is_fresh(std::string_view nonce) const;

  private:
    std::string sign(std::string_view time) const;

    std::string secret_;
};

// The "response" of the credentials for a request. qop, cnonce and nonce count are used only if qop is not empty.
std::string digest(const SIP_AUTHOR &credentials, const std::string &password, std::string_view method);

bool same_digest(std::string_view a, std::string_view b);

// Credentials that answer a challenge.
SIP_AUTHOR answer_challenge(const SIP_AUTHEN &challenge, const Account &account, std::string_view method,
                            std::string_view uri);
