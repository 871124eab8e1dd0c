// kavio-bench ADDRESS FOLDER: measures the costs that matter, each against its baseline, with the sandbox service at
// ADDRESS, whose authority is in FOLDER/authority.pem, and among the system's in FOLDER/authorities. scripts/bench runs
// everything.

#include "child.h"
#include "report.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>
#include <string_view>

namespace {

using namespace kavio::bench;

int run(int argc, char** argv) {
    if (argc == 5 && argv[1] == std::string_view(childFlag)) return runChild(argv[2], {argv[3], argv[4]});
    benchmark::Initialize(&argc, argv);
    if (argc != 3) throw std::invalid_argument("usage: kavio-bench ADDRESS FOLDER");
    const Setup setup{argv[1], argv[2]};
    openSession(setup);
    registerPreparing(setup);
    registerCalls(setup);
    registerPauses(setup);
    std::fputs(report(setup).c_str(), stdout);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kavio-bench: %s\n", error.what());
        return 1;
    }
}
