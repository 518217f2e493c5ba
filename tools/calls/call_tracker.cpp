// Messages to calls, see call_tracker.h.
#include "call_tracker.h"

#include <algorithm>
#include <iterator>

#include "safe.h"

namespace {

constexpr Microseconds second = 1'000'000;

// How many calls may share a Call-ID. Their tags differ.
constexpr std::size_t most_with_call_id = 16;

bool is_one_of(std::string_view method, std::initializer_list<std::string_view> methods) {
    return std::find(methods.begin(), methods.end(), method) != methods.end();
}

Kind kind_of(const MessageFacts &facts) {
    if (facts.method == "REGISTER")
        return Kind::registration;
    if (is_one_of(facts.method, {"SUBSCRIBE", "NOTIFY", "PUBLISH"}))
        return Kind::subscription;
    if (facts.method == "MESSAGE")
        return Kind::message;
    const bool is_within_dialog = facts.is_request() && !facts.to_tag.empty();
    if (is_within_dialog || is_one_of(facts.method, {"INVITE", "ACK", "BYE", "CANCEL", "PRACK", "UPDATE"}))
        return Kind::call;
    return Kind::other;
}

// Whether what the message belongs to began before it.
bool is_joined(const MessageFacts &facts) {
    return !facts.is_request() || !facts.to_tag.empty() || is_one_of(facts.method, {"ACK", "BYE", "CANCEL", "PRACK"});
}

Outcome outcome_of(int status) {
    switch (status) {
    case 486:
    case 600:
        return Outcome::busy;
    case 408:
    case 480:
        return Outcome::no_answer;
    case 487:
        return Outcome::cancelled;
    default:
        return Outcome::refused;
    }
}

bool is_challenge(int status) { return status == 401 || status == 407; }

// Whether a message may belong to what was begun with one of its tags: a call may follow an OPTIONS of the same dialog.
bool fits(const Call &call, const MessageFacts &facts) {
    return call.kind == Kind::call || call.method == facts.method || kind_of(facts) != Kind::call;
}

std::size_t hash_of(const MessageFacts &facts) {
    std::size_t hash = static_cast<std::size_t>(facts.status) * 31 + facts.cseq;
    for (const std::string_view part : {facts.method, facts.branch, facts.to_tag})
        hash = hash * 1099511628211U ^ std::hash<std::string_view>()(part);
    return hash | 1; // never that of an empty place
}

// Fills what a call takes from its first message.
void describe(Call &call, const CapturedMessage &message, const MessageFacts &facts) {
    call.kind = kind_of(facts);
    call.outcome = is_joined(facts) ? Outcome::joined : Outcome::unanswered;
    call.method = facts.method;
    call.from = user_of(facts.from);
    call.to = user_of(facts.to);
    call.uri_user = user_of(facts.uri);
    call.other_users = facts.names_others ? other_users(message.text) : "";
    call.source = message.source;
    call.destination = message.destination;
    call.start = message.mark;
}

} // namespace

Microseconds time_of(const PacketMark &mark) {
    constexpr std::int64_t longest = 4'000'000'000'000; // of two times, the difference fits too
    return std::clamp(mark.seconds, -longest, longest) * second + mark.microseconds;
}

std::string_view kind_name(Kind kind) {
    constexpr std::string_view names[] = {"call", "registration", "subscription", "message", "other"};
    return names[static_cast<std::size_t>(kind)];
}

std::string_view outcome_name(Outcome outcome) {
    constexpr std::string_view names[] = {"answered", "busy",       "no answer", "cancelled",
                                          "refused",  "unanswered", "up",        "joined"};
    return names[static_cast<std::size_t>(outcome)];
}

std::string_view outcome_name(const Call &call) {
    return call.kind != Kind::call && call.outcome == Outcome::answered ? "accepted" : outcome_name(call.outcome);
}

std::optional<Microseconds> Call::length() const {
    if (!answered || !ended)
        return std::nullopt;
    return *ended - *answered;
}

