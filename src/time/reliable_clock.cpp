#include "time/reliable_clock.h"

#include "models/replies.h"
#include "storage/kavio_user_defaults.h"

#include <kavio/platform/platform.h>

namespace kavio {

Date serverNow() {
    const auto defaults = KavioUserDefaults::shared();
    const auto now = Platform::current().clock->now();
    // One reading of the device's clock for all three: with no sample the sum is exactly that reading.
    return defaults->getServerTime(now) + (now - defaults->getSavedCpuTime(now));
}

bool isTimeSampleFresh() {
    const auto expiry = KavioUserDefaults::shared()->getServerExpiredTime();
    return expiry && serverNow() < *expiry - TIME_SAMPLE_MARGIN;
}

void storeTimeSample(const std::optional<ServerTimeResponse>& response) {
    const auto defaults = KavioUserDefaults::shared();
    const auto now = Platform::current().clock->now();
    StoreChanges sample{{std::string(keys::serverTime), response ? response->serverTime : now},
                        {std::string(keys::savedCpuTime), now}};
    if (response) sample.emplace(keys::serverExpiredTime, response->expireTime);
    defaults->defualt->write(sample);  // one write: a sample of which half is lost would set the clock wrong
}

}  // namespace kavio
