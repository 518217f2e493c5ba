// Via: the count, the single Via, the pair.
#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/split_message.h"

namespace {

using namespace support;

const std::string head = "OPTIONS sip:h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 OPTIONS\r\nFrom: sip:f\r\nTo: sip:t\r\n";

std::string wrong(const std::string &via) { return "0 via is wrong, via '" + via + "'"; }
std::string unknown(const std::string &transport) { return "0 Don't know how to respond via '" + transport + "'"; }
std::string unknown_first(const std::string &transport) {
    return "MT Don't know how to respond via '" + transport + "'\\n";
}

// Compared with a line that counts as a Via but has no value.
const Frame single{head, "\r\n\r\n", "Viaduct: 1"};
const Case single_vias[] = {
    {"compact name in upper case without a blank", "V:SIP/2.0/SCTP h;branch=2", "via branch=2 addr=h:5060"},
    {"names and transport in lower case", "via: sip/2.0/tls h;branch=4", "via branch=4 addr=h:5060"},
    {"no parameters but a port", "Via: SIP/2.0/UDP h:5070", "via addr=h:5070", wrong("SIP/2.0/UDP h:5070")},
    {"no parameters and an unknown transport", "Via: SIP/2.0/WS h:1", "",
     wrong("SIP/2.0/WS h:1") + " | " + unknown("SIP/2.0/WS")},
    {"unknown transport keeps the branch alone", "Via: SIP/2.0/UDPX h;branch=3", "via branch=3",
     unknown("SIP/2.0/UDPX")},
    {"transport ends at the first blank", "Via: SIP / 2.0 / UDP h;branch=b", "via branch=b", unknown("SIP")},
    {"a tab does not end the transport", "Via: SIP/2.0/UDP\th;branch=b", "via branch=b"},
    {"blanks of all kinds before the host are skipped, behind it kept", "Via: SIP/2.0/UDP \t\x01 h ;x",
     "via addr=h :5060"},
    {"no host", "Via: SIP/2.0/TCP ;x", "via addr=:5060"},
    {"the first colon begins the port", "Via: SIP/2.0/UDP [::1]:5070;y", "via addr=[:0"},
    {"a colon in a parameter begins no port", "Via: SIP/2.0/UDP h;received=1:2", "via addr=h:5060"},
    {"the name branch is case-sensitive", "Via: SIP/2.0/UDP h;BRANCH=b", "via addr=h:5060"},
    {"branch before the first semicolon does not count", "Via: SIP/2.0/UDP branch=b;x", "via addr=branch=b:5060"},
    {"the first branch= counts, even inside another name", "Via: SIP/2.0/UDP h;xbranch=1;branch=2",
     "via branch=1 addr=h:5060"},
    {"a blank as branch", "Via: SIP/2.0/UDP h;branch= ;x", "via branch=  addr=h:5060"},
    {"a name that only begins with Via is counted", "Viaduct: SIP/2.0/UDP h;branch=b", "", wrong("")},
    {"a blank before the colon hides the value", "Via : SIP/2.0/UDP h;branch=b", "", wrong("")},
    {"a comma continued line counts twice", "Via: SIP/2.0/UDP h,\nx", "via_count=2 | via1 addr=h,\\r\\nx:?"},
};
INSTANTIATE_TEST_SUITE_P(Via, Decoding, in_frame(single, single_vias), Title());

const std::string first = "Via: SIP/2.0/UDP h";
const std::string second = "\nVia: SIP/2.0/UDP i";

// Compared with two Vias that hold nothing; the lower one gets a default port.
const Frame pair{head, "\r\n\r\n", "Via: 1\nVia: 2", zero};
const Case pairs[] = {
    {"the upper one gets no default port", first + ";branch=a;x" + second + ":5071;branch=b;x",
     "via branch=b addr=i:5071 | via1 branch=a addr=h:?"},
    {"no parameters are not logged", first + second, "via addr=i:5060 | via1 addr=h:?"},
    {"a missing blank behind the colon takes a letter", "Via:SIP/2.0/UDP h;branch=a\nv:SIP/2.0/UDP h;branch=b",
     "via branch=b | via1 branch=a", unknown_first("IP/2.0/UDP") + " | " + unknown("IP/2.0/UDP")},
    {"a second blank behind the colon ends the transport", "v:  SIP/2.0/UDP h;branch=a\nVia:  SIP/2.0/UDP h;branch=b",
     "via branch=b | via1 branch=a", unknown_first("") + " | " + unknown("")},
    {"a line that only begins with Via takes part", "Viaduct SIP/2.0/UDP h;branch=a" + second + ";branch=b",
     "via branch=b addr=i:5060 | via1 branch=a", unknown_first("ct")},

    {"joined by a comma", first + ";branch=a,SIP/2.0/UDP i:5070;branch=b",
     "via branch=b addr=i:5070 | via1 branch=a addr=h:?"},
    {"joined keeps what follows the first branch", first + ";branch=a;rport,SIP/2.0/UDP i;branch=b;rport",
     "via branch=b addr=i:5060 | via1 branch=a;rport addr=h:?"},
    {"joined by a comma and a blank", first + ";branch=a, SIP/2.0/UDP i:1;branch=b",
     "via branch=b | via1 branch=a addr=h:?", unknown("")},
    {"joined unknown transports are reported from the second to the first", "Via: A h;branch=a,B h;branch=b",
     "via branch=b | via1 branch=a", unknown("B") + " | " + unknown_first("A")},
    {"joined three stay with the second", first + ";branch=a,SIP/2.0/UDP h;branch=b,SIP/2.0/UDP i;branch=c",
     "via branch=b,SIP/2.0/UDP i addr=h:5060 | via1 branch=a addr=h:?"},
    {"joined behind the first comma of the line", first + ";x=1,2;branch=a,SIP/2.0/UDP h;branch=b",
     "via branch=a,SIP/2.0/UDP h | via1 branch=a addr=h:?"},
    {"joined without a branch in the first is not split", first + ";rport,SIP/2.0/UDP i;branch=b",
     "via1 branch=b addr=h:?"},
    {"joined without parameters of the first is one host", "Via: SIP/2.0/UDP h,SIP/2.0/UDP i;branch=b",
     "via1 branch=b addr=h,SIP/2.0/UDP i:?"},
};
INSTANTIATE_TEST_SUITE_P(ViaPair, Decoding, in_frame(pair, pairs), Title());

TEST(Via, pair_without_ports_leaves_them_alone) {
    const Decoded decoded = decode(head + "Via: SIP/2.0/UDP h;branch=a\r\nVia: SIP/2.0/UDP i;branch=b\r\n\r\n");
    EXPECT_EQ(decoded["via.addr.port"] + decoded["via1.addr.port"], "(untouched)(untouched)");
}

TEST(Via, count_of_header_lines) {
    const struct {
        std::vector<std::string> header;
        int count;
    } rows[] = {{{"INVITE", "To: x", "Vi: x", "v", "v :x", "ve: x", " Via: x", ""}, 0},
                {{"VIATOR", "V:"}, 2},
                {{"vIa:,", "v:x"}, 3},
                {{"Via: a,b,c,d"}, 2},
                {std::vector<std::string>(64, "v:"), 64}};
    for (const auto &[header, count] : rows) {
        SplitMessage split(header);
        EXPECT_EQ(SIP_Decode_Judge_Via_Count(&split.message()), count) << testing::PrintToString(header);
    }
}

} // namespace
