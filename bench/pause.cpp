// How long a query takes after a pause in which the service has closed the connection, where the session keeps it warm
// and where it does not. By the clock, as what happens during the pause costs the person nothing.

#include "platform/linux/url_session.h"
#include "setup.h"

#include <kavio/testing/raw_server.h>

#include <benchmark/benchmark.h>

#include <chrono>
#include <fstream>
#include <future>
#include <memory>
#include <thread>
#include <utility>
#include <variant>

namespace kavio::bench {
namespace {

/// Closes a connection once it has answered a query there; one that is only made warm stays open for the query.
void answerOneQuery(test::RawServer::Connection& connection) {
    if (!connection.handshake()) return;
    while (true) {
        const auto request = connection.readRequest();
        if (request.empty() || !connection.send(test::httpReply(200, "[]"))) return;
        if (!request.starts_with("OPTIONS ")) return connection.sayGoodbye(true);
    }
}

/// A session with a service of its own, in this process.
class Reader {
public:
    Reader(const Setup& setup, bool warmsConnection) {
        UrlSessionConfiguration configuration;
        configuration.certificateAuthorities = setup.folder / "closing-service.pem";
        configuration.connectTo = mServer.address();
        configuration.warmsConnection = warmsConnection;
        std::ofstream(configuration.certificateAuthorities) << mAuthority.pem();
        mSession = makeUrlSession(configuration);
    }

    /// Whether it is answered.
    bool query() {
        UrlRequest request;
        request.url = "https://service.test/";
        request.method = "GET";
        request.timeout = std::chrono::seconds(30);
        request.idempotency = Idempotency::REPEATABLE;
        std::promise<bool> isAnswered;
        mSession->dataTask(std::move(request), [&isAnswered](const std::variant<UrlReply, UrlError>& outcome) {
            isAnswered.set_value(std::holds_alternative<UrlReply>(outcome));
        });
        return isAnswered.get_future().get();
    }

private:
    const test::Authority mAuthority;
    const test::RawServer mServer{mAuthority.issue({"service.test"}), answerOneQuery};
    std::shared_ptr<UrlSession> mSession;
};

void queryAfterPause(benchmark::State& state, const Setup& setup, bool warmsConnection) {
    Reader reader(setup, warmsConnection);
    reader.query();
    for (auto _ : state) {
        state.PauseTiming();
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        state.ResumeTiming();
        if (!reader.query()) state.SkipWithError("The service did not answer.");
    }
}

}  // namespace

void registerPauses(const Setup& setup) {
    for (const bool warms : {false, true})
        benchmark::RegisterBenchmark(warms ? "queryAfterPauseWarm" : "queryAfterPause",
                                     [=](auto& state) { queryAfterPause(state, setup, warms); })
            ->UseRealTime()
            ->Iterations(1)
            ->Repetitions(30);
}

}  // namespace kavio::bench
