// The cost to this process of a whole call and of a session's first call, compared with the same exchange on bare
// libcurl. The service is another process and does not count.

#include "exchanges.h"

#include <benchmark/benchmark.h>

namespace kavio::bench {
namespace {

/// The first one, which is not counted, leaves the caches as they are for later calls. The connection is the same in
/// all repetitions: a fresh one acknowledges each packet at once, which costs almost as much again.
template <class Call>
void repeatedCall(benchmark::State& state, Call call) {
    if (call() != 200) state.SkipWithError("The service refused the request.");
    for (auto _ : state) call();
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
    const auto addRepeated = [](const char* name, auto call) {
        add(name, 10, [call](auto& state) { repeatedCall(state, call); });
    };
    const auto prepared = preparedRequest();
    addRepeated("wholeCall", [] { return lookUpMachine().size() == 1 ? 200L : 0L; });
    addRepeated("sessionCall",
                [session = std::make_shared<LibraryExchange>(setup), prepared] { return session->run(prepared); });
    addRepeated("bareCall", [bare = std::make_shared<BareExchange>(setup, prepared)] { return bare->run(); });
    addRepeated("threadedBareCall",
                [threaded = std::make_shared<ThreadedBareExchange>(setup, prepared)] { return threaded->run(); });
    add("resumedCall", 1, [setup](auto& state) { resumedCall(state, setup); });
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
