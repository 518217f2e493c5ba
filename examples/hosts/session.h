// Offer and answer of a session description (RFC 3264).
#pragma once

#include <string>
#include <vector>

#include <sipcode/code.h>

// The address and codecs of this side. The examples send and receive no media.
struct Media {
    std::string ip = "127.0.0.1";
    int port = 40000;
    std::vector<e_codec> codecs = {G711_A, G711_U, G729, G722, GSM, ILBC};
};

// Writes the answer to the offer of a request into sdp. Returns false if there is none: without a common codec, or with
// streams that the record cannot tell apart. It takes one audio stream and at most one video stream after it, both
// RTP/AVP.
bool answer_offer(const SIP_CODE_MSG &request, const Media &media, SIP_SDP &sdp);

SIP_SDP make_offer(const Media &media);

bool has_session(const SIP_CODE_MSG &message);

// Makes the description the body of a message. Each description that a side sends in a session has a higher version.
void set_session(SIP_CODE_MSG &message, const SIP_SDP &sdp, long version);
