// Whatever the encoders write is read by three peers: tshark, libosip2 and sofia-sip. Each of them must find in it what the
// record said, member by member, but for the differences that docs/interop.md lists, and each of these must occur.
#include <algorithm>
#include <map>
#include <set>

#include <fmt/core.h>
#include <gtest/gtest.h>

#include "listed.h"
#include "peers.h"

namespace {

using namespace interop;

// Differences with the first message that shows each, and how many do.
struct Occurrence {
    Difference difference;
    std::string first;
    int count = 0;
};

void compare(const Written &written, const Facts &said, const std::string &peer, const PeerMessage &message,
             std::vector<Occurrence> &occurrences) {
    const Facts read = read_by(message);
    std::set<std::string> members;
    for (const Facts *facts : {&said, &read})
        for (const auto &fact : *facts)
            members.insert(fact.first);
    for (const std::string &member : members) {
        // Attributes that are made from members are compared as those; of a text in their place the whole.
        if (member == "sdp.a_content" && written.record.sdp.a_conten_nouse == 1)
            continue;
        // What is not read at all is one difference.
        if (!message.refused.empty() && member != "refused")
            continue;
        if (!message.session_refused.empty() && member.starts_with("sdp."))
            continue;
        const auto value_in = [&member](const Facts &facts) {
            const auto found = facts.find(member);
            return found != facts.end() ? found->second : "(nothing)";
        };
        Difference difference{member, written.kind(), peer, value_in(said), value_in(read)};
        if (difference.said != difference.read)
            occurrences.push_back({std::move(difference), written.name, 1});
    }
}

std::vector<Occurrence> all_differences(const std::vector<Written> &messages) {
    std::vector<std::string> texts;
    for (const Written &written : messages)
        texts.push_back(written.text);
    const auto of_tshark = read_with_tshark(texts);
    std::vector<Occurrence> occurrences;
    for (std::size_t i = 0; i < messages.size(); ++i) {
        const Facts said = said_by(messages[i]);
        compare(messages[i], said, "tshark", of_tshark[i], occurrences);
        compare(messages[i], said, "osip", read_with_osip(texts[i]), occurrences);
        compare(messages[i], said, "sofia", read_with_sofia(texts[i]), occurrences);
    }
    return occurrences;
}

TEST(Interop, messages_say_whatever_a_header_can_say) {
    std::map<std::string, int> times;
    for (const Written &written : written_messages())
        for (const auto &fact : said_by(written))
            ++times[fact.first];
    for (const std::string &member : members_of_headers())
        EXPECT_GE(times[member], 5) << member;
}

TEST(Interop, peers_read_what_the_record_says) {
    const auto messages = written_messages();
    const auto occurrences = all_differences(messages);
    const auto listed = listed_differences();

    std::set<std::pair<int, std::string>> occurred; // row and peer
    std::map<std::string, Occurrence> unlisted;     // by member, peer and whether each side has a value
    for (const Occurrence &occurrence : occurrences) {
        const Difference &difference = occurrence.difference;
        const auto row =
            std::find_if(listed.begin(), listed.end(), [&](const Listed &each) { return each.covers(difference); });
        if (row != listed.end()) {
            occurred.emplace(row->line, difference.peer);
        } else {
            const std::string like =
                fmt::format("{} {} {} {} {}", difference.member, difference.peer, difference.message,
                            difference.said == "(nothing)", difference.read == "(nothing)");
            ++unlisted.try_emplace(like, occurrence).first->second.count;
        }
    }
    for (const auto &[like, occurrence] : unlisted) {
        const Difference &difference = occurrence.difference;
        ADD_FAILURE() << fmt::format("{} in {}, by {}: said `{}`, read `{}` ({} times, first in {})", difference.member,
                                     difference.message, difference.peer, difference.said, difference.read,
                                     occurrence.count - 1, occurrence.first);
    }
    for (const Listed &row : listed)
        for (const std::string &peer : row.peers)
            EXPECT_TRUE(occurred.contains({row.line, peer}))
                << fmt::format("docs/interop.md:{}: {} shows this difference no more", row.line, peer);
}

} // namespace
