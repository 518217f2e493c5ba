// The order of work: what a whole message fills, what a refusal leaves, what depends on the method.
#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/recording_host.h"

namespace {

using namespace support;

const std::string invite = "INVITE sip:bob@h:5070;transport=udp SIP/2.0\nCall-ID: c\nCSeq: 1 INVITE\n";

const std::string before_via = R"(Service-Route: <sip:sr>
Korvadex: trunk
Korvadex-Extern: extern
Max-Forwards: 69
Require: 100rel
RAck: 7 8 INVITE
P-Called-Party-ID: <sip:called@h>
)";

const std::string behind_via = R"(RSeq: 9
Expires: 60
From: "A" <sip:alice@h>;tag=f
To: <sip:bob@h>;tag=t
Alert-Info: <ring>
Contact: <sip:alice@h:5071>
Event: reg
Date: today
Replaces: r
Referred-By: <sip:by>
Subscription-State: active
User-Agent: acme
Session-Expires: 1800;refresher=uas
Min-SE: 90
Min-Expires: 30
Call-Info: <info>
Content-Type: text/plain

body)";

const std::string filled_before_via = R"(callid=c | korvadex=extern | korvadex_trunk=trunk | max_forward=69 | )";

const Frame whole{"", "", "none"};
const Case messages[] = {
    {"every header", invite + before_via + "Via: SIP/2.0/UDP h;branch=b\n" + behind_via,
     "result=1 | xml_buf=body | method=5 | via_count=1 | " + filled_before_via + R"(via branch=b addr=h:5060
expire use=1 expires=60 | uri user=bob addr=h:5070 | cseq seq=1 method=5
from user=alice tag=f addr=h:5060 | to user=bob tag=t addr=h:5060 flag=1
contact user=alice addr=h:5071 | content use=1 type=text/plain
author stale=-1 username= realm= nonce= uri= response= algorithm=
alert use=1 alertinfo=<ring> | supported use=0 | require use=1 REQUIRE=100rel
rseq use=1 RSeq=9 | rack rack=7 cseq=8 method=5 | callparty user=called addr=h:5060
event use=1 content=reg | date use=1 datetime=today | user_agent use=1 useragent=acme
service_route use=1 content=<sip:sr> | replaces use=1 content=r
referred_by use=1 content=<sip:by> | subscription_state use=1 content=active
session_expires use=1 sessionexpires=1800 refresher=uas
min_se use=1 minse=90 | min_expires use=1 min_expires=30
call_info use=1 content=<info>)"},
    {"no optional header",
     "OPTIONS sip:h SIP/2.0\ni: c\nCSeq: 1 OPTIONS\nv: SIP/2.0/UDP h;branch=b\nf: sip:a@h\nt: sip:h\n\n",
     R"(result=1 | xml_buf= | method=3 | via_count=1 | callid=c | via branch=b addr=h:5060
expire use=1 expires=3600 | uri addr=h:5060 | cseq seq=1 method=3 | from user=a addr=h:5060
to addr=h:5060 flag=1 | content use=0 | supported use=0 | require use=0 | rseq use=0 RSeq=-1)"},
    {"a response has no URI", "SIP/2.0 200 OK\ni: c\nCSeq: 1 BYE\nVia: a\nVia: b\nVia: c\nf: tel:1\nt: tel:2\n\n",
     R"(result=1 | xml_buf= | method=20 | via_count=3 | callid=c | expire use=1 expires=3600
cseq seq=1 method=8 | from user=1 | to user=2 flag=2 | content use=0 | supported use=0 | require use=0
rseq use=0 RSeq=-1)"},

    {"a start line alone is refused", "INVITE sip:bob SIP/2.0\n", "result=-1"},
    {"one header line is looked at", "INVITE sip:bob SIP/2.0\nCall-ID: c\n", "result=-1 | callid=c",
     "0 Decode Cseq : there is no cseq header '(null)'"},
    {"no Call-ID is refused before the CSeq", "INVITE urn:x SIP/2.0\n" + before_via + behind_via, "result=-1",
     "0 Decode CALL-ID; CALL-ID = (null)"},
    {"no CSeq is refused before the URI", "INVITE urn:x SIP/2.0\nCall-ID: c\n" + before_via + behind_via,
     "result=-1 | callid=c", "0 Decode Cseq : there is no cseq header '(null)'"},
    {"no Via is refused behind P-Called-Party-ID", invite + before_via + behind_via,
     "result=-1 | method=5 | via_count=0 | " + filled_before_via +
         R"(uri user=bob addr=h:5070 | cseq seq=1 method=5 | require use=1 REQUIRE=100rel | rack rack=7 cseq=8 method=5
callparty user=called addr=h:5060 | service_route use=1 content=<sip:sr>)"},

    {"log lines of a request in the order of work", R"(FOO urn:1 SIP/2.0
Contact: urn:7
To: urn:6
From: urn:5
Via: 4
P-Called-Party-ID: urn:3
Max-Forwards: x2
CSeq: 1 FOO
Call-ID: c
)",
     R"(result=1 | xml_buf= | method=0 | via_count=1 | callid=c | expire use=1 expires=3600 | uri user=1
cseq seq=1 method=0 | from user=5 | to user=6 flag=2 | contact user=7 | content use=0 | supported use=0
require use=0 | rseq use=0 RSeq=-1 | callparty user=3)",
     R"(0 Decode Uri : 'urn:1' is not a valid SIP uri
0 Decode max-forward : 'x2'
0 Decode Uri : 'urn:3' is not a valid SIP uri
0 via is wrong, via '4'
0 Decode Uri : 'urn:5' is not a valid SIP uri
0 Decode Uri : 'urn:6' is not a valid SIP uri
0 Decode Uri : 'urn:7' is not a valid SIP uri)"},
    {"log lines of a response in the order of work", "SIP/2.0 302 1\nMax-Forwards: x2\nCSeq: 1 FOO\nCall-ID: c\n\n",
     "result=-1 | method=0 | via_count=0 | callid=c | cseq seq=1 method=0 | require use=0",
     "1 recv sip response method: [302 1], transfer to 480 | 0 Decode max-forward : 'x2'"},
};
INSTANTIATE_TEST_SUITE_P(Message, Decoding, in_frame(whole, messages), Title());

// Parameter names are case-sensitive, however the host compares.
TEST(Driver, a_host_that_folds_case_changes_nothing) {
    host().folds_case = true;
    const Decoded decoded =
        decode("INVITE sip:h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\nVia: SIP/2.0/UDP h;BRANCH=b\r\n"
               "From: sip:f;TAG=1\r\nTo: sip:t\r\nContact: <tel:>;EXPIRES=9\r\n\r\n");
    host().folds_case = false;
    EXPECT_EQ(decoded["via.branch"] + decoded["from.tag"] + decoded["expire.expires"], "(untouched)(untouched)3600");
}

} // namespace
