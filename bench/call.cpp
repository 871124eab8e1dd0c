// The cost to this process of a whole call and of a session's first call, compared with the same exchange on bare
// libcurl. The service is another process and does not count.

#include "exchanges.h"
#include "models/json/document.h"
#include "models/machine_model.h"

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

/// The least that any library on top of libcurl must do: sign each request and decode each reply.
void signedBareCall(benchmark::State& state, const Setup& setup) {
    BareExchange exchange(setup, preparedRequest());
    if (exchange.run() != 200) state.SkipWithError("The service refused the request.");
    for (auto _ : state) {
        benchmark::DoNotOptimize(preparedRequest());
        exchange.run();
        benchmark::DoNotOptimize(decodeDocument<Machines>(exchange.body()));
    }
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
    add("bareCall", 10, [setup](auto& state) { bareCall<BareExchange>(state, setup); });
    add("signedBareCall", 10, [setup](auto& state) { signedBareCall(state, setup); });
    add("threadedBareCall", 10, [setup](auto& state) { bareCall<ThreadedBareExchange>(state, setup); });
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
