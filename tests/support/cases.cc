#include "support/cases.h"

namespace support {

std::string Frame::text(std::string_view row) const {
    std::string whole = before;
    for (const char c : row)
        whole.append(c == '\n' && !as_written ? "\r\n" : std::string(1, c));
    return whole + after;
}

Members Frame::base() const { return neutral == "none" ? Members() : decode(text(neutral), record).members; }

std::string Title::operator()(std::string_view title) const {
    std::string name;
    for (const char c : title) {
        if (isalnum(static_cast<unsigned char>(c)) != 0)
            name += c;
        else if (!name.empty() && name.back() != '_')
            name += '_';
    }
    return name;
}

void PrintTo(const FramedCase &row, std::ostream *out) { *out << row.title; }

TEST_P(Decoding, of) {
    const FramedCase &row = GetParam();
    const std::string text = row.frame->text(row.text);
    const Decoded decoded = decode(text, row.frame->record);
    EXPECT_EQ(lines(entries(row.changes)), changes(row.frame->base(), decoded.members)) << text;
    EXPECT_EQ(lines(entries(row.log)), lines(decoded.log)) << text;
    expect_whole_members(text);
}

} // namespace support