void CallTracker::add(const CapturedMessage &message, const MessageFacts &facts) {
    now_ = std::max(now_, time_of(message.mark));
    sweep();
    const std::optional<List::iterator> known = find(facts);
    const List::iterator found = known ? *known : begin(message, facts);
    Tracked &tracked = *found;
    // Packets may be out of order: the 100 before the INVITE.
    if (tracked.call.outcome == Outcome::joined && facts.method == tracked.call.method && !is_joined(facts))
        describe(tracked.call, message, facts);
    ++tracked.call.messages;
    State state = tracked.state;
    const std::size_t hash = hash_of(facts);
    if (std::find(tracked.seen.begin(), tracked.seen.end(), hash) != tracked.seen.end()) {
        ++tracked.call.repeated;
    } else {
        tracked.seen[tracked.next_seen++ % tracked.seen.size()] = hash;
        if (!tracked.call.answered)
            read_codecs(tracked.call, message.text, facts);
        state = facts.is_request() ? take_request(tracked, facts) : take_response(tracked, facts);
    }
    tracked.last = now_;
    lists_[state].splice(lists_[state].end(), lists_[tracked.state], found);
    tracked.state = state;
}

void CallTracker::finish() {
    std::vector<List::iterator> left;
    for (List &list : lists_) {
        for (auto tracked = list.begin(); tracked != list.end(); ++tracked)
            left.push_back(tracked);
    }
    std::sort(left.begin(), left.end(), [](const List::iterator &a, const List::iterator &b) {
        return time_of(a->call.start) < time_of(b->call.start);
    });
    for (const List::iterator &tracked : left)
        end(tracked);
}

std::optional<CallTracker::List::iterator> CallTracker::find(const MessageFacts &facts) {
    const auto [first, last] = by_call_id_.equal_range(facts.call_id);
    std::size_t count = 0;
    auto found = last;
    for (auto entry = first; entry != last; ++entry, ++count) {
        const std::string &tag = entry->second->caller_tag;
        if (!fits(entry->second->call, facts))
            continue;
        if (tag == facts.from_tag || (!tag.empty() && tag == facts.to_tag))
            found = entry;
    }
    if (found == last) {
        // A message within a dialog belongs to a call even if its tags have changed.
        const bool begins = facts.is_request() && facts.to_tag.empty();
        if (count == 0 || (count < most_with_call_id && (begins || !fits(first->second->call, facts))))
            return std::nullopt;
        found = first;
    }
    const List::iterator tracked = found->second;
    const bool is_next = tracked->state == over && tracked->call.kind != Kind::call && facts.is_request() &&
                         facts.method == tracked->call.method && facts.cseq != tracked->last_cseq;
    if (!is_next)
        return tracked;
    end(tracked); // a registration that is renewed is another one
    return std::nullopt;
}

CallTracker::List::iterator CallTracker::begin(const CapturedMessage &message, const MessageFacts &facts) {
    if (by_call_id_.size() >= most_tracked)
        give_up_oldest();
    Tracked &tracked = lists_[pending].emplace_back();
    Call &call = tracked.call;
    call.call_id = facts.call_id;
    describe(call, message, facts);
    tracked.caller_tag = facts.from_tag;
    tracked.last_try = now_;
    const List::iterator added = std::prev(lists_[pending].end());
    by_call_id_.emplace(added->call.call_id, added);
    return added;
}

CallTracker::State CallTracker::take_request(Tracked &tracked, const MessageFacts &facts) const {
    Call &call = tracked.call;
    if (facts.method == "BYE")
        return take_bye(tracked, facts);
    if (facts.method == "CANCEL" && call.outcome == Outcome::unanswered)
        call.outcome = Outcome::cancelled;
    if (facts.method != call.method)
        return tracked.state;
    tracked.last_cseq = facts.cseq;
    if (call.answered || call.outcome == Outcome::joined)
        return tracked.state;
    // Another try, after a challenge for example, has an outcome of its own.
    tracked.last_try = now_;
    call.outcome = Outcome::unanswered;
    call.status = 0;
    return pending;
}

