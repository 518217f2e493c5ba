// The answering host, see host.h.
#include "host.h"

#include <fmt/format.h>

#include "hosts/records.h"

AnsweringHost::AnsweringHost(asio::io_context &io, Output &output, const HostSettings &settings)
    : output_(output), trace_(output, settings.trace),
      endpoint_(io, settings.port, trace_, settings.capture,
                [this](const Received &request, const Peer &from) { on_request(request, from); }),
      registrar_(endpoint_, output, settings.realm, settings.accounts),
      calls_(io, endpoint_, output, registrar_, settings.calls, settings.authenticate),
      notifier_(io, endpoint_, output, calls_, registrar_) {}

void AnsweringHost::on_request(const Received &request, const Peer &from) {
    switch (request.method) {
    case SIP_REQUEST_MSG_INVITE:
        return calls_.on_invite(request, from);
    case SIP_REQUEST_MSG_ACK:
        return calls_.on_ack(request);
    case SIP_REQUEST_MSG_PRACK:
        return calls_.on_prack(request, from);
    case SIP_REQUEST_MSG_UPDATE:
        return calls_.on_update(request, from);
    case SIP_REQUEST_MSG_INFO:
        return calls_.on_info(request, from);
    case SIP_REQUEST_MSG_BYE:
        return calls_.on_bye(request, from);
    case SIP_REQUEST_MSG_CANCEL:
        return calls_.on_cancel(request, from);
    case SIP_REQUEST_MSG_REGISTER:
        return registrar_.on_register(request, from);
    case SIP_REQUEST_MSG_SUBCRIBE:
        return notifier_.on_subscribe(request, from);
    case SIP_REQUEST_MSG_REFER:
        return notifier_.on_refer(request, from);
    case SIP_REQUEST_MSG_OPTION:
        return on_options(request, from);
    case SIP_REQUEST_MSG_MESSAGE:
        return on_message(request, from);
    case SIP_REQUEST_MSG_NOTIFY: // this host has subscribed to nothing
        return endpoint_.respond(ResponseHead(request, from), SIP_RESPONSE_MSG_481_CALL_TRANSACTION_DOES_NOT_EXIST);
    default:
        return endpoint_.respond(ResponseHead(request, from), SIP_RESPONSE_MSG_501_NOT_IMPLEMENTED);
    }
}

void AnsweringHost::on_options(const Received &request, const Peer &from) {
    const ResponseHead head(request, from);
    SIP_CODE_MSG response = head.response(SIP_RESPONSE_MSG_200_OK);
    response.contact = endpoint_.contact("host");
    response.supported.use = 1;
    set_text(response.supported.SUPPORTED, extensions);
    endpoint_.respond(head, response);
}

void AnsweringHost::on_message(const Received &request, const Peer &from) {
    output_.line(fmt::format("{} writes: {}", printable(request.from.user), printable(request.msg_sdp.content)));
    endpoint_.respond(ResponseHead(request, from), SIP_RESPONSE_MSG_200_OK);
}

std::string AnsweringHost::summary() const {
    const Endpoint::Counts &counts = endpoint_.counts();
    return fmt::format(
        "{} messages received, {} refused, {} came again; {} sent, {} sent again; {} calls taken, {} calls and {} "
        "subscriptions left",
        counts.received, counts.refused, counts.repeated, counts.sent, counts.sent_again, calls_.taken(),
        calls_.count(), notifier_.count());
}
