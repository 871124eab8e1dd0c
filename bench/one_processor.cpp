#include "one_processor.h"

#include <sched.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace kavio::bench {
namespace {

void runOn(const cpu_set_t& processors) {
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task"))
        if (sched_setaffinity(std::stoi(thread.path().filename()), sizeof processors, &processors) != 0)
            throw std::runtime_error("The threads cannot be bound to a processor.");
}

}  // namespace

void onOneProcessor(const std::function<void()>& work) {
    cpu_set_t before;
    if (sched_getaffinity(0, sizeof before, &before) != 0)
        throw std::runtime_error("The system does not tell the processors of the process.");
    int first = 0;
    while (!CPU_ISSET(first, &before)) ++first;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(first, &one);
    runOn(one);
    work();
    runOn(before);
}

}  // namespace kavio::bench
