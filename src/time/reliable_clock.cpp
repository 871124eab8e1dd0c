#include "time/reliable_clock.h"

#include "models/date_text.h"
#include "models/replies.h"
#include "storage/kavio_user_defaults.h"

#include <kavio/platform/platform.h>

namespace kavio {
namespace {

struct TimeSample {
    Date serverNow;
    std::optional<Date> expiry;
    bool isOfServer;  // what stands in for a sample has the device's time twice
};

TimeSample timeSample() {
    const auto stored =
        KavioUserDefaults::shared()->defualt->values({keys::serverTime, keys::savedCpuTime, keys::serverExpiredTime});
    const auto now = Platform::current().clock->now();
    // One reading of the device's clock for all three, so that without a sample the sum is exactly that reading.
    const auto serverTime = KeyValueStore::typed<Date>(stored[0]).value_or(now);
    const auto savedCpuTime = KeyValueStore::typed<Date>(stored[1]).value_or(now);
    return {serverTime + (now - savedCpuTime), KeyValueStore::typed<Date>(stored[2]), serverTime != savedCpuTime};
}

}  // namespace

Date serverNow() { return timeSample().serverNow; }

std::string serverTimeStamp() { return DateText::stamp(serverNow()); }

bool isServerTimeKnown() {
    const auto sample = timeSample();
    return sample.isOfServer && sample.expiry && sample.serverNow < *sample.expiry;
}

bool isTimeSampleFresh() {
    const auto sample = timeSample();
    return sample.expiry && sample.serverNow < *sample.expiry - TIME_SAMPLE_MARGIN;
}

void storeTimeSample(const std::optional<ServerTimeResponse>& response) {
    const auto defaults = KavioUserDefaults::shared();
    const auto now = Platform::current().clock->now();
    StoreChanges sample{{std::string(keys::serverTime), response ? response->serverTime : now},
                        {std::string(keys::savedCpuTime), now}};
    if (response) sample.emplace(keys::serverExpiredTime, response->expireTime);
    defaults->defualt->write(sample);  // one write: half a sample would set the clock wrong
}

}  // namespace kavio
