// Which packets and which calls of a file are wanted.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "call_tracker.h"

namespace CLI {
class App;
}

struct Choice {
    std::string filter; // BPF, for the packets of a capture; empty for all
    std::vector<std::string> call_ids;
    std::vector<std::string> numbers;
    std::vector<int> statuses;
    bool failed = false;

    bool is_every_call() const { return call_ids.empty() && !needs_calls(); }

    // Whether the calls must be known before one of their messages can be chosen.
    bool needs_calls() const { return !numbers.empty() || !statuses.empty() || failed; }

    // Every option that is given must match; of an option that is given more than once, one value.
    bool matches(const Call &call) const;
};

// Adds --filter, --call-id, --number, --status and --failed.
void add_choice_options(CLI::App &command, Choice &choice);

// The help text for them, and what a command adds that chooses the messages of calls.
extern const char *const choice_help;
extern const char *const two_readings_help;

using CallIds = std::unordered_set<std::string>;

// Whether a message has one of the Call-IDs.
bool is_chosen(std::string_view message, const CallIds &call_ids);
