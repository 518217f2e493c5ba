// Records that a careless host could fill. Reads and writes out of bounds are judged by the unreadable pages behind record and
// buffer, and by what is written: the text of a neighbouring member would be seen.
#include <cstring>

#include <gtest/gtest.h>

#include "support/clock.h"
#include "support/decoding.h"
#include "support/encoding.h"
#include "support/rendering.h"

namespace {

using namespace support;

class WildRecord : public testing::Test {
  protected:
    WildRecord() { rendered_date = "Thu, 19 Nov 2026 09:44:03 GMT"; }

    static void expect_as_rendered(const SIP_CODE_MSG &record, const std::string &what) {
        SIP_CODE_MSG rendered = record;
        EXPECT_EQ(render_request(rendered), encode_request(record).text) << what;
        rendered = record;
        EXPECT_EQ(render_response(rendered), encode_response(record).text) << what;
    }

    const Clock clock{1795081443};
};

TEST_F(WildRecord, of_one_byte_throughout) {
    for (const int byte : {0x00, 0x01, 0x02, 0x25, 0x7F, 0x80, 0xA5, 0xFF})
        for (int method = 1; method < SIP_CODE_METHOD_COUNT; ++method) {
            SIP_CODE_MSG record;
            std::memset(static_cast<void *>(&record), byte, sizeof record);
            record.method = method;
            expect_as_rendered(record, "bytes of " + std::to_string(byte));
            EXPECT_LT(dump(record).size(), SIP_DUMP_SIZE);
        }
}

TEST_F(WildRecord, with_texts_that_seem_to_go_on_in_the_next_member) {
    const std::string host(23, 'h');
    for (const std::string &members :
         {"callid=ims-" + letters(124), "sdp.a_addr.ip=" + host + "h | sdp.v_addr.port=1 | sdp.v_addr.ip=" + host + "h",
          "sdp.a_addr.ip=" + host + "h | sdp.v_addr.ip=" + host + "i",
          "sdp.a_use=0 | xml.use=2 | xml_buf=" + letters(4096), "event.content=dialog" + std::string(58, ' '),
          "sdp.a_use=0 | msg_sdp.use=1 | msg_sdp.content=" + letters(3000)})
        for (const std::string method : {"INVITE", "SUBSCRIBE"})
            expect_as_rendered(
                record_of("method=" + method + " | content.use=1 | sdp.a_use=1 | sdp.v_use=1 | " + members), members);
}

} // namespace
