// Texts and what their decode changes in the record. The rows are in tests/data/decoded:
//
//   == section
//       INVITE sip:h SIP/2.0      the message of all rows; <row> is the place of their texts
//       <row>\n
//   neutral: None: 0              the text that rows are compared with; without it, a record before any decode
//   record: zero                  the record holds zeros before a decode, not 0xA5
//   as written                    a line of a row ends in LF, not in CR LF
//
//   -- title
//       Via: SIP/2.0/UDP h        the text, with the escapes \n \r \t \\ \x41
//   => via addr=h:5060            what changes, as changes() lists it
//   log 0 via is wrong            a log line and its level
//
// "\[31]" is 31 letters, "\[x*31]" is 31 times "x". xml_buf is listed only if it is not the body of the message.
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "support/decoding.h"
#include "support/encoding.h"

namespace {

using namespace support;

struct Section {
    std::string name;
    std::string message;
    std::optional<std::string> neutral;
    unsigned char record = stale;
    bool as_written = false;
};

struct Row {
    Section section;
    std::string title;
    std::string text;
    std::string changes;
    std::string log;
};

void PrintTo(const Row &row, std::ostream *out) { *out << row.title; }

void append_line(std::string &list, const std::string &line) { list.append(list.empty() ? "" : "\n").append(line); }

// "31" or "x*31"
std::string repeated(const std::string &what) {
    const std::size_t star = what.find('*');
    return star == what.npos ? letters(std::stoul(what))
                             : repeat(std::stoul(what.substr(star + 1)), what.substr(0, star));
}

// Without escapes, a backslash is one unless it begins "\[31]".
std::string read_line(const std::string &line, bool with_escapes) {
    std::string read;
    for (std::size_t at = 0; at < line.size(); ++at) {
        const char next = line[at] == '\\' && at + 1 < line.size() ? line[at + 1] : '\0';
        if (next == '[') {
            const std::size_t end = line.find(']', at);
            read += repeated(line.substr(at + 2, end - at - 2));
            at = end;
        } else if (next == '\0' || !with_escapes) {
            read += line[at];
        } else if (next == 'x') {
            read += static_cast<char>(std::stoul(line.substr(at + 2, 2), nullptr, 16));
            at += 3;
        } else {
            read += next == 'n' ? '\n' : next == 'r' ? '\r' : next == 't' ? '\t' : next;
            ++at;
        }
    }
    return read;
}

void read_rows(const std::filesystem::path &path, std::vector<Row> &rows) {
    std::ifstream file(path);
    Section section;
    bool in_row = false;
    for (std::string line; std::getline(file, line);) {
        const auto begins = [&line](const char *mark) { return line.starts_with(mark); };
        const auto rest = [&line](std::size_t mark) { return line.substr(std::min(mark, line.size())); };
        if (begins("== "))
            section = {path.stem().string() + " " + rest(3), "", {}, stale, false}, in_row = false;
        else if (begins("-- "))
            rows.push_back({section, rest(3), "", "", ""}), in_row = true;
        else if (begins("    "))
            append_line(in_row ? rows.back().text : section.message, read_line(rest(4), true));
        else if (begins("=> "))
            append_line(rows.back().changes, read_line(rest(3), false));
        else if (begins("log "))
            append_line(rows.back().log, read_line(rest(4), false));
        else if (begins("neutral:"))
            section.neutral = read_line(rest(9), true);
        else if (begins("record: zero"))
            section.record = zero;
        else if (begins("as written"))
            section.as_written = true;
        else
            EXPECT_EQ(line, "") << path;
    }
}

std::vector<Row> all_rows() {
    std::vector<Row> rows;
    for (const auto &entry : std::filesystem::directory_iterator(SIPCODE_TEST_DATA "/decoded"))
        read_rows(entry.path(), rows);
    return rows;
}

std::string message_of(const Section &section, const std::string &text) {
    const std::size_t place = section.message.find("<row>");
    return wire(section.message.substr(0, place)) + (section.as_written ? text : wire(text)) +
           wire(section.message.substr(place + 5));
}

void hide_body(Members &members) {
    for (auto &[path, value] : members)
        if (path == "xml_buf")
            value.reset();
}

class Decoding : public testing::TestWithParam<Row> {};

TEST_P(Decoding, of) {
    const Row &row = GetParam();
    const std::string text = message_of(row.section, row.text);
    Decoded decoded = decode(text, row.section.record);
    Members base;
    if (row.section.neutral)
        base = decode(message_of(row.section, *row.section.neutral), row.section.record).members;
    const std::size_t headers = text.find("\r\n\r\n");
    if (headers != text.npos && decoded["xml_buf"] == lines({text.substr(headers + 4)})) {
        hide_body(base);
        hide_body(decoded.members);
    }
    EXPECT_EQ(row.changes, changes(base, decoded.members)) << text;
    EXPECT_EQ(row.log, lines(decoded.log)) << text;
    expect_whole_members(text);
}

std::string test_name(const testing::TestParamInfo<Row> &info) {
    std::string name;
    for (const char c : info.param.section.name + " " + info.param.title) {
        if (isalnum(static_cast<unsigned char>(c)) != 0)
            name += c;
        else if (!name.empty() && name.back() != '_')
            name += '_';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Rows, Decoding, testing::ValuesIn(all_rows()), test_name);

} // namespace
