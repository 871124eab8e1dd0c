// The cost to this process of a whole call and of a session's first call, compared with the same exchange on bare
// libcurl. The service is another process and does not count.

#include "exchanges.h"

#include <benchmark/benchmark.h>

namespace kavio::bench {
namespace {

void wholeCall(benchmark::State& state) {
    lookUpMachine();  // so that the connection and caches are as they are for later calls
    for (auto _ : state) benchmark::DoNotOptimize(lookUpMachine());
}

template <class Exchange>
void bareCall(benchmark::State& state, const Setup& setup) {
    Exchange exchange(setup, preparedRequest());
    if (exchange.run() != 200) state.SkipWithError("The service refused the request.");
    for (auto _ : state) exchange.run();
}

/// So many at once, from the first to the last report.
void callsAtOnce(benchmark::State& state) {
    for (auto _ : state) lookUpMachines(std::size_t(state.range(0)));
}

/// `make` returns the object that is to make its first exchange.
template <class Make, class Run>
void firstCall(benchmark::State& state, Make make, Run run) {
    const auto request = preparedRequest();
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

/// What the session adds to the bare exchange is mostly its own thread.
void sessionCall(benchmark::State& state, const Setup& setup) {
    LibraryExchange exchange(setup);
    const auto request = preparedRequest();
    if (exchange.run(request) != 200) state.SkipWithError("The service refused the request.");
    for (auto _ : state) exchange.run(request);
}

/// A request that is sent once takes a new connection each time, as any does after the service has closed the kept one.
void resumedCall(benchmark::State& state, const Setup& setup) {
    LibraryExchange exchange(setup);
    auto request = preparedRequest();
    request.idempotency = Idempotency::ONCE;
    if (exchange.run(request) != 200) state.SkipWithError("The service refused the request.");
    for (auto _ : state) exchange.run(request);
}

/// Many short runs, because a call waits for another process, and whatever runs meanwhile evicts our caches.
template <class Benchmark>
void add(const char* name, int iterations, Benchmark work) {
    benchmark::RegisterBenchmark(name, std::move(work))
        ->MeasureProcessCPUTime()
        ->Iterations(iterations)
        ->Repetitions(500);
}

}  // namespace

void registerCalls(const Setup& setup) {
    add("wholeCall", 10, wholeCall);
    add("sessionCall", 10, [setup](auto& state) { sessionCall(state, setup); });
    add("resumedCall", 1, [setup](auto& state) { resumedCall(state, setup); });
    add("bareCall", 10, [setup](auto& state) { bareCall<BareExchange>(state, setup); });
    add("threadedBareCall", 10, [setup](auto& state) { bareCall<ThreadedBareExchange>(state, setup); });
    for (const int calls : {1, 10, 100, 1000})
        benchmark::RegisterBenchmark("callsAtOnce", callsAtOnce)
            ->Arg(calls)
            ->UseRealTime()
            ->Iterations(1)
            ->Repetitions(30);
    add("firstCallOfSession", 1, [=](auto& state) {
        firstCall(
            state, [=](const UrlRequest&) { return std::make_unique<LibraryExchange>(setup); },
            [](LibraryExchange& exchange, const UrlRequest& request) { return exchange.run(request); });
    });
    add("bareFirstCallOfSession", 1, [=](auto& state) {
        firstCall(
            state, [=](const UrlRequest& request) { return std::make_unique<BareExchange>(setup, request); },
            [](BareExchange& exchange, const UrlRequest&) { return exchange.run(); });
    });
}

}  // namespace kavio::bench
