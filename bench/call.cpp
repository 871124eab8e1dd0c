// What a whole call costs this process, and the first call of a session, next to the same exchange on bare libcurl. The
// service is another process and does not count.

#include "exchanges.h"
#include "network/kavio_network_service.h"

#include <benchmark/benchmark.h>

namespace kavio::bench {
namespace {

void wholeCall(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(lookUpMachine());
}

void bareCall(benchmark::State& state, const Setup& setup) {
    BareExchange exchange(setup, KavioNetworkService::shared()->prepare(*machineRequest()));
    if (exchange.run() != 200) state.SkipWithError("The service refused the request.");
    for (auto _ : state) exchange.run();
}

/// `make` gives what is to do its first exchange.
template <class Make, class Run>
void firstCall(benchmark::State& state, Make make, Run run) {
    const auto request = KavioNetworkService::shared()->prepare(*machineRequest());
    for (auto _ : state) {
        state.PauseTiming();
        auto exchange = make(request);
        state.ResumeTiming();
        if (run(*exchange, request) != 200) state.SkipWithError("The service refused the request.");
        state.PauseTiming();
        exchange.reset();
        state.ResumeTiming();
    }
}

void onThisProcess(benchmark::internal::Benchmark* benchmark) { benchmark->MeasureProcessCPUTime()->UseRealTime(); }

}  // namespace

void registerCalls(const Setup& setup) {
    const auto authorities = systemAuthoritiesAndOurs(setup);
    onThisProcess(benchmark::RegisterBenchmark("wholeCall", wholeCall));
    onThisProcess(benchmark::RegisterBenchmark("bareCall", [setup](auto& state) { bareCall(state, setup); }));
    onThisProcess(benchmark::RegisterBenchmark("firstCallOfSession", [=](auto& state) {
        firstCall(
            state, [=](const UrlRequest&) { return std::make_unique<LibraryExchange>(setup, authorities); },
            [](LibraryExchange& exchange, const UrlRequest& request) { return exchange.run(request); });
    }));
    onThisProcess(benchmark::RegisterBenchmark("bareFirstCallOfSession", [=](auto& state) {
        firstCall(
            state, [=](const UrlRequest& request) { return std::make_unique<BareExchange>(setup, request); },
            [](BareExchange& exchange, const UrlRequest&) { return exchange.run(); });
    }));
}

}  // namespace kavio::bench
