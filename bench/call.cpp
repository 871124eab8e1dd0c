// What a whole call costs this process, and the first call of a session, next to the same exchange on bare libcurl. The
// service is another process and does not count.

#include "exchanges.h"
#include "models/json/document.h"
#include "models/machine_model.h"
#include "models/public_objects.h"
#include "network/kavio_network_service.h"

#include <benchmark/benchmark.h>

namespace kavio::bench {
namespace {

void wholeCall(benchmark::State& state) {
    lookUpMachine();  // a connection and caches as the other calls have them
    for (auto _ : state) benchmark::DoNotOptimize(lookUpMachine());
}

template <class Exchange>
void bareCall(benchmark::State& state, const Setup& setup) {
    Exchange exchange(setup, KavioNetworkService::prepare(machineRequest()));
    if (exchange.run() != 200) state.SkipWithError("The service refused the request.");
    for (auto _ : state) exchange.run();
}

/// What no library around libcurl can do without: each request is signed, each reply decoded. No thread, no session.
void signedBareCall(benchmark::State& state, const Setup& setup) {
    BareExchange exchange(setup, KavioNetworkService::prepare(machineRequest()));
    if (exchange.run() != 200) state.SkipWithError("The service refused the request.");
    for (auto _ : state) {
        benchmark::DoNotOptimize(KavioNetworkService::prepare(machineRequest()));
        exchange.run();
        benchmark::DoNotOptimize(decodeDocument<PublicList<MachineModel>>(exchange.body()));
    }
}

/// `make` gives what is to do its first exchange.
template <class Make, class Run>
void firstCall(benchmark::State& state, Make make, Run run) {
    const auto request = KavioNetworkService::prepare(machineRequest());
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

/// What the sessions add to the bare exchange is mostly a thread of their own.
void sessionCall(benchmark::State& state, const Setup& setup) {
    LibraryExchange exchange(setup, systemAuthoritiesAndOurs(setup));
    const auto request = KavioNetworkService::prepare(machineRequest());
    if (exchange.run(request) != 200) state.SkipWithError("The service refused the request.");
    for (auto _ : state) exchange.run(request);
}

/// Many short runs, because a call waits for another process, and who else runs meanwhile takes our caches.
template <class Benchmark>
void add(const char* name, int iterations, Benchmark work) {
    benchmark::RegisterBenchmark(name, std::move(work))
        ->MeasureProcessCPUTime()
        ->Iterations(iterations)
        ->Repetitions(500);
}

}  // namespace

void registerCalls(const Setup& setup) {
    const auto authorities = systemAuthoritiesAndOurs(setup);
    add("wholeCall", 10, wholeCall);
    add("sessionCall", 10, [setup](auto& state) { sessionCall(state, setup); });
    add("bareCall", 10, [setup](auto& state) { bareCall<BareExchange>(state, setup); });
    add("signedBareCall", 10, [setup](auto& state) { signedBareCall(state, setup); });
    add("threadedBareCall", 10, [setup](auto& state) { bareCall<ThreadedBareExchange>(state, setup); });
    add("firstCallOfSession", 1, [=](auto& state) {
        firstCall(
            state, [=](const UrlRequest&) { return std::make_unique<LibraryExchange>(setup, authorities); },
            [](LibraryExchange& exchange, const UrlRequest& request) { return exchange.run(request); });
    });
    add("bareFirstCallOfSession", 1, [=](auto& state) {
        firstCall(
            state, [=](const UrlRequest& request) { return std::make_unique<BareExchange>(setup, request); },
            [](BareExchange& exchange, const UrlRequest&) { return exchange.run(); });
    });
}

}  // namespace kavio::bench
