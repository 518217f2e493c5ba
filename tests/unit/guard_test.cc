// Every text, record and buffer right behind an unreadable page and right in front of one: a byte read or written outside faults,
// and a byte written on the other side shows.
#include <cstring>

#include <gtest/gtest.h>
#include <sipcode/encode.h>
#include <sipcode/safe.h>

#include "support/decoding.h"
#include "support/guarded.h"
#include "support/members.h"
#include "support/random_record.h"
#include "support/samples.h"

namespace {

using namespace support;

constexpr Side sides[] = {Side::before, Side::behind};

struct Decode {
    int result;
    SIP_CODE_MSG record;
};

Decode decoded(std::string_view text, Side side) {
    const Guarded input(text, side);
    const Guarded record(sizeof(SIP_CODE_MSG), zero, side);
    const int result = Sip_Decode(input.data(), &record.as<SIP_CODE_MSG>());
    EXPECT_TRUE(record.intact());
    return {result, record.as<SIP_CODE_MSG>()};
}

Decode decoded_by_length(std::string_view text, Side side) {
    const Guarded input = Guarded::bytes(text, side);
    const Guarded record(sizeof(SIP_CODE_MSG), stale, side);
    const Guarded report(sizeof(SIP_DECODE_REPORT), stale, side);
    const int outcome =
        SIP_Decode_Buffer(input.data(), text.size(), &record.as<SIP_CODE_MSG>(), &report.as<SIP_DECODE_REPORT>());
    EXPECT_TRUE(record.intact() && report.intact());
    return {outcome == SIP_DECODE_DONE ? 1 : -1, record.as<SIP_CODE_MSG>()};
}

// Of any length, and so at any place in the blocks in which a text is read.
TEST(Guard, decoding) {
    for (const auto &[title, text] : samples())
        for (std::size_t length = 0; length <= text.size(); length += length + 40 < text.size() ? 37 : 1) {
            const std::string_view part = std::string_view(text).substr(0, length);
            const Decode plain = decoded(part, Side::behind);
            for (const Decode &other : {decoded(part, Side::before), decoded_by_length(part, Side::before),
                                        decoded_by_length(part, Side::behind)}) {
                EXPECT_EQ(plain.result, other.result) << title << ", " << length;
                EXPECT_EQ("", difference(plain.record, other.record)) << title << ", " << length;
            }
        }
}

TEST(Guard, framing) {
    for (const auto &[title, text] : samples())
        for (std::size_t length = 0; length <= text.size(); ++length) {
            std::vector<std::pair<int, std::size_t>> framed;
            for (const Side side : sides) {
                const Guarded input = Guarded::bytes(std::string_view(text).substr(0, length), side);
                const Guarded end(sizeof(std::size_t), stale, side);
                const int outcome = SIP_Frame_Stream(input.data(), length, &end.as<std::size_t>());
                framed.emplace_back(outcome, end.as<std::size_t>());
                EXPECT_TRUE(end.intact());
            }
            EXPECT_EQ(framed[0], framed[1]) << title << ", " << length;
        }
}

template <typename Write>
std::string written(const SIP_CODE_MSG &record, std::size_t room, Side side, Write write) {
    const Guarded input(sizeof(SIP_CODE_MSG), zero, side);
    const Guarded output(room, stale, side);
    input.as<SIP_CODE_MSG>() = record;
    write(output.data(), &input.as<SIP_CODE_MSG>());
    EXPECT_TRUE(input.intact() && output.intact());
    return {output.data(), strnlen(output.data(), room)};
}

struct Encoder {
    int (*plain)(char *buffer, SIP_CODE_MSG *record);
    int (*bounded)(char *buffer, std::size_t size, SIP_CODE_MSG *record);
    std::size_t size;
};

constexpr Encoder encoders[] = {{SIP_Encode_Message_Reuqest, SIP_Encode_Request_Buffer, SIP_REQUEST_SIZE},
                                {SIP_Encode_Message_Response, SIP_Encode_Response_Buffer, SIP_RESPONSE_SIZE}};

// Hostile records, which the bounded encoders refuse, and with texts of letters, which they take.
TEST(Guard, writing) {
    Xmldoc document{};
    RandomRecords random(2);
    int accepted = 0;
    for (int i = 0; i < 2000; ++i) {
        SIP_CODE_MSG record = random.next();
        record.xml.xml = &document;
        for (const Place &at : places())
            if (at.is_text() && i % 2 == 0)
                set_text(record, at, std::string(random.below(at.member.size + 1), 'a'));
        for (const Side side : sides) {
            written(record, SIP_DUMP_SIZE, side, SIP_Decode_Msg_Printf);
            for (const Encoder &encoder : encoders) {
                const std::string plain = written(record, encoder.size, side, encoder.plain);
                for (const std::size_t room : {plain.size(), plain.size() + 1}) {
                    const std::string bounded =
                        written(record, room, side, [&encoder, room](char *buffer, SIP_CODE_MSG *from) {
                            return encoder.bounded(buffer, room, from);
                        });
                    EXPECT_TRUE(bounded.empty() || (bounded == plain && room > plain.size())) << i;
                    accepted += !bounded.empty();
                }
            }
        }
    }
    EXPECT_GT(accepted, 500);
}

} // namespace
