// Messages to calls: each case is a list of messages, and what is reported of them.
#include <sstream>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "call_figures.h"
#include "call_tracker.h"

namespace {

// "SECONDS START-LINE CSEQ METHOD FROM-TAG TO-TAG CALL-ID BRANCH" with "-" for what is missing. The start line is a
// method or a status.
CapturedMessage message_of(const std::string &row, std::string &text) {
    static const Endpoint ends[2] = {{"192.0.2.1", 5060}, {"192.0.2.2", 5060}};
    double seconds = 0;
    std::string start, cseq, method, from, to, call_id, branch;
    std::istringstream(row) >> seconds >> start >> cseq >> method >> from >> to >> call_id >> branch;
    const bool is_response = start.find_first_not_of("0123456789") == std::string::npos;
    text = fmt::format("{}\r\nVia: SIP/2.0/UDP h;branch={}\r\nf: <sip:1001@h>;tag={}\r\nTo: <sip:1002@h>{}\r\n"
                       "Call-ID: {}\r\nCSeq: {} {}\r\n\r\n",
                       is_response ? "SIP/2.0 " + start + " Reason" : start + " sip:1002@h SIP/2.0", branch, from,
                       to == "-" ? "" : ";tag=" + to, call_id, cseq, method);
    PacketMark mark;
    mark.seconds = static_cast<std::int64_t>(seconds);
    mark.microseconds = static_cast<std::int32_t>((seconds - static_cast<double>(mark.seconds)) * 1e6 + 0.5);
    return {mark, Transport::udp, ends[0], ends[1], text, true};
}

std::string text_of(const Call &call) {
    const auto time = [](const auto &value) { return value ? fmt::format("{:.1f}", double(*value) / 1e6) : "-"; };
    return fmt::format("{} {} {} ring {} answer {} end {} delay {} messages {}-{} forks {}", call.method,
                       outcome_name(call.outcome), call.status, time(call.ringing), time(call.answered),
                       time(call.ended), time(call.delay), call.messages, call.repeated, call.forks);
}

TEST(calls, are_told_from_their_messages) {
    struct {
        const char *name;
        const char *messages;
        std::vector<std::string> calls;
    } const cases[] = {
        {"answered; INVITE and 200 are repeated",
         "1 INVITE 1 INVITE a - id b1\n1.5 INVITE 1 INVITE a - id b1\n1.6 100 1 INVITE a - id b1\n"
         "2 180 1 INVITE a x id b1\n4 200 1 INVITE a x id b1\n4.5 200 1 INVITE a x id b1\n4.6 ACK 1 ACK a x id b2\n"
         "9 BYE 1 BYE x a id b3\n9.1 200 1 BYE x a id b3",
         {"INVITE answered 200 ring 1.0 answer 3.0 end 8.0 delay 1.0 messages 9-2 forks 1"}},
        {"the delay counts from the try with credentials",
         "1 INVITE 1 INVITE a - id b1\n1.1 407 1 INVITE a y id b1\n1.2 ACK 1 ACK a y id b1\n"
         "6 INVITE 2 INVITE a - id b2\n6.5 486 2 INVITE a z id b2\n6.6 ACK 2 ACK a z id b2",
         {"INVITE busy 486 ring - answer - end - delay 0.5 messages 6-0 forks 0"}},
        {"two forks ring, and a re-INVITE is refused within the call",
         "1 INVITE 1 INVITE a - id b1\n2 180 1 INVITE a x id b1\n3 180 1 INVITE a y id b1\n4 200 1 INVITE a y id b1\n"
         "5 INVITE 2 INVITE a y id b2\n6 488 2 INVITE a y id b2",
         {"INVITE up 200 ring 1.0 answer 3.0 end - delay 1.0 messages 6-0 forks 2"}},
        {"cancelled, and without any answer",
         "1 INVITE 1 INVITE a - id b1\n2 CANCEL 1 CANCEL a - id b1\n2.1 200 1 CANCEL a x id b1\n"
         "2.2 487 1 INVITE a x id b1\n3 INVITE 1 INVITE c - other b9",
         {"INVITE cancelled 487 ring - answer - end - delay 1.2 messages 4-0 forks 0",
          "INVITE unanswered 0 ring - answer - end - delay - messages 1-0 forks 0"}},
        {"one Call-ID, two callers; then tags that nobody had",
         "1 INVITE 1 INVITE a - id b1\n1 INVITE 1 INVITE c - id b2\n2 404 1 INVITE c x id b2\n"
         "2 603 1 INVITE a x id b1\n"
         "3 BYE 2 BYE q r id b3",
         {"INVITE refused 404 ring - answer - end - delay 1.0 messages 2-0 forks 0",
          "INVITE refused 603 ring - answer - end 2.0 delay 1.0 messages 3-0 forks 0"}},
        {"begun before the capture; silence of hours",
         "1 INVITE 3 INVITE a x id b1\n2 200 3 INVITE a x id b1\n7200 BYE 4 BYE a x id b2",
         {"INVITE joined 0 ring - answer - end - delay - messages 2-0 forks 0",
          "BYE joined 0 ring - answer - end 0.0 delay - messages 1-0 forks 0"}},
        {"a registration that is renewed is another; the clock goes back",
         "50 REGISTER 1 REGISTER a - id b1\n50.5 200 1 REGISTER a x id b1\n40 REGISTER 2 REGISTER a - id b2\n"
         "41 403 2 REGISTER a x id b2",
         {"REGISTER answered 200 ring - answer 0.5 end - delay 0.5 messages 2-0 forks 1",
          "REGISTER refused 403 ring - answer - end - delay 0.0 messages 2-0 forks 0"}},
        {"an OPTIONS before the call, with its Call-ID and tag",
         "1 OPTIONS 1 OPTIONS a - id b1\n1.5 200 1 OPTIONS a x id b1\n2 INVITE 2 INVITE a - id b2\n"
         "3 200 2 INVITE a x id b2\n4 BYE 3 BYE a x id b3",
         {"OPTIONS answered 200 ring - answer 0.5 end - delay 0.5 messages 2-0 forks 1",
          "INVITE answered 200 ring - answer 1.0 end 2.0 delay 1.0 messages 3-0 forks 1"}},
        {"a tried call is cancelled without a final response; repetitions come every four seconds",
         "1 INVITE 1 INVITE a - id b1\n1.1 407 1 INVITE a y id b1\n2 INVITE 2 INVITE a - id b2\n"
         "3 CANCEL 2 CANCEL a - id b2\n7.1 CANCEL 2 CANCEL a - id b2\n"
         "20 INVITE 1 INVITE c - other b3\n21 486 1 INVITE c x other b3\n25.1 486 1 INVITE c x other b3",
         {"INVITE cancelled 0 ring - answer - end - delay - messages 5-1 forks 0",
          "INVITE busy 486 ring - answer - end - delay 1.0 messages 3-1 forks 0"}},
        {"the 100 before the INVITE; answered while it is cancelled",
         "1 100 1 INVITE a - id b1\n1.1 INVITE 1 INVITE a - id b1\n2 CANCEL 1 CANCEL a - id b1\n"
         "2.1 200 1 CANCEL a x id b1\n2.1 200 1 INVITE a x id b1",
         {"INVITE up 200 ring - answer 1.0 end - delay 1.0 messages 5-0 forks 1"}},
        {"two forks answer, and the call lasts as long as one is up",
         "1 INVITE 1 INVITE a - id b1\n2 200 1 INVITE a x id b1\n3 200 1 INVITE a y id b1\n4 BYE 2 BYE a y id b2\n"
         "99 BYE 2 BYE a x id b3",
         {"INVITE answered 200 ring - answer 1.0 end 98.0 delay 1.0 messages 5-0 forks 2"}},
        {"a SUBSCRIBE that is repeated after NOTIFY",
         "1 SUBSCRIBE 1 SUBSCRIBE a - id b1\n1.1 202 1 SUBSCRIBE a x id b1\n1.2 NOTIFY 9 NOTIFY x a id b2\n"
         "1.5 SUBSCRIBE 1 SUBSCRIBE a - id b1",
         {"SUBSCRIBE answered 202 ring - answer 0.1 end - delay 0.1 messages 4-1 forks 1"}},
        {"responses alone",
         "1 180 1 INVITE a x id b1\n2 200 1 INVITE a x id b1",
         {"INVITE joined 0 ring - answer - end - delay - messages 2-0 forks 0"}},
    };
    for (const auto &[name, messages, calls] : cases) {
        std::vector<std::string> reported;
        CallTracker tracker([&](const Call &call) { reported.push_back(text_of(call)); });
        std::istringstream rows(messages);
        for (std::string row, text; std::getline(rows, row);) {
            const CapturedMessage message = message_of(row, text);
            MessageFacts facts;
            ASSERT_TRUE(read_facts(text, facts)) << text;
            tracker.add(message, facts);
        }
        tracker.finish();
        EXPECT_EQ(reported, calls) << name;
    }
}

TEST(calls, the_silent_one_makes_room) {
    std::size_t reported = 0;
    CallTracker tracker([&](const Call &) { ++reported; });
    std::string text;
    for (std::size_t i = 0; i < CallTracker::most_tracked + 3; ++i) {
        const CapturedMessage message = message_of(fmt::format("1 INVITE 1 INVITE a - id{} b", i), text);
        MessageFacts facts;
        read_facts(text, facts);
        tracker.add(message, facts);
    }
    EXPECT_EQ(reported, 3U);
    EXPECT_EQ(tracker.given_up(), 3U);
}

TEST(calls, delays_are_at_most_an_eighth_too_long) {
    Delays delays;
    for (Microseconds delay = 1; delay <= 1000; ++delay)
        delays.add(delay * 1000);
    for (const unsigned percent : {1U, 50U, 90U, 99U, 100U}) {
        EXPECT_GE(delays.percentile(percent), Microseconds{percent} * 10'000);
        EXPECT_LE(delays.percentile(percent), Microseconds{percent} * 11'250);
    }
}

} // namespace
