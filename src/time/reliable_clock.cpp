#include "time/reliable_clock.h"

#include "models/date_text.h"
#include "models/replies.h"
#include "storage/kavio_user_defaults.h"
#include "util/shared_instance.h"

#include <kavio/platform/platform.h>

#include <mutex>

namespace kavio {
namespace {

/// Notices when somebody sets the device's clock, by which a sample says nothing about the server's any more: the
/// clock that nobody can set has gone on steadily. What happened before this process first saw the sample is not known.
class ClockWatch {
public:
    bool isSteadySince(Date sampleTaken, Date now, std::chrono::nanoseconds uptime) {
        const std::lock_guard lock(mMutex);
        if (sampleTaken != mSampleTaken) {
            mSampleTaken = sampleTaken;
            mNow = now;
            mUptime = uptime;
        }
        const std::chrono::duration<double> shift = (now - mNow) - (uptime - mUptime);
        return abs(shift) <= mostDrift;
    }

private:
    static constexpr std::chrono::seconds mostDrift{5};

    std::mutex mMutex;
    std::optional<Date> mSampleTaken;
    Date mNow;
    std::chrono::nanoseconds mUptime{0};
};

struct TimeSample {
    Date serverNow;
    std::optional<Date> expiry;
    bool isOfServer;  // what stands in for a sample has the device's time twice
    bool isSteady;    // nobody has set the device's clock since
};

TimeSample timeSample() {
    const auto stored =
        KavioUserDefaults::shared()->defualt->values({keys::serverTime, keys::savedCpuTime, keys::serverExpiredTime});
    const auto& clock = *Platform::current().clock;
    const auto now = clock.now();
    // One reading of the device's clock for all three, so that without a sample the sum is exactly that reading.
    const auto serverTime = KeyValueStore::typed<Date>(stored[0]).value_or(now);
    const auto savedCpuTime = KeyValueStore::typed<Date>(stored[1]).value_or(now);
    return {serverTime + (now - savedCpuTime), KeyValueStore::typed<Date>(stored[2]), serverTime != savedCpuTime,
            sharedInstance<ClockWatch>()->isSteadySince(savedCpuTime, now, clock.uptime())};
}

}  // namespace

Date serverNow() { return timeSample().serverNow; }

std::string serverTimeStamp() { return DateText::stamp(serverNow()); }

bool isServerTimeKnown() {
    const auto sample = timeSample();
    return sample.isOfServer && sample.isSteady && sample.expiry && sample.serverNow < *sample.expiry;
}

bool isTimeSampleFresh() {
    const auto sample = timeSample();
    return sample.isSteady && sample.expiry && sample.serverNow < *sample.expiry - TIME_SAMPLE_MARGIN;
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
