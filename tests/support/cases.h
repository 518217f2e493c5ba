// Rows of the test tables: a text, what its decode changes in the record, and what it logs.
#pragma once

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/decoding.h"

namespace support {

// What all rows of a table share: the text around theirs.
struct Frame {
    std::string before;
    std::string after;
    std::string neutral;          // the row against which the others are compared, "none" for an unused record
    unsigned char record = stale; // what each byte of the record holds before a decode
    bool as_written = false;      // else "\n" in a row stands for CR LF

    std::string text(std::string_view row) const;
    Members base() const;
};

// A row's list reads "via branch=b addr=h:? | contact user untouched" in the order of the record, its log reads
// "0 first line | 1 second line".
struct Case {
    std::string title;
    std::string text;
    std::string changes;
    std::string log = "";
};

struct FramedCase : Case {
    const Frame *frame;
};

void PrintTo(const FramedCase &row, std::ostream *out);

// The suite that runs them: INSTANTIATE_TEST_SUITE_P(Via, Decoding, in_frame(frame, rows), Title()).
class Decoding : public testing::TestWithParam<FramedCase> {};

template <std::size_t N>
auto in_frame(const Frame &frame, const Case (&rows)[N]) {
    std::vector<FramedCase> framed;
    for (const Case &row : rows)
        framed.push_back({row, &frame});
    return testing::ValuesIn(framed);
}

// The title of a row as the name of its test: "no port: 5060" is no_port_5060.
struct Title {
    std::string operator()(std::string_view title) const;

    template <typename Row>
    std::string operator()(const testing::TestParamInfo<Row> &row) const {
        return operator()(row.param.title);
    }
};

} // namespace support
