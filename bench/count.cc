// The cases by the instruction, under callgrind; bench/count runs it. A case is run until first calls, allocations and
// symbol lookups lie behind, then the counter is cleared, and what a number of runs adds is dumped under the name of the
// case.
//
// Usage: sipcode_count [case...]     all cases without a name
#include <algorithm>
#include <cstdio>
#include <cstring>

#include <valgrind/callgrind.h>

#include "cases.h"

namespace {

constexpr int runs_before = 100;
constexpr int counted_runs = 1000; // bench/count divides by it

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

} // namespace

int main(int argc, char **argv) {
    const std::vector<bench::measured_case> cases = bench::all_cases();
    const auto is_known = [&cases](const char *name) {
        return std::any_of(cases.begin(), cases.end(), [name](const auto &one) { return one.name == name; });
    };
    const auto is_wanted = [argc, argv](const bench::measured_case &one) {
        return argc == 1 || std::any_of(argv + 1, argv + argc, [&one](const char *name) { return one.name == name; });
    };
    for (int i = 1; i < argc; ++i) {
        if (!is_known(argv[i])) {
            std::fprintf(stderr, "no case %s\n", argv[i]);
            return 1;
        }
    }
    for (const bench::measured_case &one : cases)
        if (is_wanted(one))
            count(one);
    return 0;
}
