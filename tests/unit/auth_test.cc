// Digest authentication: what is cleared, quoted values, and the older challenge decoders.
#include <cstring>

#include <gtest/gtest.h>

#include "support/decoding.h"
#include "support/guarded.h"
#include "support/split_message.h"

namespace {

using namespace support;

TEST(Credentials, are_cleared_without_a_header) {
    const std::string invite =
        "INVITE sip:h SIP/2.0\r\nCSeq: 1 INVITE\r\nCall-ID: c\r\nVia: SIP/2.0/UDP h;branch=b\r\n\r\n";
    std::string values;
    for (const std::string member : {"username", "realm", "nonce", "uri", "response", "algorithm", "stale"})
        values += decode(invite)["author." + member];
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
