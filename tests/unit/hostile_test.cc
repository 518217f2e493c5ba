// Texts that are no message, and messages at every alignment.
#include <gtest/gtest.h>

#include "support/decoding.h"
#include "support/encoding.h"

namespace {

using namespace support;

const char *const invite = R"(INVITE sip:b%20b@h:5070;transport=udp SIP/2.0
Via: SIP/2.0/UDP h;branch=z9hG4bKb
Max-Forwards: 70
From: "D \" <x>" <sip:a;cpc=o@h>;tag=f
To: <sip:b@h>;tag=t
Call-ID: c
CSeq: 1 INVITE
Contact: <sip:a@h:5060>;expires=60,
 <sip:b>
RAck: 1 2 INVITE
P-Called-Party-ID: <tel:1>
Session-Expires: 90;refresher=uac
Content-Type: a/b

v=0
c=x,
)";
const char *const response = R"(SIP/2.0 499 Gone
v: SIP/2.0/UDP h:1;branch=a,SIP/2.0/TCP h:2;branch=b
f: sip:a
t: tel:1
i: c
CSeq: 1 BYE
RSeq: 1
Min-SE: 2

)";
const std::string samples[] = {wire(invite), wire(response)};

TEST(Hostile, refused_and_silent) {
    for (const std::string &text :
         {std::string(), repeat(1, "\r"), repeat(5000, "\r"), repeat(1, "\r\n"), repeat(63, "\n"), repeat(4095, " "),
          repeat(4095, ","), repeat(100000, "x"), repeat(1, "<"), repeat(1, "\""), repeat(9, "\xFF"),
          std::string(1, '\0') + samples[0]})
        EXPECT_EQ(changes({}, decode(text).members) + lines(decode(text).log), "result=-1") << text.substr(0, 20);
}

// Texts are looked at in blocks and words: where these begin and end shows nowhere.
TEST(Hostile, every_alignment) {
    for (const std::string &message : samples) {
        const Members members = decode(message).members;
        for (std::size_t n = 0; n < 70; ++n) {
            std::string moved = message;
            moved.insert(moved.find("\r\n"), "\r\nPad: " + letters(n));
            EXPECT_EQ(changes(members, decode(moved).members), "") << n;
        }
    }
    for (std::size_t n = 1; n < 46; ++n) {
        const std::string name = letters(n);
        const Decoded decoded =
            decode("OPTIONS tel:" + name + " SIP/2.0\r\ni: " + name + "\r\nCSeq: 1 " + name + "\r\nVia: SIP/2.0/UDP " +
                   name + ":7;branch=" + name + "\r\nFrom: \"" + name + "\" <sip:" + name + "@" + name +
                   ":8>;p=" + name + ";tag=" + name + "\r\n\r\n" + name);
        const std::string user = letters(std::min<std::size_t>(n, 31));
        const std::string host = letters(std::min<std::size_t>(n, 23));
        EXPECT_EQ(decoded["uri.user"] + decoded["callid"] + decoded["xml_buf"], user + name + name);
        EXPECT_EQ(decoded["via.addr.ip"] + decoded["via.addr.port"] + decoded["via.branch"], host + "7" + name);
        EXPECT_EQ(decoded["from.user"] + decoded["from.addr.ip"] + decoded["from.addr.port"], user + host + "8");
        EXPECT_EQ(decoded["from.tag"] + decoded["cseq.method"], name + "0");
    }
}

} // namespace
