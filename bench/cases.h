// The measured cases, one table for the clock (speed.cc) and for the instruction counter (count.cc).
//
// A case is named group/what/codec: decode/bye/sipcode, floor/zero-record/sipcode.
#ifndef SIPCODE_BENCH_CASES_H
#define SIPCODE_BENCH_CASES_H

#include <functional>
#include <string>
#include <vector>

namespace bench {

struct measured_case {
    std::string name;
    std::size_t bytes; // of the text that is read or written, or of the memory that is zeroed
    std::function<void()> run;
};

std::vector<measured_case> all_cases();

} // namespace bench

#endif
