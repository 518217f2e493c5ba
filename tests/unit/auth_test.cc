// Digest authentication: credentials, challenges, the next nonce, and the older challenge decoders.
#include <cstring>

#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/guarded.h"
#include "support/split_message.h"

namespace {

using namespace support;

const std::string head = "\r\nCall-ID: c\r\nVia: SIP/2.0/UDP h;branch=b\r\nFrom: sip:f\r\nTo: sip:t\r\n";
const std::string invite = "INVITE sip:h SIP/2.0\r\nCSeq: 1 INVITE" + head;

const Frame credentials{invite + "Authorization: Digest ", "\r\n\r\n", ""};
const Case parameters[] = {
    {"all", R"(username="u",realm="r",nonce="n",uri="sip:h",response="e",stale=TRUE,algorithm=MD5)",
     "author stale=1 username=u realm=r nonce=n uri=sip:h response=e algorithm=MD5"},
    {"names are found anywhere", R"(xrealm="r"nonce="n"; uri ="u")", "author realm=r nonce=n"},
    {"a client nonce is another", R"(nonce="n",cnonce="c",qop=auth,nc=00000001,CNONCE="d",algorithm=MD5)",
     "author nonce=n algorithm=MD5"},
    {"name in a quoted value", R"(realm="nonce=x",uri="u")", "author realm=nonce=x uri=u"},
    {"empty value", R"(realm=""uri="u")", "author uri=u"},
    {"unquoted value", "realm=r,nonce=n", "author realm=r,nonce=n nonce=n"},
    {"name in an unquoted value", "realm=xuri=u", "author realm=xuri=u uri=u"},
    {"name in place of an unquoted value", "realm=uri=u", "author realm=uri=u"},
    {"name in place of a value", R"(realm=uri="u")", "author realm=uri=u"},
    {"algorithm list", R"(algorithm=",,MD5,SHA")", "author algorithm=MD5"},
    {"an algorithm list is read up to its 31st character", "algorithm=\"" + std::string(31, ',') + "MD5\"",
     "author algorithm=" + std::string(15, ',')},
    {"stale and what follows it", R"(STALE=faLSErealm="r")", "author stale=0 realm=r"},
    {"quoted stale", R"(stale="TRUE")", ""},
    {"long values",
     "username=\"" + letters(63) + "\",realm=\"" + letters(64) + "\",nonce=\"" + letters(127) +
         "\",algorithm=" + letters(16),
     "author username=" + letters(63) + " realm=" + letters(63) + " nonce=" + letters(127) +
         " algorithm=" + letters(15)},
    {"511 characters", std::string(498, 'x') + "uri=\"uv", "author uri=u"},
};
INSTANTIATE_TEST_SUITE_P(Credentials, Decoding, in_frame(credentials, parameters), Title());

const Frame authorization{invite, "\r\n\r\n", "Authorization: x"};
const Case authorizations[] = {
    {"a tab behind the scheme", "Authorization: Digest\trealm=\"r\"", ""},
    {"both", "Proxy-Authorization: Digest realm=\"p\"\nAUTHORIZATION: Digest uri=\"u\"", "author uri=u"},
    {"empty and for a proxy", "Authorization:\nProxy-Authorization: Digest realm=\"p\"",
     "author author_type=101 realm=p"},
};
INSTANTIATE_TEST_SUITE_P(Authorization, Decoding, in_frame(authorization, authorizations), Title());

const Frame unauthorized{"SIP/2.0 401 Unauthorized\r\nCSeq: 1 INVITE" + head, "\r\n\r\n", "WWW-Authenticate: x"};
const Case challenges[] = {
    {"all",
     R"(WWW-Authenticate: Digest realm="r",domain="d",nonce="n",opaque="o",stale=TRUE,)"
     R"(algorithm=MD5,qop="auth,auth-int")",
     "authen stale=1 realm=r nonce=n algorithm=MD5 qop=auth,auth-int"},
    {"of a proxy", "Proxy-Authenticate: Digest stale=false", "authen authen_type=103 stale=0"},
    {"both", "Proxy-Authenticate: Digest realm=\"p\"\nwww-authenticate: Digest nonce=\"n\"", "authen nonce=n"},
    {"long values", "WWW-Authenticate: Digest realm=\"" + letters(64) + "\",nonce=\"" + letters(128) + "\"",
     "authen realm=" + letters(63) + " nonce=" + letters(127)},
    {"255 characters", "WWW-Authenticate: Digest " + std::string(242, 'x') + "qop=\"uv", "authen qop=u"},
};
INSTANTIATE_TEST_SUITE_P(Challenge, Decoding, in_frame(unauthorized, challenges), Title());

const Frame registered{"SIP/2.0 200 OK\r\nCSeq: 1 REGISTER" + head, "\r\n\r\n", "Authentication-Info: x"};
const Case next_nonces[] = {
    {"two", "Authentication-Info: nextnonce=\"n\",nextnonce=m,stale=FALSE", "authen next_nonce.nonce=m,stale=FALSE"},
    {"empty", "Authentication-Info: ", "authen next_nonce.use=0"},
    {"511 characters", "Authentication-Info: " + std::string(499, 'x') + "nextnonce=\"uv", "authen next_nonce.nonce=u"},
};
INSTANTIATE_TEST_SUITE_P(NextNonce, Decoding, in_frame(registered, next_nonces), Title());

TEST(Credentials, are_cleared_without_a_header) {
    std::string values;
    for (const std::string member : {"username", "realm", "nonce", "uri", "response", "algorithm", "stale"})
        values += decode(invite + "\r\n")["author." + member];
    EXPECT_EQ(values, "-1");
}

TEST(DelQuoteMark, table) {
    const struct {
        std::string source;
        int result;
        std::string copied;
    } rows[] = {
        {"\"abc\"d", 3, "abc"}, {"\"\"", 0, ""},     {"\"a,b,c\"", 1, "a,b,c"}, {"ab\"c\"", 3, "abc"},
        {"\",\"", 0, ","},      {"\"abc", 0, "abc"}, {"a\"b", 0, "ab"},
    };
    for (const auto &[source, result, copied] : rows) {
        const Guarded to(source.size() + 1, zero);
        EXPECT_EQ(Del_Quote_Mark(Guarded(source).data(), to.data()), result) << source;
        EXPECT_EQ(to.data(), copied) << source;
    }
    const Guarded unterminated(4, stale);
    EXPECT_EQ(Del_Quote_Mark(Guarded(std::string_view("abc")).data(), unterminated.data()), 0);
    EXPECT_EQ(std::memcmp(unterminated.data(), "abc\xA5", 4), 0);
}

// The older decoders look for fixed text around a value, in the whole message.
TEST(OldChallenges, table) {
    const std::string www = "WWW-Authenticate: Digest ";
    const std::string proxy = "Proxy-Authenticate: Digest ";
    const std::string four = R"(realm="r",domain="d",nonce="n",stale=TRUE,algorithm=SHA)";
    const std::string three = R"(realm="r",nonce="n",algorithm=SHA,stale=TRUE,algor)";
    const std::string all = "authen stale=1 realm=r nonce=n algorithm=MD5 qop=auth";
    const struct {
        std::string title;
        void (*decode)(SIP_AUTHEN *, SIP_MSG *, char *);
        std::string header;
        std::string message;
        std::string changed;
    } rows[] = {
        {"first", Parse_Authen_bak, www, four, all},
        {"second", Parse_Authen_bak2, proxy, three, "authen stale=0 realm=r nonce=n algorithm=MD5 qop=auth"},
        {"second of the others", Parse_Authen_bak2, proxy, four,
         "authen stale=0 realm=r\",domain=\"d algorithm=MD5 qop=auth"},
        {"neither stale", Parse_Authen_bak3, proxy, "stale=true,algor", "authen stale=0 algorithm=MD5 qop=auth"},
        {"no digest", Parse_Authen_bak, www + "x", four, ""},
        {"first without its header", Parse_Authen_bak, proxy, four, ""},
        {"second without its header", Parse_Authen_bak2, www, three, ""},
        {"third without its header", Parse_Authen_bak3, www, four, ""},
        {"long values", Parse_Authen_bak, www,
         "realm=\"" + letters(300) + "\",domain=\"nonce=\"" + letters(300) + "\",stale=" + letters(300) + ",algor",
         "authen stale=0 realm=" + letters(62) + " nonce=" + letters(126) + " algorithm=MD5 qop=auth"},
        {"4095 characters", Parse_Authen_bak, www, std::string(4095 - 16, 'x') + "stale=TRUE,algor",
         "authen stale=1 algorithm=MD5 qop=auth"},
        {"and no more", Parse_Authen_bak, www, std::string(4095 - 15, 'x') + "stale=TRUE,algor",
         "authen stale=0 algorithm=MD5 qop=auth"},
    };
    for (const auto &[title, decode, header, message, changed] : rows) {
        SplitMessage split({"SIP/2.0 401 x", header});
        const Guarded record(sizeof(SIP_CODE_MSG), stale);
        decode(&record.as<SIP_CODE_MSG>().authen, &split.message(), Guarded(message).data());
        EXPECT_EQ(changes({{"result", "1"}}, members_of(record.as<SIP_CODE_MSG>())), changed) << title;
    }
}

} // namespace
