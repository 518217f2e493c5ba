// Runs each worst case once per length and call under callgrind, which dumps the instructions as "length|bytes|call|name".
// tests/linear/check runs it.
#include <cstring>
#include <string>

#include <sipcode/decode.h>
#include <sipcode/safe.h>
#include <valgrind/callgrind.h>

#include "worst_cases.h"

namespace {

SIP_CODE_MSG record;
SIP_DECODE_REPORT report;

struct Call {
    const char *name;
    void (*run)(const std::string &message);
};

constexpr Call calls[] = {
    {"Sip_Decode", [](const std::string &message) { Sip_Decode(const_cast<char *>(message.c_str()), &record); }},
    {"SIP_Decode_Buffer",
     [](const std::string &message) { SIP_Decode_Buffer(message.data(), message.size(), &record, &report); }},
    {"SIP_Frame_Stream",
     [](const std::string &message) {
         std::size_t length = 0;
         SIP_Frame_Stream(message.data(), message.size(), &length);
     }},
};

void count(const Call &call, std::size_t length, const std::string &message, std::string_view name) {
    const std::string label =
        std::to_string(length) + '|' + std::to_string(message.size()) + '|' + call.name + '|' + std::string(name);
    std::memset(&record, 0, sizeof record); // by the host, so not counted
    CALLGRIND_ZERO_STATS;
    call.run(message);
    CALLGRIND_DUMP_STATS_AT(label.c_str());
}

} // namespace

int main() {
    for (const Call &call : calls)
        call.run(linear::plain_message(1000)); // binds all names
    for (const std::size_t length : {500U, 1000U, 2000U, 4095U})
        for (const Call &call : calls) {
            count(call, length, linear::plain_message(length), "plain message");
            for (const linear::WorstCase &row : linear::worst_cases())
                if (const std::string message = row.message(length); message.size() <= length)
                    count(call, length, message, row.name);
        }
}
