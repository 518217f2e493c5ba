// Which members are read in which messages: by the method or status, and by the method of the CSeq.
#include <gtest/gtest.h>

#include "support/decoding.h"
#include "support/split_message.h"

namespace {

using namespace support;

const std::string headers =
    "\r\nCall-ID: c\r\nVia: SIP/2.0/UDP h;branch=b\r\nAuthorization: x\r\nWWW-Authenticate: x\r\n"
    "Authentication-Info: x\r\n"
    "Refer-To: <sip:a@h>\r\nReferred-By: <sip:b@h>\r\nAlert-Info: a\r\nRecord-Route: a\r\n"
    "Record-Route: b\r\nContent-Type: ";

using Identifiers = std::vector<int>;

// A member is read if both lists hold the identifiers; an empty list holds all.
const struct {
    std::string member;
    Identifiers methods;
    Identifiers of_cseq;
} rows[] = {
    {"sdp.a_use", {5, 6, 12, 17, 18, 19, 20, 43}, {5, 6, 12}},
    {"msg_sdp.use", {}, {4, 10, 11}},
    {"message_summary.use", {4}, {}},
    {"authen.use", {22, 25}, {2, 5, 8, 10, 11}},
    {"authen.next_nonce.use", {}, {2}},
    {"refer_to.use", {9}, {}},
    {"alert.use", {5}, {5}},
    {"info.use", {13}, {13}},
};

bool holds(const Identifiers &list, int id) {
    return list.empty() || std::find(list.begin(), list.end(), id) != list.end();
}

TEST(Dispatch, by_method_and_cseq) {
    for (int of_cseq = 1; of_cseq < SIP_CODE_METHOD_COUNT; ++of_cseq)
        for (int method = 2; method < SIP_CODE_METHOD_COUNT; ++method) {
            const std::string text = decode_methods[method].text;
            const std::string message = (method < 16 ? text + " sip:h SIP/2.0" : "SIP/2.0 " + text) + "\r\nCSeq: 1 " +
                                        decode_methods[of_cseq].text + headers;
            const Decoded decoded = decode(message + "application/sdp\r\n\r\nc=IN IP4 h\r\nm=audio 1", zero);
            const Decoded dtmf = decode(message + "application/dtmf\r\n\r\n5", zero);
            for (const auto &[member, methods, cseqs] : rows)
                ASSERT_EQ((member == "info.use" ? dtmf : decoded)[member] == "1",
                          holds(methods, method) && holds(cseqs, of_cseq))
                    << member << " in " << message;
            ASSERT_EQ(decoded["author.use"] == "1", of_cseq == 2 || method == 5 || method == 10 || method == 11)
                << message;
            const bool reversed = method == 17 || method == 18 || (method == 20 && of_cseq == 5);
            ASSERT_EQ(decoded["record_route.content"], reversed ? "b,a" : "a,b") << message;
        }
}

TEST(Dispatch, body_of_a_message) {
    const std::string start = "MESSAGE sip:h SIP/2.0\r\nCSeq: 1 MESSAGE" + headers + "a/b\r\n\r\n";
    EXPECT_EQ(decode(start)["msg_sdp.use"], "(untouched)");
    for (const std::size_t length : {2998U, 2999U})
        EXPECT_EQ(decode(start + letters(length))["msg_sdp.content"], letters(2998));
}

TEST(Dispatch, in_the_order_of_work) {
    const std::string refer = "REFER sip:h SIP/2.0\r\nCSeq: 1 REFER\r\nCall-ID: c\r\nMax-Forwards: x\r\n\r\n";
    EXPECT_EQ(lines(decode(refer).log), "1 Refer-To Header missing. Skipping transfer.\n0 Decode max-forward : 'x'");
    const std::string notify =
        "NOTIFY tel:1 SIP/2.0\r\nCSeq: 1 NOTIFY\r\nCall-ID: c\r\nv: SIP/2.0/UDP h;x\r\nf: tel:\r\n"
        "t: tel:\r\nm: u:1\r\nHistory-Info: <u:2>\r\n\r\nMessage-Account: u:3\r\n";
    const auto wrong = [](const std::string &uri) { return "0 Decode Uri : '" + uri + "' is not a valid SIP uri"; };
    EXPECT_EQ(decode(notify, zero).log, (std::vector{wrong("u:1"), wrong("u:2"), wrong("u:3")}));
}

// The exported decoders read a message that the host has split.
TEST(Dispatch, of_a_host) {
    SplitMessage split({"x", "Authorization: Digest uri=u", "Proxy-Authenticate: Digest qop=q",
                        "Authentication-Info: nextnonce=n", "c: application/dtmf-relay"});
    char line[] = "Signal=5";
    split.message().line[0] = line;
    split.message().lines = 1;
    SIP_CODE_MSG record{};
    Parse_Author(&record.author, &split.message());
    Parse_Authen(&record.authen, &split.message());
    Parse_Authen_Info(&record.authen.next_nonce, &split.message());
    Parse_Info(&record.info, &split.message());
    EXPECT_EQ(changes({}, members_of(record, zero)),
              "result=1\ninfo use=1 key=5\nauthen use=1 authen_type=103 qop=q next_nonce.use=1 next_nonce.nonce=n\n"
              "author use=1 author_type=100 stale=-1 uri=u");
    SplitMessage whole({"x", "c: application/dtmf"});
    std::string("7 \r\n").copy(whole.message().content, 5);
    whole.message().content[4] = '\0';
    Parse_Info(&record.info, &whole.message());
    EXPECT_STREQ(record.info.key, "7");
    EXPECT_STREQ(whole.message().content, "7") << "trimmed in place";
}

} // namespace
