// Which packets and which calls of a file are wanted, see choice.h.
#include "choice.h"

#include <algorithm>

#include <CLI/CLI.hpp>

#include "safe.h"

namespace {

bool is_word_of(std::string_view word, std::string_view words) {
    for (std::size_t at = words.find(word); at != std::string_view::npos; at = words.find(word, at + 1)) {
        const std::size_t end = at + word.size();
        if ((at == 0 || words[at - 1] == ' ') && (end == words.size() || words[end] == ' '))
            return true;
    }
    return false;
}

bool has_number(const Call &call, std::string_view number) {
    return number == call.from || number == call.to || number == call.uri_user || is_word_of(number, call.other_users);
}

bool has_failed(Outcome outcome) {
    return outcome != Outcome::answered && outcome != Outcome::up && outcome != Outcome::joined;
}

} // namespace

const char *const choice_help =
    R"(--call-id, --number, --status and --failed choose calls. --number compares the users of request URI, From, To,
P-Called-Party-ID and History-Info. --status compares the final status of the last try. --failed takes calls that were
not answered. Each but --failed may be given more than once.)";

const char *const two_readings_help = R"( All but --call-id read the file twice, so it cannot be a pipe or
standard input.)";

bool Choice::matches(const Call &call) const {
    const auto has_any = [](const auto &wanted, auto matches_one) {
        return wanted.empty() || std::any_of(wanted.begin(), wanted.end(), matches_one);
    };
    return has_any(call_ids, [&](const std::string &id) { return id == call.call_id; }) &&
           has_any(numbers, [&](const std::string &number) { return has_number(call, number); }) &&
           has_any(statuses, [&](int status) { return status == call.status; }) &&
           (!failed || has_failed(call.outcome));
}

void add_choice_options(CLI::App &command, Choice &choice) {
    command.add_option("--filter", choice.filter, "Reads only packets of a capture that match")->type_name("BPF");
    const auto add = [&command](const char *name, auto &values, const char *type, const char *description) {
        command.add_option(name, values, description)->type_name(type)->allow_extra_args(false);
    };
    add("--call-id", choice.call_ids, "ID", "Only calls with this Call-ID");
    add("--number", choice.numbers, "USER", "Only calls with this user");
    add("--status", choice.statuses, "CODE", "Only calls that ended with this status");
    command.add_flag("--failed", choice.failed, "Only calls that were not answered");
}

bool is_chosen(std::string_view message, const CallIds &call_ids) {
    SIP_SLICE value;
    if (SIP_Find_Header(message.data(), message.size(), "Call-ID", SIP_NAME_ANY_FORM, 0, &value) != 1)
        return false;
    const std::string_view id = message.substr(value.at, value.length);
    return call_ids.contains(std::string(id.substr(0, id.find_last_not_of(" \t\r\n") + 1)));
}
