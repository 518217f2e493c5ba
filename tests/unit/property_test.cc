// The encoders against a plain rendering from tables, over random records: every byte that is written, and every member.
#include <gtest/gtest.h>

#include "support/clock.h"
#include "support/encoding.h"
#include "support/random_record.h"
#include "support/rendering.h"

namespace {

using namespace support;

TEST(Property, messages_are_as_rendered) {
    const Clock clock(1795081443);
    rendered_date = "Thu, 19 Nov 2026 09:44:03 GMT";
    Xmldoc document{};
    RandomRecords random(1);
    for (int i = 0; i < 5000; ++i) {
        const bool is_request = i % 2 == 0;
        SIP_CODE_MSG record = random.next();
        if (!is_request && i % 8 != 1)
            record.method = static_cast<int>(SIP_RESPONSE_MSG_100_TRY + random.below(33));
        record.xml.xml = random.below(4) == 0 ? nullptr : &document;
        const Encoded encoded = is_request ? encode_request(record) : encode_response(record);
        ASSERT_EQ(is_request ? render_request(record) : render_response(record), encoded.text) << "record " << i;
        ASSERT_EQ("", difference(record, encoded.record)) << "record " << i;
        ASSERT_EQ(1, encoded.result);
    }
}

} // namespace
