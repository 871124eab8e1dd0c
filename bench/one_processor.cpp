#include "one_processor.h"

#include <filesystem>
#include <string>

namespace kavio::bench {
namespace {

void runOn(const cpu_set_t& processors) {
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task"))
        sched_setaffinity(std::stoi(thread.path().filename()), sizeof processors, &processors);
}

}  // namespace

OneProcessor::OneProcessor() {
    sched_getaffinity(0, sizeof mBefore, &mBefore);
    cpu_set_t first;
    CPU_ZERO(&first);
    CPU_SET(0, &first);
    runOn(first);
}

OneProcessor::~OneProcessor() { runOn(mBefore); }

}  // namespace kavio::bench
