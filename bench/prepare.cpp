// The cost of preparing a request, compared with its digests alone, and of reading its values from the store.

#include "exchanges.h"
#include "network/kavio_network_service.h"
#include "storage/kavio_user_defaults.h"
#include "time/reliable_clock.h"

#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#include <sqlite3.h>

#include <array>

namespace kavio::bench {
namespace {

void prepareRequest(benchmark::State& state) {
    const auto request = machineRequest();
    for (auto _ : state) {
        auto copy = request;
        benchmark::DoNotOptimize(KavioNetworkService::prepare(copy));
    }
}

/// Digests of the texts that `prepareRequest` signs: the URL, the start of the body, the time, and these three digests.
void bareDigests(benchmark::State& state) {
    const auto request = preparedRequest();
    const std::array texts{request.url, request.body.value_or("").substr(0, 32), serverTimeStamp(),
                           std::string(60, 'd')};
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    for (auto _ : state) {
        for (const auto& text : texts)
            EVP_Digest(text.data(), text.size(), digest.data(), nullptr, EVP_sha1(), nullptr);
        benchmark::DoNotOptimize(digest);
    }
}

void readStore(benchmark::State& state) {
    const auto defaults = KavioUserDefaults::shared();
    for (auto _ : state) benchmark::DoNotOptimize(defaults->sessionToken());
}

/// Reads the same value from the same file with a statement that stays prepared.
void queryStore(benchmark::State& state, const Setup& setup) {
    const auto file = *std::filesystem::directory_iterator(setup.folder / "store");
    sqlite3* database = nullptr;
    sqlite3_stmt* statement = nullptr;
    sqlite3_open_v2(file.path().c_str(), &database, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_prepare_v2(database, "SELECT value FROM entry WHERE key = 'session_token'", -1, &statement, nullptr);
    for (auto _ : state) {
        if (sqlite3_step(statement) != SQLITE_ROW) state.SkipWithError("The store has no session token.");
        benchmark::DoNotOptimize(sqlite3_column_text(statement, 0));
        sqlite3_reset(statement);
    }
    sqlite3_finalize(statement);
    sqlite3_close(database);
}

BENCHMARK(prepareRequest);
BENCHMARK(bareDigests);
BENCHMARK(readStore);

}  // namespace

void registerPreparing(const Setup& setup) {
    benchmark::RegisterBenchmark("queryStore", [setup](benchmark::State& state) { queryStore(state, setup); });
}

}  // namespace kavio::bench
