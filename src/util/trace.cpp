#include "util/trace.h"

#include "util/auxiliary.h"

#include <kavio/platform/platform.h>

#include <cstdio>

namespace kavio {

bool isTraceWritten() { return KAVIO_TRACE; }

void writeTrace(std::string_view tag, std::string_view message) {
    const auto uptime = std::chrono::floor<std::chrono::milliseconds>(Platform::current().clock->uptime());
    auto line = Auxiliary::durationText(static_cast<std::uint64_t>(uptime.count()));
    line.append(" [").append(tag).append("] ").append(message).append("\n");
    std::fputs(line.c_str(), stderr);
}

}  // namespace kavio
