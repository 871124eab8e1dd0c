#include "time/reliable_clock.h"

#include "models/replies.h"
#include "storage/kavio_user_defaults.h"

#include <kavio/platform/platform.h>

namespace kavio {

Date serverNow() {
    const auto defaults = KavioUserDefaults::shared();
    const auto now = Platform::current().clock->now();
    // One reading of the device's clock for all three: with no sample the sum is exactly that reading.
    const auto serverTime = defaults->defualt->date(keys::serverTime).value_or(now);
    const auto savedCpuTime = defaults->defualt->date(keys::savedCpuTime).value_or(now);
    return serverTime + (now - savedCpuTime);
}

bool isTimeSampleFresh() {
    const auto expiry = KavioUserDefaults::shared()->getServerExpiredTime();
    return expiry && serverNow() < *expiry - TIME_SAMPLE_MARGIN;
}

void storeTimeSample(const std::optional<ServerTimeResponse>& response) {
    const auto defaults = KavioUserDefaults::shared();
    const auto now = Platform::current().clock->now();
    defaults->defualt->set(keys::serverTime, response ? response->serverTime : now);
    defaults->defualt->set(keys::savedCpuTime, now);
    if (response) defaults->setServerExpiredTime(response->expireTime);
}

}  // namespace kavio