// The call is over with its last dialog: more than one fork may have answered.
CallTracker::State CallTracker::take_bye(Tracked &tracked, const MessageFacts &facts) const {
    bool is_of_fork = false;
    bool is_up = false;
    for (Fork &fork : tracked.forks) {
        if (fork.tag == facts.from_tag || fork.tag == facts.to_tag) {
            is_of_fork = true;
            fork.is_up = false;
        }
        is_up = is_up || fork.is_up;
    }
    if (is_of_fork && is_up)
        return tracked.state;
    if (!tracked.call.ended)
        tracked.call.ended = now_ - time_of(tracked.call.start);
    return over;
}

void CallTracker::note_fork(Tracked &tracked, const MessageFacts &facts) {
    if (facts.from_tag != tracked.caller_tag || facts.to_tag.empty() || facts.status <= 100 || facts.status >= 300)
        return;
    std::vector<Fork> &forks = tracked.forks;
    auto fork = std::find_if(forks.begin(), forks.end(), [&](const Fork &known) { return known.tag == facts.to_tag; });
    if (fork == forks.end()) {
        if (forks.size() == most_forks)
            return;
        fork = forks.insert(forks.end(), {std::string(facts.to_tag), false});
    }
    fork->is_up = fork->is_up || facts.status >= 200;
    tracked.call.forks = forks.size();
}

CallTracker::State CallTracker::take_response(Tracked &tracked, const MessageFacts &facts) const {
    Call &call = tracked.call;
    if (facts.method != call.method || call.outcome == Outcome::joined)
        return tracked.state;
    note_fork(tracked, facts);
    if (call.answered)
        return tracked.state;
    if (facts.status > 100 && !is_challenge(facts.status) && !call.delay)
        call.delay = now_ - tracked.last_try;
    if (facts.status >= 200)
        return take_final(tracked, facts);
    if (facts.status > 100 && !call.ringing)
        call.ringing = now_ - time_of(call.start);
    return tracked.state;
}

CallTracker::State CallTracker::take_final(Tracked &tracked, const MessageFacts &facts) const {
    Call &call = tracked.call;
    call.status = facts.status;
    if (facts.status >= 300) {
        call.outcome = outcome_of(facts.status);
        return is_challenge(facts.status) ? challenged : over;
    }
    call.outcome = Outcome::answered;
    call.answered = now_ - time_of(call.start);
    return call.kind == Kind::call ? up : over;
}

// Of the setup only: the offer, and then the answer.
void CallTracker::read_codecs(Call &call, std::string_view message, const MessageFacts &facts) {
    if (call.kind != Kind::call || facts.method != "INVITE" || !may_have_session(message))
        return;
    if (SIP_Decode_Buffer(message.data(), message.size(), &record_, nullptr) != SIP_DECODE_DONE ||
        record_.sdp.a_use != 1)
        return;
    call.codecs.clear();
    std::copy_if(std::begin(record_.sdp.a_coders), std::end(record_.sdp.a_coders), std::back_inserter(call.codecs),
                 [](int codec) { return codec > UNKONW && codec < SIP_CODE_CODEC_COUNT; });
}

void CallTracker::give_up_oldest() {
    const List *oldest = nullptr;
    for (const List &list : lists_) {
        if (!list.empty() && (oldest == nullptr || list.front().last < oldest->front().last))
            oldest = &list;
    }
    ++given_up_;
    end(lists_[oldest->front().state].begin());
}

void CallTracker::end(List::iterator tracked) {
    Call &call = tracked->call;
    if (call.kind == Kind::call && call.outcome == Outcome::answered && !call.ended)
        call.outcome = Outcome::up;
    const auto [first, last] = by_call_id_.equal_range(call.call_id);
    by_call_id_.erase(std::find_if(first, last, [&](const auto &entry) { return entry.second == tracked; }));
    report_(call);
    lists_[tracked->state].erase(tracked);
}

void CallTracker::sweep() {
    // How long a call in each state may be silent. Of RFC 3261: timer C for a final response, timer B for another try,
    // T2 and a second of delay for a repetition. A call that is up may be silent for hours.
    constexpr std::array<Microseconds, states> patience = {180 * second, 32 * second, INT64_MAX, 5 * second};
    for (std::size_t state = 0; state < states; ++state) {
        while (!lists_[state].empty() && now_ - lists_[state].front().last > patience[state])
            end(lists_[state].begin());
    }
}
