#pragma once

#include "setup.h"

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace kavio::bench {

/// Keeps the best run of each benchmark, in nanoseconds of processor time, because disturbances only make a run longer.
class BestRuns final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override;

    double operator[](const std::string& benchmark) const;

private:
    std::map<std::string, double> mBest;
};

/// The table of all figures, in Markdown.
std::string report(const BestRuns& best, const Setup& setup);

}  // namespace kavio::bench
