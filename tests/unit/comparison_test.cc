// What depends on how the host compares, and what does not.
#include <gtest/gtest.h>

#include "support/decoding.h"
#include "support/recording_host.h"

namespace {

using namespace support;

TEST(HostComparison, leaves_parameter_names_case_sensitive) {
    host().folds_case = true;
    const Decoded decoded =
        decode("INVITE sip:h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\nVia: SIP/2.0/UDP h;BRANCH=b\r\n"
               "From: sip:f;TAG=1\r\nTo: sip:t\r\nContact: <tel:>;EXPIRES=9\r\n\r\n");
    host().folds_case = false;
    EXPECT_EQ(decoded["via.branch"] + decoded["from.tag"] + decoded["expire.expires"], "(untouched)(untouched)3600");
}

TEST(HostComparison, decides_on_option_tags) {
    host().folds_case = true;
    const Decoded decoded =
        decode("OPTIONS sip:h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 OPTIONS\r\nVia: x\r\nSupported: TIMER\r\n\r\n");
    host().folds_case = false;
    EXPECT_EQ(decoded["supported.supported_type[0]"], "2");
}

} // namespace
