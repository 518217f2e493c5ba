// Digest authentication, see digest.h.
#include "digest.h"

#include <array>
#include <charconv>
#include <chrono>
#include <random>
#include <stdexcept>

#include <fmt/format.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>

#include "records.h"

namespace {

constexpr long nonce_lifetime = 300; // seconds

std::string md5(std::string_view text) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> hash;
    unsigned length = 0;
    if (EVP_Digest(text.data(), text.size(), hash.data(), &length, EVP_md5(), nullptr) != 1)
        throw std::runtime_error("OpenSSL offers no MD5");
    std::string digits;
    for (unsigned i = 0; i < length; ++i)
        digits += fmt::format("{:02x}", hash[i]);
    return digits;
}

long now() {
    using namespace std::chrono;
    return duration_cast<seconds>(steady_clock::now().time_since_epoch()).count();
}

std::string random_digits() {
    std::random_device random;
    return fmt::format("{:08x}{:08x}{:08x}{:08x}", random(), random(), random(), random());
}

} // namespace

NonceMaker::NonceMaker() : secret_(random_digits()) {}

std::string NonceMaker::make() const {
    const std::string time = fmt::format("{:x}", now());
    return time + '-' + sign(time);
}

bool NonceMaker::is_fresh(std::string_view nonce) const {
    const std::size_t dash = nonce.find('-');
    if (dash == std::string_view::npos || !same_digest(nonce.substr(dash + 1), sign(nonce.substr(0, dash))))
        return false;
    long time = 0;
    std::from_chars(nonce.data(), nonce.data() + dash, time, 16);
    return now() - time <= nonce_lifetime;
}

std::string NonceMaker::sign(std::string_view time) const { return md5(fmt::format("{}:{}", time, secret_)); }

std::string digest(const SIP_AUTHOR &credentials, const std::string &password, std::string_view method) {
    const auto &[use, type, stale, count, username, realm, nonce, uri, response, algorithm, cnonce, qop] = credentials;
    const std::string who = md5(fmt::format("{}:{}:{}", username, realm, password));
    const std::string what = md5(fmt::format("{}:{}", method, uri));
    if (qop[0] == '\0')
        return md5(fmt::format("{}:{}:{}", who, nonce, what));
    return md5(fmt::format("{}:{}:{:08x}:{}:auth:{}", who, nonce, count, cnonce, what));
}

// Takes the same time however many characters agree.
bool same_digest(std::string_view a, std::string_view b) {
    return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

SIP_AUTHOR answer_challenge(const SIP_AUTHEN &challenge, const Account &account, std::string_view method,
                            std::string_view uri) {
    SIP_AUTHOR credentials{};
    credentials.use = 1;
    credentials.author_type = challenge.authen_type; // chooses the header that the encoder writes
    set_text(credentials.username, account.user);
    set_text(credentials.realm, challenge.realm);
    set_text(credentials.nonce, challenge.nonce);
    set_text(credentials.uri, uri);
    if (lists(challenge.qop, "auth")) {
        set_text(credentials.qop, "auth");
        set_text(credentials.cnonce, random_digits());
        credentials.noncecount = 1;
    }
    set_text(credentials.response, digest(credentials, account.password, method));
    return credentials;
}
