// Framing of a stream: outcomes and lengths.
#include <gtest/gtest.h>
#include <sipcode/safe.h>

#include "support/guarded.h"

namespace {

using namespace support;

struct Framed {
    int outcome;
    std::size_t length;

    bool operator==(const Framed &) const = default;
};

void PrintTo(const Framed &framed, std::ostream *out) { *out << framed.outcome << ", " << framed.length << " bytes"; }

Framed frame(std::string_view data) {
    const Guarded bytes = Guarded::bytes(data);
    Framed framed{0, 4711};
    framed.outcome = SIP_Frame_Stream(bytes.data(), data.size(), &framed.length);
    return framed;
}

std::string body_of(std::size_t length) { return "\r\nContent-Length: " + std::to_string(length) + "\r\n\r\n"; }

const std::string nul(1, '\0');
const std::string start = "OPTIONS sip:h SIP/2.0";
const std::string four = start + body_of(4);

// A message whose header section is as long as stated.
std::string of_headers(std::size_t length, std::size_t body) {
    const std::string rest = body_of(body);
    return start + "\r\nX: " + std::string(length - start.size() - 5 - rest.size(), 'x') + rest;
}

constexpr std::size_t whole = std::string::npos; // all of the data

const struct {
    const char *title;
    std::string data;
    int outcome;
    std::size_t length = 0;
} frames[] = {
    {"nothing yet", "", SIP_FRAME_MORE},
    {"CR LF", "\r\n", SIP_FRAME_KEEP_ALIVE, 2},
    {"line ends before a message", "\r\n\n\r\n" + four, SIP_FRAME_KEEP_ALIVE, 5},
    {"CR after CR LF", "\r\n\r", SIP_FRAME_KEEP_ALIVE, 2},
    {"CR before a message is an empty start line", "\r" + four, SIP_FRAME_NO_LENGTH},

    {"a message", four + "v=0\n", SIP_FRAME_COMPLETE, whole},
    {"a message before another", start + body_of(0) + four, SIP_FRAME_COMPLETE, start.size() + body_of(0).size()},
    {"a byte of the body missing", four + "v=0", SIP_FRAME_MORE},
    {"the empty line missing", start + "\r\nl: 0\r\n", SIP_FRAME_MORE},
    {"LF alone", start + "\nl: 1\n\nx", SIP_FRAME_COMPLETE, whole},
    {"a line that begins with CR is the empty one", start + "\r\nl: 1\r\n\rX: y\r\nx", SIP_FRAME_COMPLETE, whole},
    {"a blank line is not empty", start + "\r\nl: 1\r\n \r\n\r\nx", SIP_FRAME_COMPLETE, whole},
    {"a comma joins the empty line", start + "\r\nl: 1\r\nX: a,\r\n\r\nY: b\r\n\r\nx", SIP_FRAME_COMPLETE, whole},
    {"a comma joins no line of LF alone", start + "\nl: 1\nX: a,\nY: b\n\nx", SIP_FRAME_COMPLETE, whole},
    {"a comma two before LF joins the first of two LF", start + "\nl: 1\nX: ,a\n\nY: b\n\nx", SIP_FRAME_COMPLETE,
     whole},
    {"a comma that joins the first line", ",a\n\nl: 0\n\n", SIP_FRAME_COMPLETE, whole},

    {"longest header section", of_headers(4095, 0), SIP_FRAME_COMPLETE, whole},
    {"header section one longer", of_headers(4096, 0), SIP_FRAME_LONG_HEADERS},
    {"longest message", of_headers(4000, 95) + std::string(95, 'b'), SIP_FRAME_COMPLETE, whole},
    {"message one longer", of_headers(4000, 96) + std::string(96, 'b'), SIP_FRAME_LONG_MESSAGE, 4096},
    {"body of two gigabytes", of_headers(100, 2147483647), SIP_FRAME_LONG_MESSAGE, 2147483747},
    {"no line end at all", std::string(4095, 'x'), SIP_FRAME_LONG_HEADERS},

    {"a NUL in the header section", start + nul, SIP_FRAME_NUL},
    {"a NUL in the header section comes before its lengths", start + nul + "\r\nl: x\r\n\r\n", SIP_FRAME_NUL},
    {"a NUL after 4094 bytes of headers", std::string(4094, 'x') + nul, SIP_FRAME_NUL},
    {"a NUL after 4095 bytes of headers", std::string(4095, 'x') + nul, SIP_FRAME_LONG_HEADERS},
    {"a NUL in the body", four + "a" + nul, SIP_FRAME_NUL, four.size() + 4},
    {"a NUL after the body", four + "abcd" + nul, SIP_FRAME_COMPLETE, four.size() + 4},
};

TEST(Frame, is_found) {
    for (const auto &[title, data, outcome, length] : frames)
        EXPECT_EQ(frame(data), (Framed{outcome, length == whole ? data.size() : length})) << title;
}

// What the lines between start line and empty line make of a message with a body of 100 bytes.
const struct {
    const char *title;
    std::string lines;
    int outcome;
    std::size_t body = 0;
} lengths[] = {
    {"in any letter case", "cOnTeNt-LENGTH: 7\r\n", SIP_FRAME_COMPLETE, 7},
    {"blanks before the colon", "Content-Length \t: 7\r\n", SIP_FRAME_COMPLETE, 7},
    {"blanks around the value", "l:\t\x01 7 \t\x1F \r\n", SIP_FRAME_COMPLETE, 7},
    {"twice the same, written differently", "l: 7\r\nX: y\r\nContent-Length: 07\r\n", SIP_FRAME_COMPLETE, 7},
    {"after a comma that joins lines", "X: a,\r\nl: 7\r\n", SIP_FRAME_COMPLETE, 7},
    {"another after a comma that joins lines", "l: 7\r\nX: a,\r\nl: 8\r\n", SIP_FRAME_DIFFERENT_LENGTHS},
    {"none", "X: y\r\n", SIP_FRAME_NO_LENGTH},
    {"a longer name", "Content-Lengthy: 7\r\nll: 7\r\n", SIP_FRAME_NO_LENGTH},
    {"differing", "l: 7\r\nl: 8\r\n", SIP_FRAME_DIFFERENT_LENGTHS},
    {"empty", "l:\r\n", SIP_FRAME_BAD_LENGTH},
    {"negative", "l: -7\r\n", SIP_FRAME_BAD_LENGTH},
    {"something after it", "l: 7;x\r\n", SIP_FRAME_BAD_LENGTH},
    {"a comma that joins lines", "l: 7,\r\nX: y\r\n", SIP_FRAME_BAD_LENGTH},
    {"a CR after it", "l: 7\rx\r\n", SIP_FRAME_BAD_LENGTH},
    {"one too large", "l: 2147483648\r\n", SIP_FRAME_BAD_LENGTH},
    {"thousands of digits", "l: " + std::string(3000, '9') + "\r\n", SIP_FRAME_BAD_LENGTH},
};

TEST(Frame, has_the_stated_length) {
    for (const auto &[title, lines, outcome, body] : lengths) {
        const std::string headers = start + "\r\n" + lines + "\r\n";
        EXPECT_EQ(frame(headers + std::string(100, 'b')),
                  (Framed{outcome, outcome == SIP_FRAME_COMPLETE ? headers.size() + body : 0}))
            << title;
    }
}

TEST(Frame, null_arguments) {
    std::size_t length = 4711;
    EXPECT_EQ(SIP_Frame_Stream(nullptr, 0, &length), SIP_FRAME_NULL_ARGUMENT);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(SIP_Frame_Stream("x", 1, nullptr), SIP_FRAME_NULL_ARGUMENT);
}

TEST(Frame, a_length_as_the_first_line) {
    EXPECT_EQ(frame("l: 1\r\n\r\nx"), (Framed{SIP_FRAME_COMPLETE, 9}));
    EXPECT_EQ(frame("l: 1 SIP/2.0\r\n\r\nx"), (Framed{SIP_FRAME_BAD_LENGTH, 0}));
}

} // namespace
