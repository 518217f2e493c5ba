// Refer-To with an embedded Replaces, and Referred-By, of a REFER.
#include <gtest/gtest.h>

#include "support/cases.h"

namespace {

using namespace support;

const std::string head =
    "REFER sip:h SIP/2.0\r\nCSeq: 1 REFER\r\nCall-ID: c\r\nVia: SIP/2.0/UDP h;branch=b\r\nFrom: sip:f\r\nTo: sip:t\r\n";
const std::string end = "\r\nReferred-By: <sip:2002@10.0.0.2>\r\n\r\n";

// The Referred-By is also kept verbatim, in the neutral row too.
const Frame refer_to{head, end, "None: 0"};
const std::string blind = "refer_to use=1 refermode=0 ";
const std::string attended = "refer_to use=1 refermode=1 ";
const std::string by = " referbytel=2002 referbyip=10.0.0.2";
const std::string missing = "1 Refer-To Header missing. Skipping transfer.";

const Case targets[] = {
    {"attended", "REFER-TO: <SIP:1001@h?Replaces=98765%4010.0.0.3%3Bto-tag%3Dabc%3Bfrom-tag%3Ddef>",
     attended + "refertoip=h refertotel=1001 refertotag=abc referfromtag=def callid=98765@10.0.0.3" + by},
    {"other cases and orders", "Refer-To: <sip:1@h?rePLACES=a;From-TAG=d;x;to-Tag=e;to-tag=f>",
     attended + "refertoip=h refertotel=1 refertotag=e referfromtag=d callid=a" + by},
    {"tag names in others", "Refer-To: <sip:?Replaces=a;xto-tag=b;from-tag=>",
     attended + "refertotag=b referfromtag= callid=a" + by},
    {"another header first", "Refer-To: <sip:1@h?Foo=1&Replaces=98765>",
     "refer_to use=1 refertoip=h refertotel=1" + by},
    {"no user", "Refer-To: <sip:10.0.0.1>", "refer_to use=1 refermode=0" + by},
    {"escaped at", "Refer-To: <sip:b%40c@h>", blind + "refertoip=c@h refertotel=b" + by},
    {"long address", "Refer-To: <sip:" + letters(32) + "@" + letters(24) + ">",
     blind + "refertoip=" + letters(23) + " refertotel=" + letters(31) + by},
    {"long call", "Refer-To: <sip:?Replaces=" + letters(140) + ";to-tag=b>",
     attended + "refertotag=b callid=" + letters(127) + by},
    {"199 characters", "Refer-To: sip:?Replaces=;to-tag=;x" + std::string(165, 'y') + "from-tag=abc",
     attended + "refertotag= referfromtag=a callid=" + by},
    {"none", "Refer-To:", "", missing},
    {"another scheme", "Refer-To: <tel:%2B1>", "", "0 Can't transfer to non-sip: URI.  (Refer-to: tel:+1)?"},
};
INSTANTIATE_TEST_SUITE_P(ReferTo, Decoding, in_frame(refer_to, targets), Title());

const Frame referred_by{head + "Refer-To: <sip:a@h>\r\n", "\r\n\r\n", "None: 0"};
const std::string kept = "refer_to use=1 refermode=0 refertoip=h refertotel=a";
const std::string no_referrer = "1 Referred-By Header missing. Skipping transfer.";
std::string no_sip(const std::string &text) {
    return "0 Huh?  Not a sip: header (Referred-by: " + text + "). Skipping.";
}

const Case referrers[] = {
    {"long and not decoded", "Referred-By: Sip:" + letters(32) + "@" + letters(20) + "%414;x:1",
     kept + " referbytel=" + letters(31) + " referbyip=" + letters(20) +
         "%41\nreferred_by use=1 content=Sip:" + letters(32) + "@" + letters(20) + "%414;"},
    {"199 characters", "Referred-By: " + std::string(190, 'x') + "<sip:b@h>",
     kept + " referbytel=b referbyip=h\nreferred_by use=1 content=" + std::string(62, 'x')},
    {"and no more", "Referred-By: " + std::string(191, 'x') + "<sip:b@h>",
     kept + "\nreferred_by use=1 content=" + std::string(62, 'x'),
     "1 No closing bracket found in '" + std::string(191, 'x') + "<sip:b@h'\n" +
         no_sip(std::string(191, 'x') + "<sip:b@h")},
    {"none", "r: x", "", no_referrer},
    {"another scheme", "Referred-By: <tel:1>", kept + "\nreferred_by use=1 content=<tel:1>", no_sip("tel:1")},
    {"no user", "Referred-By: <SIP:h>", kept + "\nreferred_by use=1 content=<SIP:h>"},
};
INSTANTIATE_TEST_SUITE_P(ReferredBy, Decoding, in_frame(referred_by, referrers), Title());

TEST(Transfer, to_another_scheme_is_told_before_a_missing_referrer) {
    EXPECT_EQ(lines(decode(head + "Refer-To: sips:1@h\r\n\r\n").log),
              "0 Can't transfer to non-sip: URI.  (Refer-to: sips:1@h)?");
}

} // namespace
