// The stated size of each buffer is that of the longest text. A file of tests/data/longest holds the numbers of the
// record that makes it; all its texts are full and unterminated. The replays check that no record makes a longer one.
#include <cstring>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>
#include <sipcode/decode.h>
#include <sipcode/safe.h>

#include "support/clock.h"
#include "support/encoding.h"
#include "support/recording_host.h"

namespace {

using namespace support;

SIP_CODE_MSG longest(const std::string &name) {
    std::ifstream file(SIPCODE_TEST_DATA "/longest/" + name);
    SIP_CODE_MSG record = record_of(std::string(std::istreambuf_iterator<char>(file), {}));
    char letter = 'A';
    for (const Leaf &at : leaves())
        if (at.is_text())
            set_text(at, record,
                     std::string(at.member->size, letter = letter == 'Z' ? 'A' : static_cast<char>(letter + 1)));
    return record;
}

// In room for more than the stated size.
template <auto Encode>
std::string written(SIP_CODE_MSG record) {
    const Clock clock(1795081443);
    static char buffer[2 * SIP_REQUEST_SIZE];
    Encode(buffer, sizeof buffer, &record);
    return buffer;
}

TEST(Room, of_requests_and_descriptions) {
    EXPECT_EQ(written<SIP_Encode_Request_Buffer>(longest("request")).size() + 1, SIP_REQUEST_SIZE);
    const std::string with_description = written<SIP_Encode_Request_Buffer>(longest("description"));
    EXPECT_EQ(with_description.size() - with_description.find("\r\n\r\n") - 4 + 1, SIP_SDP_SIZE);
}

// The host's document is as long as its room: 4096 bytes with the terminator.
TEST(Room, of_a_response) {
    Xmldoc document{};
    std::memset(document.content, 'x', sizeof document.content - 1); // a length of four digits
    SIP_CODE_MSG record = longest("response");
    record.xml.xml = &document;
    host().log.clear();
    const std::string text = written<SIP_Encode_Response_Buffer>(record);
    EXPECT_EQ(text.find("<xml>") + 4095 + 1, SIP_RESPONSE_SIZE);
    EXPECT_EQ(host().log, std::vector<std::string>{}) << "the host is given 4096 bytes";
}

TEST(Room, of_a_dump) {
    SIP_CODE_MSG record = longest("dump");
    char buffer[SIP_DUMP_SIZE];
    SIP_Decode_Msg_Printf(buffer, &record);
    EXPECT_EQ(std::string(buffer).size() + 1, SIP_DUMP_SIZE);
    EXPECT_TRUE(std::string(buffer).ends_with(" ]\n")) << "not cut";
}

} // namespace
