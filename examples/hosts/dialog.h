// The state of a request until it is answered, and of a call or subscription while it lasts.
#pragma once

#include <string>

#include <sipcode/code.h>

#include "transport.h"

// What a response repeats of its request (RFC 3261 section 8.2.6), the tag of this side, and where the response goes.
// The decoded record itself is not sent back: the encoder would write headers that belong only to the request.
class ResponseHead {
  public:
    ResponseHead(const SIP_CODE_MSG &request, const Peer &from);

    SIP_CODE_MSG response(sip_code_method status) const;

    std::string transaction; // key of the request and its repetitions (RFC 3261 section 17.2.3)
    Peer peer;
    SIP_CSEQ cseq;
    SIP_FROMTO from;
    SIP_FROMTO to;
    SIP_RECORD_ROUTE record_route;
    std::string callid;

  private:
    int via_count_;
    SIP_VIA via_;
    SIP_VIA via1_;
    std::string korvadex_;
};

// The key of the transaction that a request belongs to, as if it had this method. The key of a CANCEL differs from that
// of its INVITE only in the method.
std::string transaction_name(const SIP_CODE_MSG &request, int method);

// One side of a dialog (RFC 3261 section 12).
struct Dialog {
    // As the side that received the request.
    Dialog(const ResponseHead &head, const SIP_CODE_MSG &request);
    // As the side that sent the request.
    Dialog(const SIP_CODE_MSG &request, const SIP_CODE_MSG &response, const Peer &peer);

    // The next request of this side in the dialog.
    SIP_CODE_MSG request(sip_code_method method);
    SIP_CODE_MSG ack(int cseq) const;

    std::string callid;
    SIP_FROMTO local;
    SIP_FROMTO remote;
    SIP_CONTACT target;
    SIP_RECORD_ROUTE routes;
    int local_cseq = 0;
    int remote_cseq = 0;
    Peer peer; // source of its last message; neither names nor routes are resolved

  private:
    SIP_CODE_MSG message(sip_code_method method, int cseq) const;
};

// The key of a dialog on the side whose tag this is.
std::string dialog_name(std::string_view callid, std::string_view local_tag);
