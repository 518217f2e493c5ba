#include "support/encoding.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>
#include <sipcode/decode.h>

#include "support/decoding.h"
#include "support/guarded.h"

namespace support {

namespace {

template <typename Write>
Encoded written(std::size_t room, const SIP_CODE_MSG &record, Write write) {
    const Guarded input(sizeof(SIP_CODE_MSG), zero);
    const Guarded output(room, stale);
    input.as<SIP_CODE_MSG>() = record;
    const int result = write(output.data(), &input.as<SIP_CODE_MSG>());
    const std::string text(output.data(), strnlen(output.data(), room));
    const bool touched = text != std::string(room, static_cast<char>(stale));
    return {result, touched ? text : "(untouched)", input.as<SIP_CODE_MSG>()};
}

std::vector<std::string> lines_of(std::string_view text) {
    std::vector<std::string> all;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find("\r\n"), text.size());
        all.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(text.size(), end + 2));
    }
    return all;
}

// The names of the lines left out, then those put in.
std::vector<std::string> line_changes(std::string_view from, std::string_view to) {
    std::vector<std::string> left_out = lines_of(from);
    std::vector<std::string> put_in;
    for (const std::string &line : lines_of(to)) {
        if (const auto same = std::find(left_out.begin(), left_out.end(), line); same != left_out.end())
            left_out.erase(same);
        else
            put_in.push_back(line);
    }
    for (std::string &line : left_out)
        line = "-" + line.substr(0, line.find_first_of(": "));
    left_out.insert(left_out.end(), put_in.begin(), put_in.end());
    return left_out;
}

} // namespace

SIP_CODE_MSG record_of(std::string_view list) {
    SIP_CODE_MSG record;
    EXPECT_TRUE(read_record(list, record)) << list;
    return record;
}

std::string difference(const SIP_CODE_MSG &a, const SIP_CODE_MSG &b) {
    std::string paths;
    for (const Leaf &leaf : leaves())
        if (!equal(leaf, a, b))
            paths.append(leaf.path).append("\n");
    return paths;
}

Encoded encode_request(const SIP_CODE_MSG &record) {
    return written(SIP_REQUEST_SIZE, record, SIP_Encode_Message_Reuqest);
}

Encoded encode_response(const SIP_CODE_MSG &record) {
    return written(SIP_RESPONSE_SIZE, record, SIP_Encode_Message_Response);
}

std::string dump(const SIP_CODE_MSG &record) {
    return written(SIP_DUMP_SIZE, record,
                   [](char *buffer, SIP_CODE_MSG *shown) {
                       SIP_Decode_Msg_Printf(buffer, shown);
                       return 1;
                   })
        .text;
}

std::vector<EncodedCase> encoded_cases(const std::string &extension) {
    std::vector<EncodedCase> cases;
    for (const auto &entry : std::filesystem::directory_iterator(SIPCODE_TEST_DATA "/encoded")) {
        if (entry.path().extension() != extension)
            continue;
        std::ifstream file(entry.path());
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        const std::size_t empty_line = text.find("\n\n");
        cases.push_back({entry.path().stem(), text.substr(0, empty_line), text.substr(empty_line + 2)});
    }
    return cases;
}

std::string wire(std::string_view text) {
    std::string whole;
    for (const char c : text)
        whole.append(c == '\n' ? "\r\n" : std::string(1, c));
    return whole;
}

void expect_line_changes(const std::string &name, std::string (*write)(const SIP_CODE_MSG &record)) {
    std::ifstream file(SIPCODE_TEST_DATA "/encoded/" + name + ".lines");
    std::string common;
    std::getline(file, common);
    int rows = 0;
    for (std::string row; std::getline(file, row); ++rows) {
        const std::size_t semicolon = row.find(" ; ");
        const std::size_t arrow = row.find(" =>");
        const std::string before = common + " | " + row.substr(0, semicolon);
        const std::string after = before + " | " + row.substr(semicolon + 3, arrow - semicolon - 3);
        const std::string expected = row.substr(std::min(arrow + 4, row.size()));
        EXPECT_EQ(lines(entries(expected)), lines(line_changes(write(record_of(before)), write(record_of(after)))))
            << row;
    }
    EXPECT_GT(rows, 0) << name;
}

} // namespace support
