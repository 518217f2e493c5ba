// Makes the ladder of a call, see ladder.h.
#include "ladder.h"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <tuple>

#include <fmt/core.h>

#include "message_facts.h"
#include "print.h"
#include "safe.h"

namespace {

constexpr Microseconds time_to_give_up = 32'000'000;

std::size_t column_of(Ladder &ladder, const Endpoint &endpoint) {
    const std::string name = endpoint_text(endpoint);
    const auto found = std::find(ladder.columns.begin(), ladder.columns.end(), name);
    if (found == ladder.columns.end())
        ladder.columns.push_back(name);
    return static_cast<std::size_t>(std::find(ladder.columns.begin(), ladder.columns.end(), name) -
                                    ladder.columns.begin());
}

// The streams of the session description, on one line.
std::string session_of(const FlowMessage &message) {
    if (!may_have_session(message.text))
        return "";
    SIP_CODE_MSG record;
    if (SIP_Decode_Buffer(message.text.data(), message.text.size(), &record, nullptr) != SIP_DECODE_DONE)
        return "";
    std::ostringstream lines;
    print_session(lines, record);
    std::string text;
    std::istringstream words(lines.str());
    for (std::string word; words >> word;) {
        const bool is_heading = word == "offer" || word == "media";
        if (is_heading && !text.empty())
            text += ";";
        if (!is_heading)
            text.append(text.empty() ? "" : " ").append(word);
    }
    return text;
}

// Recognises what came before, and what came too late.
class History {
  public:
    // Fills the marks of the arrow.
    void take(const MessageFacts &facts, const FlowMessage &message, Microseconds time, Arrow &arrow) {
        arrow.is_repeated =
            !seen_
                 .emplace(facts.status, std::string(facts.method), facts.cseq, std::string(facts.branch),
                          std::string(facts.to_tag), message.source, message.destination)
                 .second;
        Microseconds &last_sign = signs_[{std::string(facts.branch), facts.cseq, std::string(facts.method)}];
        if (facts.is_request() && !arrow.is_repeated)
            last_sign = time;
        arrow.is_late =
            !facts.is_request() && !arrow.is_repeated && last_sign != 0 && time - last_sign > time_to_give_up;
        if (facts.status >= 100 && facts.status < 200)
            last_sign = 0; // a call may ring for any time
    }

  private:
    std::set<std::tuple<int, std::string, unsigned long, std::string, std::string, Endpoint, Endpoint>> seen_;
    std::map<std::tuple<std::string, unsigned long, std::string>, Microseconds> signs_; // of requests; 0 if answered
};

} // namespace

Ladder make_ladder(const std::vector<FlowMessage> &messages) {
    Ladder ladder;
    History history;
    Microseconds last = 0;
    for (const FlowMessage &message : messages) {
        MessageFacts facts;
        read_facts(message.text, facts);
        const Microseconds time = time_of(message.mark);
        Arrow arrow{};
        arrow.from = column_of(ladder, message.source);
        arrow.to = column_of(ladder, message.destination);
        arrow.time = time - time_of(messages.front().mark);
        arrow.since_last = ladder.arrows.empty() ? 0 : time - last;
        arrow.status = facts.status;
        arrow.label = facts.is_request() ? printable(facts.method)
                                         : fmt::format("{:03} {}", facts.status, printable(facts.reason));
        arrow.cseq = fmt::format("{} {}", facts.cseq, printable(facts.method));
        arrow.session = session_of(message);
        history.take(facts, message, time, arrow);
        ladder.arrows.push_back(std::move(arrow));
        last = time;
    }
    return ladder;
}

std::string clock_text(const PacketMark &mark) {
    constexpr std::size_t date = 11; // "2026-11-23T"
    constexpr std::size_t clock = 12;
    const std::string text = time_text(mark);
    return text.size() < date + clock ? text : text.substr(date, clock);
}
