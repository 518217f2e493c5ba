// REGISTER and credentials, see registrar.h.
#include "registrar.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "hosts/records.h"

namespace {

constexpr int longest_expiry = 3600; // seconds

} // namespace

Registrar::Registrar(Endpoint &endpoint, Output &output, std::string realm, const std::vector<Account> &accounts)
    : endpoint_(endpoint), output_(output), realm_(std::move(realm)) {
    for (const auto &[user, password] : accounts)
        users_[user].password = password;
}

bool Registrar::knows(std::string_view user) const { return users_.find(user) != users_.end(); }

void Registrar::on_register(const Received &request, const Peer &from) {
    const ResponseHead head(request, from);
    if (!admit(request, head))
        return;
    Binding &binding = users_.find(std::string_view(request.from.user))->second.binding;
    bind(request, binding);
    tell(head, binding);
}

bool Registrar::admit(const Received &request, const ResponseHead &head) {
    const bool is_register = request.method == SIP_REQUEST_MSG_REGISTER;
    const SIP_AUTHOR &credentials = request.author;
    if (credentials.use != 1 || !nonces_.is_fresh(credentials.nonce)) {
        challenge(head,
                  is_register ? SIP_RESPONSE_MSG_401_UNAUTHORIZED : SIP_RESPONSE_MSG_407_PROXY_AUTHENTICATION_REQUIRED);
        return false;
    }
    const std::string_view user = is_register ? request.to.user : request.from.user;
    if (user != credentials.username || user != request.from.user || !is_right(credentials, request.method)) {
        endpoint_.respond(head, SIP_RESPONSE_MSG_403_FORBIDDEN);
        return false;
    }
    return true;
}

// The challenge has no qop. Its check would need cnonce and nonce count, which the decoder does not read.
void Registrar::challenge(const ResponseHead &head, sip_code_method status) {
    SIP_CODE_MSG response = head.response(status);
    response.authen.use = 1;
    response.authen.authen_type = status;
    set_text(response.authen.realm, realm_);
    set_text(response.authen.nonce, nonces_.make());
    endpoint_.respond(head, response);
}

bool Registrar::is_right(const SIP_AUTHOR &credentials, int method) const {
    const auto user = users_.find(std::string_view(credentials.username));
    return user != users_.end() && realm_ == credentials.realm &&
           same_digest(credentials.response, digest(credentials, user->second.password, name_of(method)));
}

// One binding for each user: the record holds one Contact. A request without Contact is a query.
void Registrar::bind(const Received &request, Binding &binding) {
    if (request.expire.expires == 0) {
        binding = {};
    } else if (request.contact.addr.ip[0] != '\0') {
        const int seconds = std::clamp(request.expire.expires, 1, longest_expiry);
        binding = {request.contact, Clock::now() + std::chrono::seconds(seconds)};
        output_.line(fmt::format("{} is at {}:{} for {} s", printable(request.to.user),
                                 printable(binding.contact.addr.ip), binding.contact.addr.port, seconds));
    }
}

void Registrar::tell(const ResponseHead &head, const Binding &binding) {
    SIP_CODE_MSG response = head.response(SIP_RESPONSE_MSG_200_OK);
    const auto left = std::chrono::ceil<std::chrono::seconds>(binding.until - Clock::now()).count();
    if (binding.contact.addr.ip[0] != '\0' && left > 0) {
        response.contact = binding.contact;
        response.expire = {1, static_cast<int>(left)};
    } else {
        response.expire = {1, 0};
    }
    response.date.use = 1;
    endpoint_.respond(head, response);
}
