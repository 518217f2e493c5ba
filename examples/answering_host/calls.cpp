// Incoming calls, see calls.h.
#include "calls.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "hosts/records.h"
#include "registrar.h"

namespace {

constexpr std::size_t max_calls = 10000;

} // namespace

Calls::Calls(asio::io_context &io, Endpoint &endpoint, Output &output, Registrar &registrar,
             const CallSettings &settings, bool authenticate)
    : io_(io), endpoint_(endpoint), output_(output), registrar_(registrar), settings_(settings),
      authenticate_(authenticate) {}

// ----------------------------------------------------------------------------------------------------------- new calls

void Calls::on_invite(const Received &request, const Peer &from) {
    const ResponseHead head(request, from);
    if (request.to.tag[0] == '\0') {
        if (admit(request, head))
            start(request, head);
    } else if (Call *const call = find_in_order(request, head)) {
        call->on_invite(request, head);
    }
}

bool Calls::admit(const Received &request, const ResponseHead &head) {
    if (authenticate_ && !registrar_.admit(request, head))
        return false;
    if (calls_.size() < max_calls)
        return true;
    endpoint_.respond(head, SIP_RESPONSE_MSG_503);
    return false;
}

void Calls::start(const Received &request, const ResponseHead &head) {
    const std::string name = dialog_name(head.callid, head.to.tag);
    auto call = std::make_unique<Call>(io_, endpoint_, settings_, Dialog(head, request), [this, name] { erase(name); });
    if (!call->start(request, head))
        return;
    invites_[head.transaction] = call.get();
    calls_[name] = {head.transaction, std::move(call)};
}

void Calls::erase(const std::string &name) {
    const auto &[invite, call] = calls_.at(name);
    over_and_taken_ += call->was_taken() ? 1 : 0;
    invites_.erase(invite);
    calls_.erase(name);
}

std::uint64_t Calls::taken() const {
    return over_and_taken_ +
           static_cast<std::uint64_t>(std::count_if(calls_.begin(), calls_.end(),
                                                    [](const auto &entry) { return entry.second.call->was_taken(); }));
}

// -------------------------------------------------------------------------------------------------------- inside calls

Call *Calls::find(const Received &request) const {
    const auto found = calls_.find(dialog_name(request.callid, request.to.tag));
    return found != calls_.end() ? found->second.call.get() : nullptr;
}

Call *Calls::find_in_order(const Received &request, const ResponseHead &head) const {
    Call *const call = find(request);
    if (call == nullptr)
        endpoint_.respond(head, SIP_RESPONSE_MSG_481_CALL_TRANSACTION_DOES_NOT_EXIST);
    return call == nullptr || call->refuses(request, head) ? nullptr : call;
}

void Calls::on_ack(const Received &request) {
    if (Call *const call = find(request))
        call->on_ack(request);
}

void Calls::on_prack(const Received &request, const Peer &from) {
    const ResponseHead head(request, from);
    if (Call *const call = find_in_order(request, head))
        call->on_prack(request, head);
}

void Calls::on_update(const Received &request, const Peer &from) {
    const ResponseHead head(request, from);
    if (Call *const call = find_in_order(request, head))
        call->on_update(request, head);
}

void Calls::on_info(const Received &request, const Peer &from) {
    const ResponseHead head(request, from);
    if (find_in_order(request, head) == nullptr)
        return;
    if (request.info.use == 1)
        output_.line(fmt::format("digit {} from {}", printable(request.info.key), printable(request.from.user)));
    endpoint_.respond(head, SIP_RESPONSE_MSG_200_OK);
}

void Calls::on_bye(const Received &request, const Peer &from) {
    const ResponseHead head(request, from);
    if (Call *const call = find_in_order(request, head))
        call->on_bye(head);
}

void Calls::on_cancel(const Received &request, const Peer &from) {
    const ResponseHead head(request, from);
    const auto invite = invites_.find(transaction_name(request, SIP_REQUEST_MSG_INVITE));
    if (invite != invites_.end())
        invite->second->on_cancel(head);
    else
        endpoint_.respond(head, SIP_RESPONSE_MSG_481_CALL_TRANSACTION_DOES_NOT_EXIST);
}

Dialog *Calls::find_dialog(const Received &request, const ResponseHead &head) {
    Call *const call = find_in_order(request, head);
    return call != nullptr ? &call->dialog : nullptr;
}
