// The status-code fallback for hosts that split messages themselves, and the record dump.
#include <gtest/gtest.h>

#include "support/decoding.h"
#include "support/encoding.h"
#include "support/guarded.h"

#include <sipcode/decode.h>

namespace {

using namespace support;

// What the fallback makes of a status and the identifier that the message has so far.
int fallback(const std::string &status, int method = 0) {
    Guarded storage(sizeof(SIP_MSG), stale);
    const Guarded text(status);
    SIP_MSG &split = storage.as<SIP_MSG>();
    split.rlPart2 = text.data();
    split.method = method;
    CompatibleSipMethodName(&split);
    return split.method;
}

TEST(StatusFallback, knows_most_codes_of_the_table) {
    const std::string unknown[] = {"401", "403", "422", "503", "513"};
    for (int method = SIP_RESPONSE_MSG_100_TRY; method < SIP_CODE_METHOD_COUNT; ++method) {
        const std::string code = std::string(decode_methods[method].text).substr(0, 3);
        const bool is_known = std::find(std::begin(unknown), std::end(unknown), code) == std::end(unknown);
        for (const std::string &text : {code, code + " Autre", code + "9"})
            EXPECT_EQ(fallback(text), is_known ? method : 0) << text;
    }
    EXPECT_EQ(fallback("200", SIP_RESPONSE_MSG_180_RING), SIP_RESPONSE_MSG_180_RING);
    EXPECT_EQ(fallback("200", -1), -1);
    for (const std::string text : {"", "20", " 200", "302", "INV"})
        EXPECT_EQ(fallback(text), 0) << text;
    CompatibleSipMethodName(nullptr);
    SIP_MSG without_status{};
    CompatibleSipMethodName(&without_status);
    EXPECT_EQ(without_status.method, 0);
}

const struct {
    std::string members;
    std::string after_ten_lines;
} dumps[] = {
    {"", ""},
    {"sdp.a_use=1 | sdp.a_addr.ip=h | sdp.a_addr.port=4000 | sdp.a_coders[0]=G711_A | sdp.a_coders[1]=G711_U | "
     "sdp.a_coders[2]=G722",
     "A_SDP   = [ addr = h : 4000  coder G711_A G711_U 97 ]\n"},
    {"sdp.a_use=1 | sdp.a_coders[0]=G729 | sdp.a_coders[1]=TE101 | sdp.a_coders[2]=12 | sdp.a_coders[3]=-1 | "
     "sdp.a_coders[4]=GSM",
     "A_SDP   = [ addr =  : 0  coder G729 101  ]\n"},
    {"sdp.a_use=2 | sdp.v_use=1 | sdp.v_addr.ip=h | sdp.v_addr.port=-1", "V_SDP   = [ addr = h : -1 ]\n"},
    {"content.use=1 | content.type=%n | info.use=1 | info.key=#", "Content = [ type = %n ]\nInfo    = [ key = # ]\n"},
    {"author.use=1 | author.author_type=101 | author.stale=-1 | author.username=u | author.realm=r | author.nonce=n "
     "| author.uri=i | "
     "author.response=e | author.algorithm=MD5",
     "Author  = [ type = 101  stale = -1 username = u realm= r nonce = n uri = i response = e algorithm = MD5 ]\n"},
    {"authen.use=1 | authen.authen_type=103 | authen.stale=1 | authen.realm=r | authen.nonce=n | authen.algorithm=MD5",
     "Authen  = [ type = 103 stale = 1 realm= r nonce = n algorithm = MD5 ]\n"},
    {"content.use=2 | info.use=-1 | author.use=2 | authen.use=0 | sdp.v_use=-1", ""},
};

TEST(Dump, table) {
    for (const auto &[members, after_ten_lines] : dumps)
        EXPECT_EQ(
            dump(record_of(R"(callid=c | uri.user=b | uri.addr.ip=i | uri.addr.port=1 | method=INVITE | max_forward=69
via.branch=z | via.addr.ip=v | via.addr.port=2 | expire.expires=60 | cseq.seq=7 | cseq.method=ACK | from.user=a
from.tag=f | from.addr.ip=j | from.addr.port=3 | to.user=d | to.tag=t | to.addr.ip=k | to.addr.port=4 | contact.user=e
contact.addr.ip=l | contact.addr.port=5
)" + members)),
            R"(CALL-ID = [ callid = c ]
URI     = [ user = b  addr = i : 1 ]
Method  = [ method = 5 ]
Forward = [ forward = 69 ]
VIA     = [ branch = z  addr = v : 2 ]
Expire  = [ expire = 60 ]
Cseq    = [ seq = 7  method = 6 ]
From    = [ user = a  addr = j : 3  tag = f ]
To      = [ user = d  addr = k :4   tag = t ]
Contact = [ user = e  addr = l :5 ]
)" + after_ten_lines)
            << members;
}

} // namespace
