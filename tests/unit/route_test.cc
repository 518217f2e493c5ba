// The route set of Record-Route, and the option tags of Supported.
#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/recording_host.h"
#include "support/split_message.h"

namespace {

using namespace support;

Frame message(const std::string &start, const std::string &method) {
    return {start + "\r\nCSeq: 1 " + method +
                "\r\nCall-ID: c\r\nVia: SIP/2.0/UDP h;branch=b\r\nFrom: sip:f\r\nTo: sip:t\r\n",
            "\r\n\r\n", "None: 0"};
}

const Frame invite = message("INVITE sip:h SIP/2.0", "INVITE");
const std::string content = "record_route use=1 content=";
const Case routes[] = {
    {"one", "RECORD-ROUTE:a, b,c ", content + "a, b,c "},
    {"one past the limit", "Record-Route: " + letters(127), content + letters(126)},
    {"two", "Record-Route: <sip:1;lr>\nRecord-Route: <sip:2;lr>", content + "<sip:1;lr>,<sip:2;lr>"},
    {"a longer name counts as the first", "Record-Routes: x\nRecord-Route: a", content + "a,a"},
    {"two past the limit", "Record-Route: " + letters(100) + "\nRecord-Route: " + letters(100),
     content + letters(100) + "," + letters(26)},
    {"room for the comma alone", "Record-Route: " + letters(126) + "\nRecord-Route: x", content + letters(126) + ","},
    {"three", "Record-Route: a\nRecord-Route: b\nRecord-Route: c", ""},
};
INSTANTIATE_TEST_SUITE_P(RecordRoute, Decoding, in_frame(invite, routes), Title());

const Frame ringing = message("SIP/2.0 180 Ringing", "INVITE");
const Case routes_of_responses[] = {
    {"one", "Record-Route: a,b", content + "a,b"},
    {"two", "Record-Route: a\nRecord-Route: b", content + "b,a"},
    {"no room for the first", "Record-Route: x\nRecord-Route: " + letters(300), content + letters(127)},
    {"room for the comma alone", "Record-Route: x\nRecord-Route: " + letters(126), content + letters(126) + ","},
};
INSTANTIATE_TEST_SUITE_P(RecordRouteOfResponse, Decoding, in_frame(ringing, routes_of_responses), Title());

TEST(RecordRoute, count) {
    SplitMessage names({"Record-Rout", " Record-Route: a", "To: Record-Route", "Record-Route:", "record-ROUTEs", "x"});
    EXPECT_EQ(SIP_Decode_Judge_RecordRoute_Count(&names.message()), 2);
    SplitMessage full(std::vector<std::string>(64, "Record-Route:a,b"));
    EXPECT_EQ(SIP_Decode_Judge_RecordRoute_Count(&full.message()), 64);
    EXPECT_EQ(SIP_Decode_Judge_RecordRoute_Count(nullptr), -1);
}

// Option tags, and how they are classified; slots behind the last tag are not written.
TEST(Supported, table) {
    const struct {
        std::string header;
        std::string kept;
        std::vector<std::string> types;
    } rows[] = {
        {"Supported: timer,replaces,P_Early_Media", "timer,replaces,P_Early_Media", {"2", "3", "4"}},
        {"SUPPORTED:timer, replaces,Timer", "timer, replaces,Timer", {"2", "0", "0"}},
        {"Supported:\nk: timer", "", {"0"}},
        {"Supported: ,,timer", ",,timer", {"0", "0", "2"}},
        {"Supported: timer,a,a,a,a,a,a,timer,timer",
         "timer,a,a,a,a,a,a,timer,timer",
         {"2", "0", "0", "0", "0", "0", "0", "2"}},
        {"Supported: " + letters(56) + ",timer,x", letters(56) + ",timer", {"0", "2"}},
        {"Supported: " + letters(61) + ",timer", letters(61) + ",", {"0"}},
        {"K: replaces", "replaces", {"3"}},
        {"k: replaces\nSupported: timer", "timer", {"2"}},
    };
    for (const auto &[header, kept, types] : rows) {
        const Decoded decoded = decode(invite.text(header));
        EXPECT_EQ(decoded["supported.use"] + decoded["supported.SUPPORTED"], "1" + kept) << header;
        for (std::size_t slot = 0; slot < 8; ++slot)
            EXPECT_EQ(decoded["supported.supported_type[" + std::to_string(slot) + "]"],
                      slot < types.size() ? types[slot] : "(untouched)")
                << header;
        expect_whole_members(invite.text(header));
    }
    EXPECT_EQ(decode(invite.text("Supporteds: timer"))["supported.use"], "0");
}

TEST(Supported, follows_the_comparison_of_the_host) {
    host().folds_case = true;
    EXPECT_EQ(decode(invite.text("Supported: TIMER"))["supported.supported_type[0]"], "2");
    host().folds_case = false;
}

} // namespace
