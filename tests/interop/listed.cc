#include "listed.h"

#include <algorithm>
#include <fnmatch.h>
#include <fstream>
#include <regex>
#include <stdexcept>

#include <fmt/core.h>

namespace interop {
namespace {

// A pattern in which nothing but * is special.
bool matches(const std::string &pattern, const std::string &text) {
    std::string escaped;
    for (const char c : pattern) {
        if (c == '?' || c == '[' || c == '\\')
            escaped += '\\';
        escaped += c;
    }
    return fnmatch(escaped.c_str(), text.c_str(), 0) == 0;
}

bool one_matches(const std::vector<std::string> &patterns, const std::string &text) {
    return std::any_of(patterns.begin(), patterns.end(),
                       [&text](const auto &pattern) { return matches(pattern, text); });
}

std::vector<std::string> patterns_in(const std::string &cell) {
    static const std::regex quoted("`([^`]*)`");
    std::vector<std::string> found;
    for (std::sregex_iterator it(cell.begin(), cell.end(), quoted), end; it != end; ++it)
        found.push_back((*it)[1]);
    return found;
}

std::vector<std::string> cells_of(const std::string &row) {
    std::vector<std::string> cells;
    for (std::size_t at = 0, end; (end = row.find('|', at + 1)) != std::string::npos; at = end)
        cells.push_back(row.substr(at + 1, end - at - 1));
    return cells;
}

} // namespace

bool Listed::covers(const Difference &difference) const {
    return one_matches(members, difference.member) && one_matches(messages, difference.message) != all_but &&
           one_matches(peers, difference.peer) && one_matches(said, difference.said) &&
           one_matches(read, difference.read);
}

std::vector<Listed> listed_differences() {
    std::ifstream in(SIPCODE_INTEROP_LIST);
    std::vector<Listed> rows;
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        const auto cells = cells_of(line);
        if (cells.size() < 6 || line.find('`') == std::string::npos) // no row, or one of a heading
            continue;
        rows.push_back({number, patterns_in(cells[0]), cells[1].find("all but") != std::string::npos,
                        patterns_in(cells[1]), patterns_in(cells[2]), patterns_in(cells[3]), patterns_in(cells[4])});
        const Listed &row = rows.back();
        for (const auto *patterns : {&row.members, &row.messages, &row.peers, &row.said, &row.read})
            if (patterns->empty())
                throw std::runtime_error(fmt::format("docs/interop.md:{}: a cell without a pattern", number));
    }
    return rows;
}

} // namespace interop
