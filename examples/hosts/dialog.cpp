// The state of requests and dialogs, see dialog.h.
#include "dialog.h"

#include <fmt/format.h>

#include <sipcode/encode.h>

#include "records.h"

std::string transaction_name(const SIP_CODE_MSG &request, int method) {
    const SIP_VIA &top = request.via_count == 2 ? request.via1 : request.via;
    return fmt::format("{} {}:{} {} {} {} {}", top.branch, top.addr.ip, top.addr.port, request.callid, request.from.tag,
                       request.cseq.seq, method);
}

std::string dialog_name(std::string_view callid, std::string_view local_tag) {
    return fmt::format("{} {}", callid, local_tag);
}

// ----------------------------------------------------------------------------------------------------------- responses

ResponseHead::ResponseHead(const SIP_CODE_MSG &request, const Peer &source)
    : transaction(transaction_name(request, request.method)), peer(source), cseq(request.cseq), from(request.from),
      to(request.to), record_route(request.record_route), callid(request.callid), via_count_(request.via_count),
      via_(request.via), via1_(request.via1), korvadex_(request.korvadex) {
    if (to.tag[0] == '\0')
        Build_Tag(to.tag);
    to.tag_use = 1;
}

SIP_CODE_MSG ResponseHead::response(sip_code_method status) const {
    SIP_CODE_MSG made{};
    made.method = status;
    made.via_count = via_count_;
    made.via = via_;
    made.via1 = via1_;
    made.cseq = cseq;
    made.from = from;
    made.to = to;
    if (status == SIP_RESPONSE_MSG_100_TRY)
        made.to.tag[0] = '\0';
    made.record_route = record_route;
    set_text(made.callid, callid);
    set_text(made.korvadex, korvadex_);
    return made;
}

// ------------------------------------------------------------------------------------------------------------- dialogs

namespace {

// The encoder writes a user part in most request lines. A contact without one gets that of its party.
SIP_CONTACT target_of(const SIP_CODE_MSG &message, const SIP_FROMTO &party, const Peer &peer) {
    SIP_CONTACT target = message.contact;
    if (target.user[0] == '\0')
        set_text(target.user, party.user);
    if (target.addr.ip[0] == '\0') {
        set_text(target.addr.ip, peer.address.address().to_string());
        target.addr.port = peer.address.port();
    }
    return target;
}

} // namespace

Dialog::Dialog(const ResponseHead &head, const SIP_CODE_MSG &request)
    : callid(head.callid), local(head.to), remote(head.from), target(target_of(request, head.from, head.peer)),
      routes(head.record_route), remote_cseq(head.cseq.seq), peer(head.peer) {}

Dialog::Dialog(const SIP_CODE_MSG &request, const SIP_CODE_MSG &response, const Peer &source)
    : callid(response.callid), local(request.from), remote(response.to),
      target(target_of(response, response.to, source)), routes(response.record_route), local_cseq(request.cseq.seq),
      peer(source) {}

SIP_CODE_MSG Dialog::request(sip_code_method method) { return message(method, ++local_cseq); }

SIP_CODE_MSG Dialog::ack(int cseq) const { return message(SIP_REQUEST_MSG_ACK, cseq); }

SIP_CODE_MSG Dialog::message(sip_code_method method, int cseq) const {
    SIP_CODE_MSG made{};
    made.method = method;
    made.cseq = {cseq, method};
    set_text(made.callid, callid);
    made.from = local;
    made.to = remote;
    made.to.tag_use = 1;
    set_text(made.uri.user, target.user);
    made.uri.addr = target.addr;
    made.record_route = routes;
    return made;
}
