// Records that a careless host could fill. Reads and writes out of bounds are judged by the unreadable pages behind record and
// buffer, and by what is written: the text of a neighbouring member would be seen.
#include <climits>
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

// Records that write as much as they can, each with one member out of bounds.
TEST_F(WildRecord, with_one_wild_member) {
    for (const auto &[method, answered] : {std::pair(5, 5), std::pair(10, 10), std::pair(4, 11)})
        for (const Place &wild : places()) {
            SIP_CODE_MSG record{};
            for (const Place &at : places())
                at.is_text() ? set_text(record, at, "t")
                             : void(sipcode::store_number(at.member, at.in(record), at.is_number()));
            Xmldoc document{};
            record.xml.xml = &document;
            record.method = method;
            record.cseq.method = answered;
            record.info.use = record.message_summary.use = 0;
            for (const long number : {0L, -1L, 2L, 49L, 1000L, long{INT_MAX}, long{INT_MIN}, LONG_MAX, LONG_MIN})
                if (wild.is_number() && wild.path != "method" &&
                    sipcode::store_number(wild.member, wild.in(record), number))
                    expect_as_rendered(record, wild.path + "=" + std::to_string(number));
            for (const std::string &text : {std::string(), std::string(5000, 'z'), std::string("%n%s\"\r\n\xC3\xA4")})
                if (wild.is_text()) {
                    set_text(record, wild, text);
                    expect_as_rendered(record, wild.path + "=" + text);
                }
        }
}

TEST_F(WildRecord, with_texts_that_seem_to_go_on_in_the_next_member) {
    const std::string host(24, 'h');
    for (const std::string &members :
         {"callid=ims-" + letters(124), "sdp.a_addr.ip=" + host + " | sdp.v_addr.port=1 | sdp.v_addr.ip=" + host,
          "sdp.a_use=0 | xml.use=2 | xml_buf=" + letters(4096), "event.content=dialog" + std::string(58, ' '),
          "sdp.a_use=0 | msg_sdp.use=1 | msg_sdp.content=" + letters(3000)})
        for (const std::string method : {"INVITE", "SUBSCRIBE"})
            expect_as_rendered(
                record_of("method=" + method + " | content.use=1 | sdp.a_use=1 | sdp.v_use=1 | " + members), members);
}

} // namespace
