// Messages to calls. A call is what has one Call-ID and one tag of the caller: the tries that were challenged, all
// forks, and everything within its dialogs. Registrations, subscriptions and other requests outside of calls are
// tracked alike.
//
// Memory is bounded: at most most_tracked of them are kept at a time. If there are more, the one that was silent for
// the longest time is reported as it is.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "capture_messages.h"
#include "code.h"
#include "message_facts.h"

using Microseconds = std::int64_t; // since 1970-01-01 UTC, or a difference

Microseconds time_of(const PacketMark &mark);

enum class Kind { call, registration, subscription, message, other };

enum class Outcome {
    answered,
    busy,       // 486 or 600
    no_answer,  // 408 or 480
    cancelled,  // 487
    refused,    // another final status of 300 or more
    unanswered, // no final response
    up,         // answered, and not hung up when the capture ends
    joined,     // it began before the capture
};

std::string_view kind_name(Kind kind);
std::string_view outcome_name(Outcome outcome);

struct Call {
    Kind kind = Kind::call;
    Outcome outcome = Outcome::unanswered;
    int status = 0; // the final one of the last try; 0 if there was none
    std::string call_id;
    std::string method; // of the first request
    std::string from;   // users
    std::string to;
    std::string uri_user;
    std::string other_users; // see message_facts.h
    Endpoint source;         // of the first message
    Endpoint destination;
    PacketMark start; // of the first message
    // Times from the start. A request delay counts from the last try, since a challenge is not part of it.
    std::optional<Microseconds> ringing;
    std::optional<Microseconds> answered;
    std::optional<Microseconds> ended; // BYE
    std::optional<Microseconds> delay; // from the last try to its first response other than 100 or a challenge
    std::size_t messages = 0;
    std::size_t repeated = 0;
    std::size_t forks = 0;   // that rang or answered, at most most_forks
    std::vector<int> codecs; // e_codec, of the last session description of the call's setup

    // From the answer to BYE.
    std::optional<Microseconds> length() const;
};

// "accepted" for an answered registration.
std::string_view outcome_name(const Call &call);

class CallTracker {
  public:
    // The call is complete. The reference is valid only during the call.
    using Report = std::function<void(const Call &call)>;

    static constexpr std::size_t most_tracked = 100'000;
    static constexpr std::size_t most_forks = 16;

    explicit CallTracker(Report report) : report_(std::move(report)) {}

    // The facts are those of the message.
    void add(const CapturedMessage &message, const MessageFacts &facts);

    // Reports what is left at the end of the capture.
    void finish();

    // Reported before their end, for lack of room.
    std::size_t given_up() const { return given_up_; }

  private:
    // What a call waits for. Each state has a list, in the order of the last messages.
    enum State {
        pending,    // for a final response
        challenged, // for another try
        up,         // for BYE
        over,       // for repetitions
        states,
    };

    struct Tracked;
    using List = std::list<Tracked>;

    struct Fork {
        std::string tag; // of the called side
        bool is_up;      // it answered, and there was no BYE
    };

    struct Tracked {
        Call call;
        std::string caller_tag;
        State state = pending;
        Microseconds last = 0;       // message
        Microseconds last_try = 0;   // request that begins or repeats a try
        unsigned long last_cseq = 0; // of a try
        std::vector<Fork> forks;
        // Hashes of the last messages, to recognise repetitions.
        std::array<std::size_t, 24> seen{};
        std::size_t next_seen = 0;
    };

    std::optional<List::iterator> find(const MessageFacts &facts);
    List::iterator begin(const CapturedMessage &message, const MessageFacts &facts);
    State take_request(Tracked &tracked, const MessageFacts &facts) const;
    State take_bye(Tracked &tracked, const MessageFacts &facts) const;
    static void note_fork(Tracked &tracked, const MessageFacts &facts);
    State take_response(Tracked &tracked, const MessageFacts &facts) const;
    State take_final(Tracked &tracked, const MessageFacts &facts) const;
    void read_codecs(Call &call, std::string_view message, const MessageFacts &facts);
    void give_up_oldest();
    void end(List::iterator tracked);
    void sweep();

    Report report_;
    std::array<List, states> lists_;
    std::unordered_multimap<std::string_view, List::iterator> by_call_id_;
    SIP_CODE_MSG record_{}; // for session descriptions
    Microseconds now_ = INT64_MIN;
    std::size_t given_up_ = 0;
};
