#include "platform/linux/system_clock.h"

#include <ctime>

namespace kavio {
namespace {

std::chrono::nanoseconds read(clockid_t clock) {
    timespec time{};
    ::clock_gettime(clock, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

class SystemClock final : public Clock {
public:
    Date now() const override { return Date(read(CLOCK_REALTIME)); }
    std::chrono::nanoseconds uptime() const override { return read(CLOCK_BOOTTIME); }  // keeps counting while suspended
};

}  // namespace

std::shared_ptr<Clock> makeSystemClock() { return std::make_shared<SystemClock>(); }

}  // namespace kavio
