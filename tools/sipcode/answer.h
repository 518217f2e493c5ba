// The answer to a received request.
#pragma once

#include <optional>
#include <string>

#include "code.h"

struct AnswerSettings {
    sip_code_method status;
    TRANS_TYPE_E transport = E_UDP;
    std::string to_tag; // if empty, that of the request, or a new one
    std::string realm;  // of a challenge; if empty, the host of the request URI
    std::string nonce;  // of a challenge; if empty, a new one
    std::optional<SIP_CONTACT> contact;
    std::optional<IPV4_ADDRESS> media; // where the peer is to send the stream; without it the answer has no body
};

struct Answer {
    SIP_CODE_MSG record;
    std::string refusal; // why the request cannot be answered; empty if it can
};

// Copies from the request only what its answer repeats, so nothing else is echoed.
Answer answer(const SIP_CODE_MSG &request, const AnswerSettings &settings);
