// Counts instructions under callgrind. bench/callgrind.py runs this program and reads its dumps.
//
//   sipcode_count [case...]     a dump of 1000 runs for each named case, or for all cases
//   sipcode_count --worst       a dump of one run for each worst case and length, named "length|call: case"
#include <algorithm>
#include <cstdio>
#include <string_view>

#include <sipcode/safe.h>
#include <valgrind/callgrind.h>

#include "cases.h"
#include "worst_cases.h"

namespace {

constexpr int runs_before = 100; // symbol lookups and first allocations are not counted
constexpr int counted_runs = 1000;

void run(const bench::measured_case &one, int times) {
    for (int i = 0; i < times; ++i)
        one.run();
}

void count(const bench::measured_case &one) {
    run(one, runs_before);
    CALLGRIND_ZERO_STATS;
    run(one, counted_runs);
    CALLGRIND_DUMP_STATS_AT(one.name.c_str());
}

struct worst_call {
    const char *name;
    void (*run)(const std::string &message);
};

constexpr worst_call worst_calls[] = {
    {"SIP_Decode_Buffer",
     [](const std::string &message) {
         static SIP_CODE_MSG record;
         static SIP_DECODE_REPORT report;
         SIP_Decode_Buffer(message.data(), message.size(), &record, &report);
     }},
    {"SIP_Frame_Stream",
     [](const std::string &message) {
         std::size_t length = 0;
         SIP_Frame_Stream(message.data(), message.size(), &length);
     }},
};

void count_worst(const bench::WorstCase &one, const worst_call &call) {
    for (const std::size_t length : {1000U, 2000U, 4000U}) {
        const std::string message = one.message(length);
        const std::string label = std::to_string(message.size()) + '|' + call.name + ": " + std::string(one.name);
        call.run(message); // symbol lookups are not counted
        CALLGRIND_ZERO_STATS;
        call.run(message);
        CALLGRIND_DUMP_STATS_AT(label.c_str());
    }
}

} // namespace

int main(int argc, char **argv) {
    if (argc == 2 && std::string_view(argv[1]) == "--worst") {
        for (const bench::WorstCase &one : bench::worst_cases())
            for (const worst_call &call : worst_calls)
                count_worst(one, call);
        return 0;
    }
    const std::vector<bench::measured_case> cases = bench::all_cases();
    for (int i = 1; i < argc; ++i) {
        if (std::none_of(cases.begin(), cases.end(), [argv, i](const auto &one) { return one.name == argv[i]; })) {
            std::fprintf(stderr, "no case %s\n", argv[i]);
            return 1;
        }
    }
    for (const bench::measured_case &one : cases)
        if (argc == 1 || std::find(argv + 1, argv + argc, one.name) != argv + argc)
            count(one);
}
