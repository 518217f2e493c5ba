// What the encoders write of thousands of random records, hostile ones included, compared with stored digests: every
// byte of the text, and every member of the record afterwards.
//
// A line of tests/data/digests holds the digests of 50 records, four hexadecimal digits each.
// SIPCODE_STORE_DIGESTS=FILE writes a new file.
#include <cstring>
#include <fstream>

#include <gtest/gtest.h>

#include "support/clock.h"
#include "support/encoding.h"
#include "support/random_record.h"

namespace {

using namespace support;

constexpr int records_in_line = 50;

// FNV-1a of 32 bits, folded to 16.
unsigned digest(std::string_view text) {
    std::uint32_t hash = 2166136261U;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
    return (hash >> 16) ^ (hash & 0xFFFF);
}

std::vector<SIP_CODE_MSG> random_records() {
    std::vector<SIP_CODE_MSG> records;
    RandomRecords random(1);
    for (int i = 0; i < 5000; ++i)
        records.push_back(random.next());
    for (const int byte : {0x00, 0x01, 0x02, 0x25, 0x7F, 0x80, 0xA5, 0xFF}) // of one byte throughout
        for (int method = 1; method < SIP_CODE_METHOD_COUNT; ++method) {
            std::memset(static_cast<void *>(&records.emplace_back()), byte, sizeof(SIP_CODE_MSG));
            records.back().method = method;
        }
    return records;
}

TEST(Digest, of_what_is_written_is_as_stored) {
    const Clock clock(1795081443);
    Xmldoc document{};
    std::ifstream stored(SIPCODE_TEST_DATA "/digests");
    const char *const store_in = std::getenv("SIPCODE_STORE_DIGESTS");
    std::ofstream store(store_in == nullptr ? "/dev/null" : store_in);
    int number = 0;
    for (SIP_CODE_MSG &record : random_records()) {
        record.xml.xml = number % 4 == 0 ? nullptr : &document;
        const Encoded encoded = number % 2 == 0 ? encode_request(record) : encode_response(record);
        ASSERT_EQ(1, encoded.result);
        char found[5];
        std::snprintf(found, sizeof found, "%04x", digest(encoded.text + difference(record, encoded.record)));
        store << found << (++number % records_in_line == 0 ? '\n' : ' ');
        std::string expected;
        stored >> expected;
        ASSERT_TRUE(store_in != nullptr || expected == found) << "record " << number - 1 << " is written as\n"
                                                              << encoded.text;
    }
}

} // namespace
