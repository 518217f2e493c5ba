// Offer and answer of a session description (RFC 3264).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <sipcode/code.h>

// The address and codecs of this side. The examples send and receive no media.
struct Media {
    std::string ip = "127.0.0.1";
    int port = 40000;
    std::vector<e_codec> codecs = {G711_A, G711_U, G729, G722, GSM, ILBC};
};

// Writes the answer to an offer into sdp. It takes one audio stream, which must be the first one, and one video stream,
// both RTP/AVP, and declines all others. Returns false if nothing can be taken.
bool answer_offer(std::string_view offer, const Media &media, SIP_SDP &sdp);

SIP_SDP make_offer(const Media &media);

enum class Body { none, session, other };
Body body_of(const SIP_CODE_MSG &message);

// Makes the description the body of a message. Each description that a side sends in a session has a higher version.
void set_session(SIP_CODE_MSG &message, const SIP_SDP &sdp, long version);
