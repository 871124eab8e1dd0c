#include "report.h"

#include "allocations.h"
#include "child.h"
#include "one_processor.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace kavio::bench {
namespace {

/// Keeps the runs of each benchmark: in nanoseconds of processor time, unless it waits for the disk. The best one
/// counts, because disturbances only make a run longer. For calls on a kept connection and for commits it is the
/// median, because luck makes some of them shorter.
class Runs final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const auto& run : runs) {
            if (run.error_occurred) throw std::runtime_error(run.benchmark_name() + ": " + run.error_message);
            if (run.run_type != Run::RT_Iteration) continue;
            const auto& [function, arguments] = std::tie(run.run_name.function_name, run.run_name.args);
            const auto name = arguments.empty() ? function : std::string(function).append("/").append(arguments);
            const bool isWaiting = run.run_name.time_type == "real_time";
            const auto time = isWaiting ? run.real_accumulated_time : run.cpu_accumulated_time;
            mTimes[name].insert(time / static_cast<double>(run.iterations) * 1e9);
        }
    }

    double operator[](const std::string& benchmark) const { return at(benchmark, 0); }
    double median(const std::string& benchmark) const { return at(benchmark, 0.5); }

private:
    double at(const std::string& benchmark, double share) const {
        const auto found = mTimes.find(benchmark);
        if (found == mTimes.end()) return std::nan("");
        const auto& times = found->second;
        return *std::next(times.begin(), std::ptrdiff_t(share * double(times.size())));
    }

    std::map<std::string, std::multiset<double>> mTimes;
};

enum class Aim { atMost, atLeast };

std::string text(double value, const char* unit) {
    char written[32];
    std::snprintf(written, sizeof written, value < 9.995 ? "%.2f%s" : value < 99.95 ? "%.1f%s" : "%.0f%s", value, unit);
    return written;
}

std::string duration(double nanoseconds) {
    if (nanoseconds < 1e3) return text(nanoseconds, " ns");
    if (nanoseconds < 1e6) return text(nanoseconds / 1e3, " µs");
    return text(nanoseconds / 1e6, " ms");
}

std::string bytes(double count) { return count < 1e6 ? text(count / 1e3, " kB") : text(count / 1e6, " MB"); }

class Table {
public:
    using Unit = std::string (*)(double);

    void ratio(const std::string& name, double figure, double baseline, Aim aim, double limit, Unit unit = duration) {
        const double ratio = aim == Aim::atMost ? figure / baseline : baseline / figure;
        const bool holds = aim == Aim::atMost ? ratio <= limit : ratio >= limit;
        row({name, unit(figure), unit(baseline), text(ratio, ""),
             (aim == Aim::atMost ? "at most " : "at least ") + text(limit, ""), holds ? "yes" : "**no**"});
    }
    void ratio(const std::string& name, double figure, double baseline) {
        row({name, duration(figure), duration(baseline), text(figure / baseline, ""), "", ""});
    }
    void difference(const std::string& name, double figure, double baseline, double limit) {
        row({name, duration(figure), duration(baseline), "+" + duration(std::max(0.0, figure - baseline)),
             "at most +" + duration(limit), figure - baseline <= limit ? "yes" : "**no**"});
    }
    void limited(const std::string& name, const std::string& figure, const std::string& limit, bool holds) {
        row({name, figure, "", "", "at most " + limit, holds ? "yes" : "**no**"});
    }
    void alone(const std::string& name, const std::string& figure) { row({name, figure, "", "", "", ""}); }

    const std::string& markdown() const { return mText; }

private:
    void row(const std::array<std::string, 6>& cells) {
        for (const auto& cell : cells) mText.append("| ").append(cell).append(" ");
        mText += "|\n";
    }

    std::string mText =
        "| what | figure | baseline | ratio | aim | holds |\n| --- | ---: | ---: | ---: | ---: | --- |\n";
};

