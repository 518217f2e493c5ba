// The differences that docs/interop.md lists: the rows of its tables.
//
//   | Member | Message | Peers | Said | Read | Why |
//
// Each cell but the last holds patterns, separated by commas and in backticks; * stands for any text. "(nothing)" is a value
// that is not there. A Message cell may begin with "all but".
#pragma once

#include <string>
#include <vector>

namespace interop {

struct Difference {
    std::string member;
    std::string message; // kind of the message
    std::string peer;
    std::string said;
    std::string read;
};

struct Listed {
    int line; // of docs/interop.md
    std::vector<std::string> members;
    bool all_but;
    std::vector<std::string> messages;
    std::vector<std::string> peers;
    std::vector<std::string> said;
    std::vector<std::string> read;

    bool covers(const Difference &difference) const;
};

std::vector<Listed> listed_differences();

} // namespace interop
