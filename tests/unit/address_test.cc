// URIs, escapes, brackets, and the four name-address headers.
#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/guarded.h"

namespace {

using namespace support;

const std::string head = "OPTIONS sip:h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 OPTIONS\r\nVia: SIP/2.0/UDP h;branch=b\r\n";
std::string not_sip(const std::string &uri) { return "0 Decode Uri : '" + uri + "' is not a valid SIP uri"; }

const Frame request_uri{
    "OPTIONS ",
    " SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 OPTIONS\r\nVia: SIP/2.0/UDP h;branch=b\r\nFrom: sip:f\r\nTo: sip:t\r\n\r\n",
    "tel:"};
const Case request_uris[] = {
    {"no user leaves it alone", "sip:h", "uri user untouched addr=h:5060"},
    {"empty user clears it", "sip:@h", "uri addr=h:5060"},
    {"the first colon behind the user begins the port", "sip:a:pw@h:1:2", "uri user=a:pw addr=h:1"},
    {"the first at ends the user", "sip:a@b@c", "uri user=a addr=b@c:5060"},
    {"a parameter before the at hides it", "sip:123;cpc=o@h", "uri user untouched addr=123:5060"},
    {"no escapes in the host", "sip:%41%40%42", "uri user untouched addr=%41%40%42:5060"},
    {"escapes are decoded behind the cut at 31", "sip:" + repeat(11, "%41") + "@h", "uri user=AAAAAAAAAA% addr=h:5060"},
    {"tel", "tel:+15550100;phone-context=x", "uri user=+15550100"},
    {"tel with an at keeps what follows it", "tel:1@2@3", "uri user=2@3"},
    {"tel is cut at the semicolon before the at is looked for", "tel:1;x@2", "uri user=1"},
    {"sips is another scheme", "sips:2002@h", "uri user=h", not_sip("sips:2002@h")},
    {"another scheme is logged whole and loses four characters", "urn:x:y;z", "uri user=x:y", not_sip("urn:x:y;z")},
    {"a scheme without its colon", "sip1@h", "uri user=h", not_sip("sip1@h")},
};
INSTANTIATE_TEST_SUITE_P(RequestUri, Decoding, in_frame(request_uri, request_uris), Title());

// A text and its decoded form.
const char *const escapes =
    "= | plain=plain | %41%5A%5a%7e=AZZ~ | %=% | %4=%4 | a%41=aA | %41b%=Ab% | %4G=\x04 | %4Gx=\x04x | %G1=%G1 | "
    "%%41=%A | %25%34%31=%41 | %ffx=\xFFx | %FFx=\xFFx | a%00b=a | %0xb= | %0=%0 | % 4z=\x04z | %  41=A41 | "
    "%\v\r4=\0044 | %  z=%  z | %  =%   | %\00141=%\00141 | %-1x=\xFFx | %+fx=\x0Fx | %-0x= | % -1=\3771 | "
    "%-g=%-g | %--1=%--1 | %+-1=%+-1 | %:0%/0%@0%`0%g0=%:0%/0%@0%`0%g0";

TEST(UriDecode, escapes) {
    for (const std::string &row : entries(escapes)) {
        const std::string text = row.substr(0, row.find('='));
        const Guarded room(text.size() + 1, 0);
        text.copy(room.data(), text.size());
        Uri_Decode(room.data());
        EXPECT_EQ(room.data(), row.substr(text.size() + 1)) << row;
    }
}

const Frame from{head + "To: sip:t\r\n", "\r\n\r\n", "From: tel:\nFrom: sip:second"};
const Case froms[] = {
    {"no brackets", "From: sip:a@h:1;tag=abc;x", "from user=a tag=abc addr=h:1"},
    {"compact name", "f: <sip:a@h>;tag=9", "from user=a tag=9 addr=h:5060"},
    {"compact name behind an empty From", "F: sip:a@h;tag=9\nFrom:", "from user=a tag=9 addr=h:5060"},
    {"compact name loses against From", "f: sip:compact@h;tag=9\nFrom: sip:a@h", "from user=a addr=h:5060"},
    {"empty", "From:", "", not_sip("")},
    {"user parameters are taken out", "From: <sip:123;cpc=ordinary@h;user=phone>", "from user=123 addr=h:5060"},
    {"user parameters in front of two ats", "From: <sip:1;x@h;y@z>", "from user=1 addr=h:5060"},
    {"user parameters of a tel", "From: <tel:1;x@2>", "from user=2"},
    {"a log line shows the URI without parameters", "From: <urn:x;y>", "from user=x", not_sip("urn:x")},
    {"the first tag= counts, even inside another name", "From: <sip:a@h;xtag=9>;tag=7",
     "from user=a tag=9> addr=h:5060"},
    {"tag in the display name counts", "From: \"tag=1;\" <sip:a@h>;tag=7", "from user=a tag=1 addr=h:5060"},
    {"the name tag is case-sensitive", "From: <sip:a@h>;TAG=7", "from user=a addr=h:5060"},
};
INSTANTIATE_TEST_SUITE_P(From, Decoding, in_frame(from, froms), Title());

const Frame to{head + "From: sip:f\r\n", "\r\n\r\n", "To: tel:"};
const Case tos[] = {
    {"compact name", "t: <sip:b@h>;tag=9", "to user=b tag=9 addr=h:5060 flag=1"},
    {"tel", "To: <tel:1;x=y>;tag=9", "to user=1 tag=9"},
};
INSTANTIATE_TEST_SUITE_P(To, Decoding, in_frame(to, tos), Title());

const Frame contact{head + "From: sip:f\r\nTo: sip:t\r\n", "\r\n\r\n", "None: 0"};
const Case contacts[] = {
    {"no brackets", "CONTACT: sip:a@h;x=1", "contact user=a addr=h:5060"},
    {"the first of a list in brackets", "Contact: <sip:a@h>, <sip:b@i:2>", "contact user=a addr=h:5060"},
    {"a list without brackets is one address", "Contact: sip:a@h,sip:b@i", "contact user=a addr=h,sip:0"},
    {"compact name loses against Contact", "M: <sip:compact@h>\nContact: sip:a@h", "contact user=a addr=h:5060"},
    {"an empty Contact hides the compact name", "Contact:\nm: sip:a@h", "contact user=", not_sip("")},
    {"user parameters hide the host", "Contact: <sip:1;x@h>", "contact addr=1:5060"},
    {"case is folded for letters only", "Contact: SIP\032a", "contact user=a", not_sip("SIP\\x1Aa")},

    {"an escaped quote in a quoted name", R"(Contact: "a \" <sip:x@y>" <sip:a@h>)", "contact user=a addr=h:5060"},
    {"a quote behind the bracket", R"(Contact: <sip:a"b"@h>")", "contact user=a\"b\" addr=h:5060"},
    {"brackets in a quoted name alone", "Contact: \"<sip:x@y>\" z", "contact user=y>\" z", not_sip("\"<sip:x@y>\" z")},
    {"an unclosed quote", "Contact: \"a <sip:a@h>", "contact user=h>",
     "1 No closing quote found in '\"a <sip:a@h>' | " + not_sip("\"a <sip:a@h>")},
    {"a quote closed by an escaped backslash stays open", R"(Contact: "a\\" <sip:a@h>)", "contact user=h>",
     R"(1 No closing quote found in '"a\\" <sip:a@h>' | )" + not_sip(R"("a\\" <sip:a@h>)")},
    {"an escaped quote still opens a quoted name", R"(Contact: \" <sip:a@h>)", "contact user=h>",
     R"(1 No closing quote found in '\" <sip:a@h>' | )" + not_sip(R"(\" <sip:a@h>)")},
    {"an unclosed bracket", "Contact: <sip:a@h;x", "contact user=h",
     "1 No closing bracket found in '<sip:a@h;x' | " + not_sip("<sip:a@h")},
};
INSTANTIATE_TEST_SUITE_P(Contact, Decoding, in_frame(contact, contacts), Title());

const Case called_parties[] = {
    {"user and address alone", "P-Called-Party-ID: \"x\" <sip:a@h:1>;tag=9", "callparty user=a addr=h:1"},
    {"user parameters hide the host", "p-called-party-id:<sip:1;x@h>", "callparty addr=1:5060"},
    {"empty", "P-Called-Party-ID:", "callparty user=", not_sip("")},
};
INSTANTIATE_TEST_SUITE_P(PCalledPartyId, Decoding, in_frame(contact, called_parties), Title());

} // namespace