void addDecoding(Table& table, const Runs& best) {
    const double decoding = best["decodeMachines/500"];
    table.ratio("decode 500 machines, over a bare parse of the bytes", decoding, best["bareParse/500"], Aim::atMost,
                2.2);
    table.ratio("decode 500 machines, the plain way over ours", decoding, best["decodePlainly/500"], Aim::atLeast, 12);
    for (const std::int64_t count : {10, 100, 1000, 10000}) {
        const auto more = std::to_string(count);
        const auto fewer = std::to_string(count / 10);
        const auto name = std::string(more).append(" machines over ").append(fewer);
        table.ratio("decode " + name, best["decodeMachines/" + more], best["decodeMachines/" + fewer], Aim::atMost, 11);
        table.ratio("memory taken to decode " + name, decodingBytes(count), decodingBytes(count / 10), Aim::atMost, 11,
                    bytes);
    }
    table.ratio("decode 10000 machines in memory fresh from the system, over memory at hand",
                best["decodeInFreshMemory/10000"], best["decodeMachines/10000"]);
}

void addResidence(Table& table, const Setup& setup) {
    const auto stays = measureInChild("stays", setup);
    table.ratio("peak of the memory while a reply with 10000 machines is read, over its text",
                measureInChild("peak", setup), measureInChild("text", setup), Aim::atMost, 4, bytes);
    table.limited("memory that stays afterwards beyond the objects", bytes(stays), bytes(2e6), stays <= 2e6);
}

void addStart(Table& table, const Setup& setup) {
    const auto ready = measureInChild("ready", setup);
    table.ratio("platform and facade ready, over libcurl alone", ready, measureInChild("bare-ready", setup));
    table.limited("the same", duration(ready), duration(2e6), ready <= 2e6);
    table.alone("start of a process to the first byte of its first request", duration(timeToFirstRequest(setup)));
    table.alone("private memory of the platform and an idle facade", bytes(measureInChild("idle", setup)));
}

void addCalls(Table& table, const Runs& best, const Setup& setup) {
    table.ratio("prepare a request, over its four digests", best["prepareRequest"], best["bareDigests"], Aim::atMost,
                6);
    table.ratio("read a value of the store, over a query for it", best["readStore"], best["queryStore"], Aim::atMost,
                0.5);
    table.ratio("write a payment down before it leaves, over a bare commit", best.median("writePaymentDown"),
                best.median("bareCommit"), Aim::atMost, 1.1);
    table.ratio("whole call on a reused connection, over libcurl on a thread that signs and decodes",
                best.median("wholeCall"), best.median("threadedBareCall"), Aim::atMost, 1.15);
    table.ratio("the same over bare libcurl, which uses its handle again", best.median("wholeCall"),
                best.median("bareCall"));
    table.alone("the same on the library's session alone", duration(best.median("sessionCall")));
    table.ratio("call on a new connection, whose TLS session is resumed, over a session's first call",
                best["resumedCall"], best["firstCallOfSession"]);
    table.ratio(
        "query after a pause in which the service has closed the connection, with `warmsConnection` over without",
        best["queryAfterPauseWarm"], best["queryAfterPause"]);
    for (const auto* calls : {"1", "10", "100", "1000"})
        table.alone(std::string(calls) + " calls at once, each of a facade of its own, until the last is answered",
                    duration(best[std::string("callsAtOnce/") + calls]));
    constexpr double limit = 3e6;
    table.difference("first call of a process, all the system's authorities over one",
                     measureInChild("library-call", setup), measureInChild("bare-call", setup), limit);
    table.difference("first call of a later session, all the system's authorities over one", best["firstCallOfSession"],
                     best["bareFirstCallOfSession"], limit);
}

}  // namespace

std::string report(const Setup& setup) {
    Runs best;
    // What scatters the heap as no application does comes late: ten thousand machines, a thousand calls at once, and a
    // tree of nodes for each value.
    onOneProcessor([&] { benchmark::RunSpecifiedBenchmarks(&best, "wholeCall|sessionCall|[bB]areCall"); });
    benchmark::RunSpecifiedBenchmarks(&best, "Payment|Commit");
    {
        const KeptMemory kept;
        benchmark::RunSpecifiedBenchmarks(&best, "decodeMachines|decodeInFreshMemory|Parse");
    }
    benchmark::RunSpecifiedBenchmarks(&best, "FirstCall|firstCall|resumedCall|callsAtOnce|Pause|Digests|Request|Store");
    const KeptMemory kept;
    benchmark::RunSpecifiedBenchmarks(&best, "decodePlainly");
    Table table;
    addDecoding(table, best);
    addCalls(table, best, setup);
    addResidence(table, setup);
    addStart(table, setup);
    return table.markdown();
}

}  // namespace kavio::bench
