// Times the cases.
#include <benchmark/benchmark.h>

#include <iostream>
#include <memory>

#include "cases.h"
#include "messages.h"

namespace {

void measure(benchmark::State &state, const bench::measured_case &one) {
    for (auto _ : state)
        one.run();
    state.counters["bytes"] = static_cast<double>(one.bytes);
}

// Each thread has its own text and its own record.
void measure_threads(benchmark::State &state) {
    std::string text = bench::sample("invite-with-sdp");
    const auto record = std::make_unique<SIP_CODE_MSG>();
    for (auto _ : state)
        bench::decode(text, *record);
    state.SetItemsProcessed(state.iterations());
}

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    for (const bench::measured_case &one : bench::all_cases())
        benchmark::RegisterBenchmark(one.name.c_str(), [one](benchmark::State &state) { measure(state, one); });
    benchmark::RegisterBenchmark("threads/invite-with-sdp", measure_threads)->ThreadRange(1, 2)->UseRealTime();
    benchmark::ConsoleReporter table;
    table.SetOutputStream(&std::cerr); // the library prints on standard output
    table.SetErrorStream(&std::cerr);
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    return 0;
}
