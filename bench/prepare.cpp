// The cost of preparing a request, compared with its digests alone, and of reading its values from the store.

#include "exchanges.h"
#include "network/kavio_network_service.h"
#include "storage/kavio_user_defaults.h"
#include "storage/payment_journal.h"
#include "time/reliable_clock.h"

#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace kavio::bench {
namespace {

std::string suiteFile(const Setup& setup, std::string_view name) {
    for (const auto& file : std::filesystem::directory_iterator(setup.folder / "store")) {
        if (file.path().filename().string().find(name) != std::string::npos) return file.path();
    }
    return {};
}

void prepareRequest(benchmark::State& state) {
    constexpr int batch = 100;  // so that stopping the clock does not distort the result
    while (state.KeepRunningBatch(batch)) {
        state.PauseTiming();
        std::vector<APIRequest> requests(batch);
        std::ranges::generate(requests, machineRequest);
        state.ResumeTiming();
        for (auto& request : requests) benchmark::DoNotOptimize(KavioNetworkService::prepare(request));
    }
}

/// Digests, as cheaply as OpenSSL gives them, of the texts that `prepareRequest` signs: the URL, the start of the body,
/// the time, and these three digests.
void bareDigests(benchmark::State& state) {
    const auto request = preparedRequest();
    const std::array texts{request.url, request.body.value_or("").substr(0, 32), serverTimeStamp(),
                           std::string(60, 'd')};
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    const std::unique_ptr<EVP_MD, decltype(&EVP_MD_free)> sha1(EVP_MD_fetch(nullptr, "SHA1", nullptr), &EVP_MD_free);
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    for (auto _ : state) {
        for (const auto& text : texts) {
            EVP_DigestInit_ex2(context.get(), sha1.get(), nullptr);
            EVP_DigestUpdate(context.get(), text.data(), text.size());
            EVP_DigestFinal_ex(context.get(), digest.data(), nullptr);
        }
        benchmark::DoNotOptimize(digest);
    }
}

void readStore(benchmark::State& state) {
    const auto defaults = KavioUserDefaults::shared();
    for (auto _ : state) benchmark::DoNotOptimize(defaults->sessionToken());
}

/// The payment that `placeOrder` writes down before the request may leave.
void writePaymentDown(benchmark::State& state) {
    const auto journal = PaymentJournal::shared();
    JournalEntry entry{.payment = {.startedAt = serverNow(),
                                   .kavioId = 42100107,
                                   .amount = 150,
                                   .paymentMethodId = "0",
                                   .paymentType = PaymentMethod::PaymentType::KAVIO},
                       .service = "ApiQA2",
                       .owner = std::string(28, 'o')};
    for (auto _ : state) {
        entry.payment.id = std::to_string(std::rand());
        if (!journal->begin(entry)) state.SkipWithError("The payment cannot be written down.");
        state.PauseTiming();
        journal->answered(entry.payment.id);
        journal->strikeOut(entry.payment.id);
        state.ResumeTiming();
    }
}

/// One commit of as much text, with the same settings, to the same folder: the disk takes longer for some than for
/// others.
void bareCommit(benchmark::State& state, const Setup& setup) {
    sqlite3* database = nullptr;
    sqlite3_open((setup.folder / "store" / "bare").c_str(), &database);
    const auto run = [&](const std::string& text) {
        if (sqlite3_exec(database, text.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
            state.SkipWithError(sqlite3_errmsg(database));
    };
    run("PRAGMA journal_mode=DELETE; PRAGMA synchronous=EXTRA; PRAGMA secure_delete=ON;"
        "CREATE TABLE IF NOT EXISTS entry (key TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID");
    for (auto _ : state) {
        run("INSERT INTO entry VALUES ('" + std::to_string(std::rand()) + "', '" + std::string(400, 'v') + "')");
        state.PauseTiming();
        run("DELETE FROM entry");
        state.ResumeTiming();
    }
    sqlite3_close(database);
}

/// Reads the same value from the same file with a statement that stays prepared.
void queryStore(benchmark::State& state, const Setup& setup) {
    sqlite3* database = nullptr;
    sqlite3_stmt* statement = nullptr;
    sqlite3_open_v2(suiteFile(setup, "UserDefaults").c_str(), &database, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_prepare_v2(database, "SELECT value FROM entry WHERE key = 'session_token'", -1, &statement, nullptr);
    for (auto _ : state) {
        if (sqlite3_step(statement) != SQLITE_ROW) state.SkipWithError("The store has no session token.");
        benchmark::DoNotOptimize(sqlite3_column_text(statement, 0));
        sqlite3_reset(statement);
    }
    sqlite3_finalize(statement);
    sqlite3_close(database);
}

/// Many short runs, because the disk is slow to recover from a disturbance.
void timeDisk(benchmark::internal::Benchmark* benchmark) { benchmark->UseRealTime()->Iterations(20)->Repetitions(100); }

BENCHMARK(prepareRequest);
BENCHMARK(bareDigests);
BENCHMARK(readStore);
BENCHMARK(writePaymentDown)->Apply(timeDisk);

}  // namespace

void registerPreparing(const Setup& setup) {
    benchmark::RegisterBenchmark("queryStore", [setup](benchmark::State& state) { queryStore(state, setup); });
    benchmark::RegisterBenchmark("bareCommit", [setup](benchmark::State& state) {
        bareCommit(state, setup);
    })->Apply(timeDisk);
}

}  // namespace kavio::bench
