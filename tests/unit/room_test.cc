// The longest text that each writer can write is what its buffer must hold: no byte more, no byte less.
#include <climits>
#include <cstring>

#include <gtest/gtest.h>
#include <sipcode/decode.h>
#include <sipcode/safe.h>

#include "support/clock.h"
#include "support/encoding.h"
#include "support/recording_host.h"

namespace {

using namespace support;

// Xml_Encode gets 4096 bytes and terminates what it writes there. No other body of a response is longer.
constexpr std::size_t longest_document = 4095;
static_assert(SIP_SDP_SIZE <= longest_document);

using Writer = std::string (*)(SIP_CODE_MSG &);

// The length of what is written, with the host's document at its longest.
std::size_t length_of(Writer write, SIP_CODE_MSG record) {
    const std::string text = write(record);
    return text.find("<xml>") == text.npos ? text.size() : text.find("<xml>") + longest_document;
}

// Longest numbers, flags, and the values that decide about a line.
std::vector<long> candidates(std::string_view path) {
    std::vector<long> values = {0,  1,  2,  3,  4,   5,   6,   7,       8,       9,
                                10, 11, 25, 34, 102, 103, 109, INT_MAX, INT_MIN, LONG_MAX};
    if (path.ends_with("method"))
        for (long method = 12; method < SIP_CODE_METHOD_COUNT; ++method)
            values.push_back(method);
    return values;
}

// Looks for the record that makes a writer write most, all its texts being full: gives one number after the other the value
// that makes the output longest, until none makes it longer.
SIP_CODE_MSG longest(Writer write, const std::string &fixed, pXmldoc document = nullptr) {
    SIP_CODE_MSG record = record_of(fixed);
    record.xml.xml = document;
    std::vector<const Leaf *> numbers;
    char letter = 'A';
    for (const Leaf &at : leaves()) {
        const std::string path = at.path;
        if (at.is_text())
            set_text(at, record,
                     std::string(at.member->size, letter = letter == 'Z' ? 'A' : static_cast<char>(letter + 1)));
        if (!at.is_number() || (" | " + fixed).find(" | " + path + "=") != fixed.npos)
            continue;
        numbers.push_back(&at);
        const long start = path.ends_with("port") ? INT_MIN : path.find("a_coder") != path.npos ? TE101 : 1;
        sipcode::store_number(*at.member, at.in(record), start);
    }
    std::size_t most = 0;
    for (std::size_t before = 1; most != before;) {
        before = most;
        for (const Leaf *const at : numbers) {
            SIP_CODE_MSG best = record;
            for (const long value : candidates(at->path))
                if (sipcode::store_number(*at->member, at->in(record), value) && length_of(write, record) > most) {
                    most = length_of(write, record);
                    best = record;
                }
            record = best;
        }
    }
    return record;
}

// In room for more than the stated size.
template <auto Encode>
std::string written(SIP_CODE_MSG &record) {
    static char buffer[2 * SIP_REQUEST_SIZE];
    Encode(buffer, sizeof buffer, &record);
    return buffer;
}

constexpr Writer request = written<SIP_Encode_Request_Buffer>;
constexpr Writer response = written<SIP_Encode_Response_Buffer>;

std::string description(SIP_CODE_MSG &record) {
    const std::string text = request(record);
    return text.substr(text.find("\r\n\r\n") + 4);
}

std::string dumped(SIP_CODE_MSG &record) {
    char buffer[SIP_DUMP_SIZE];
    SIP_Decode_Msg_Printf(buffer, &record);
    return buffer;
}

class Room : public testing::Test {
    const Clock clock{1795081443};
};

TEST_F(Room, of_a_request) {
    const SIP_CODE_MSG record =
        longest(request, "xml.use=2 | info.use=0 | message_summary.use=0 | sdp.a_use=0 | sdp.fax_use=0");
    EXPECT_EQ(length_of(request, record) + 1, SIP_REQUEST_SIZE);
}

TEST_F(Room, of_a_response) {
    Xmldoc document{};
    std::memset(document.content, 'x', sizeof document.content - 1); // a length of four digits
    const SIP_CODE_MSG record = longest(response, "xml.use=1 | info.use=0 | sdp.a_use=0 | sdp.fax_use=0", &document);
    EXPECT_EQ(length_of(response, record) + 1, SIP_RESPONSE_SIZE);
}

TEST(DocumentRoom, is_told_to_the_host) {
    Xmldoc document{};
    SIP_CODE_MSG record = record_of("method=20 | cseq.method=5 | content.use=1 | xml.use=1");
    record.xml.xml = &document;
    host().log.clear();
    EXPECT_NE(encode_response(record).text.find("<xml>"), std::string::npos);
    EXPECT_EQ(host().log, std::vector<std::string>{}) << "4096 bytes";
}

TEST_F(Room, of_a_session_description) {
    SIP_CODE_MSG record = longest(
        description,
        "method=5 | cseq.method=5 | rack.method=5 | content.use=1 | info.use=0 | message_summary.use=0 | xml.use=0");
    EXPECT_EQ(description(record).size() + 1, SIP_SDP_SIZE);
}

TEST_F(Room, of_a_dump) {
    SIP_CODE_MSG record = longest(dumped, "rack.method=5");
    EXPECT_EQ(dumped(record).size() + 1, SIP_DUMP_SIZE);
    EXPECT_TRUE(dumped(record).ends_with(" ]\n")) << "not cut";
}

} // namespace
