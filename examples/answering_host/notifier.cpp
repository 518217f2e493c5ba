// SUBSCRIBE and REFER, see notifier.h.
#include "notifier.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "calls.h"
#include "hosts/records.h"
#include "registrar.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t max_subscriptions = 10000;
constexpr int longest_expiry = 3600; // seconds
constexpr std::string_view summary_event = "message-summary";

// This host stores no messages. Every mailbox reports the same few.
constexpr int new_messages = 2;
constexpr int old_messages = 8;

std::string_view event_of(const Received &request) {
    const std::string_view event = request.event.content;
    return event.substr(0, event.find_first_of("; \t"));
}

} // namespace

struct Notifier::Subscription {
    Subscription(asio::io_context &io, const Dialog &with) : dialog(with), alarm(io) {}

    Dialog dialog;
    Clock::time_point until{};
    Alarm alarm;
};

Notifier::Notifier(asio::io_context &io, Endpoint &endpoint, Output &output, Calls &calls, const Registrar &registrar)
    : io_(io), endpoint_(endpoint), output_(output), calls_(calls), registrar_(registrar) {}

Notifier::~Notifier() = default;

// ----------------------------------------------------------------------------------------------------------- SUBSCRIBE

void Notifier::on_subscribe(const Received &request, const Peer &from) {
    const ResponseHead head(request, from);
    if (event_of(request) != summary_event)
        return endpoint_.respond(head, SIP_RESPONSE_MSG_400_BAD_REQUEST); // the codec has no 489
    Subscription *const subscription = find_or_add(request, head);
    if (subscription == nullptr)
        return;
    const int seconds = std::clamp(request.expire.expires, 0, longest_expiry);
    SIP_CODE_MSG response = head.response(SIP_RESPONSE_MSG_200_OK);
    response.expire = {1, seconds};
    response.contact = endpoint_.contact(head.to.user);
    endpoint_.respond(head, response);
    const std::string name = dialog_name(head.callid, head.to.tag);
    if (seconds == 0)
        notify(name, "timeout");
    else
        renew(name, seconds);
}

Notifier::Subscription *Notifier::find_or_add(const Received &request, const ResponseHead &head) {
    const std::string name = dialog_name(head.callid, head.to.tag);
    const bool is_new = request.to.tag[0] == '\0';
    const auto found = subscriptions_.find(name);
    if (found != subscriptions_.end())
        return found->second.get();
    const bool has_room = subscriptions_.size() < max_subscriptions;
    if (!is_new || !has_room) {
        endpoint_.respond(head, is_new ? SIP_RESPONSE_MSG_503 : SIP_RESPONSE_MSG_481_CALL_TRANSACTION_DOES_NOT_EXIST);
        return nullptr;
    }
    return subscriptions_.emplace(name, std::make_unique<Subscription>(io_, Dialog(head, request))).first->second.get();
}

void Notifier::renew(const std::string &name, int seconds) {
    Subscription &subscription = *subscriptions_.at(name);
    subscription.until = Clock::now() + std::chrono::seconds(seconds);
    subscription.alarm.set(std::chrono::seconds(seconds), [this, name] { notify(name, "timeout"); });
    notify(name, "");
}

// A reason ends the subscription. So does a subscriber that refuses the NOTIFY.
void Notifier::notify(const std::string &name, std::string_view reason) {
    Subscription &subscription = *subscriptions_.at(name);
    const auto left = std::chrono::ceil<std::chrono::seconds>(subscription.until - Clock::now()).count();
    SIP_CODE_MSG request = subscription.dialog.request(SIP_REQUEST_MSG_NOTIFY);
    request.contact = endpoint_.contact(subscription.dialog.local.user);
    request.event.use = 1;
    set_text(request.event.content, summary_event);
    request.subscription_state.use = 1;
    set_text(request.subscription_state.content,
             reason.empty() ? fmt::format("active;expires={}", left) : fmt::format("terminated;reason={}", reason));
    request.content.use = 1;
    set_text(request.content.type, "application/simple-message-summary");
    request.message_summary.use = 1;
    set_text(request.message_summary.account, subscription.dialog.local.user);
    request.message_summary.newmsgcount = new_messages;
    request.message_summary.oldmsgcount = old_messages;
    const Peer peer = subscription.dialog.peer;
    if (!reason.empty())
        subscriptions_.erase(name);
    endpoint_.request(request, peer, [this, name](const Received *response, const Peer &) {
        if (response == nullptr || response->status >= 300)
            subscriptions_.erase(name);
    });
}

// --------------------------------------------------------------------------------------------------------------- REFER

namespace {

// The NOTIFY body of a REFER: the status line that the referred call got.
SIP_CODE_MSG report(Dialog &dialog, std::string_view status, std::string_view state) {
    SIP_CODE_MSG request = dialog.request(SIP_REQUEST_MSG_NOTIFY);
    set_text(request.contact.user, dialog.local.user);
    request.event.use = 1;
    set_text(request.event.content, "refer");
    request.subscription_state.use = 1;
    set_text(request.subscription_state.content, state);
    request.content.use = 1;
    set_text(request.content.type, "message/sipfrag;version=2.0");
    request.msg_sdp.use = 1;
    set_text(request.msg_sdp.content, fmt::format("SIP/2.0 {}\r\n", status));
    return request;
}

} // namespace

// Inside a call or outside. This host places no calls: it reports 200 for a user that it knows and 404 for any other.
void Notifier::on_refer(const Received &request, const Peer &from) {
    const ResponseHead head(request, from);
    Dialog own(head, request);
    Dialog *const dialog = request.to.tag[0] == '\0' ? &own : calls_.find_dialog(request, head);
    if (dialog == nullptr)
        return;
    if (request.refer_to.use != 1) {
        endpoint_.respond(head, SIP_RESPONSE_MSG_400_BAD_REQUEST);
        return;
    }
    SIP_CODE_MSG response = head.response(SIP_RESPONSE_MSG_202_OK);
    response.contact = endpoint_.contact(head.to.user);
    endpoint_.respond(head, response);

    const std::string_view target = request.refer_to.refertotel;
    output_.line(fmt::format("{} transfers to {}", printable(request.from.user), printable(target)));
    const SIP_CODE_MSG trying = report(*dialog, "100 Trying", "active;expires=60");
    const SIP_CODE_MSG outcome =
        report(*dialog, registrar_.knows(target) ? "200 OK" : "404 Not Found", "terminated;reason=noresource");
    endpoint_.request(trying, from, [this, outcome](const Received *answer, const Peer &peer) {
        if (answer != nullptr && answer->status < 300)
            endpoint_.request(outcome, peer, [](const Received *, const Peer &) {});
    });
}
