// The cost of decoding a reply to public objects, compared with a bare parse of its bytes and with the plain way.

#include "allocations.h"
#include "machines.h"
#include "models/json/document.h"
#include "models/machine_model.h"
#include "plain_decoder.h"

#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <algorithm>
#include <thread>
#include <vector>

namespace kavio::bench {
namespace {

Machines decodeMachines(const std::string& reply) { return *decodeDocument<Machines>(reply); }

/// Decodes many small replies at a time, so that stopping the clock does not distort the result.
template <class Work>
void measure(benchmark::State& state, Work work) {
    const auto reply = machinesReply(state.range(0));
    const auto batch = std::max<std::int64_t>(1, 1000 / state.range(0));
    std::vector<decltype(work(reply))> results;
    results.reserve(static_cast<std::size_t>(batch));
    work(reply);  // lets the parser and the heap grow first; the memory figure covers their cost
    while (state.KeepRunningBatch(batch)) {
        for (std::int64_t i = 0; i < batch; ++i) results.push_back(work(reply));
        state.PauseTiming();  // what happens to the result, including freeing it, is up to the application
        results.clear();
        state.ResumeTiming();
    }
}

void bareParse(benchmark::State& state) {
    simdjson::dom::parser parser;
    measure(state, [&parser](const std::string& reply) { return parser.parse(reply).error(); });
}

BENCHMARK(bareParse)->Arg(500);
BENCHMARK_CAPTURE(measure, decodePlainly, decodePlainly)->Name("decodePlainly")->Arg(500);
BENCHMARK_CAPTURE(measure, decodeMachines, decodeMachines)
    ->Name("decodeMachines")
    ->Arg(1)
    ->Arg(10)
    ->Arg(100)
    ->Arg(500)
    ->Arg(1000)
    ->Arg(10000);

}  // namespace

double decodingBytes(std::int64_t machines) {
    const auto reply = machinesReply(machines);
    std::size_t bytes = 0;
    // On a new thread, which has no buffers from before.
    std::thread([&] { bytes = allocatedBytes([&] { benchmark::DoNotOptimize(decodeMachines(reply)); }); }).join();
    return static_cast<double>(bytes);
}

}  // namespace kavio::bench
