#include "time/reliable_clock.h"

#include "models/ascii_text.h"
#include "models/date_text.h"
#include "models/replies.h"
#include "storage/kavio_user_defaults.h"
#include "storage/suites.h"
#include "util/shared_instance.h"

#include <kavio/platform/platform.h>

#include <mutex>
#include <string>
#include <string_view>

namespace kavio {
namespace {

using std::chrono::nanoseconds;

/// Both clocks of the device, read together.
struct Reading {
    Date now;
    nanoseconds uptime;  // nobody can set this one
};

Reading reading() {
    const auto& clock = *Platform::current().clock;
    return {clock.now(), clock.uptime()};
}

/// When the last time sample was taken, by both clocks. Kept beside the sample, which has only the one that can be set.
constexpr std::string_view sampleTakenKey = "time_sample_taken";
constexpr std::string_view sampleUptimeKey = "time_sample_uptime";

void noteSample(const Reading& taken) {
    recordsSuite()->write({{std::string(sampleTakenKey), taken.now},
                           {std::string(sampleUptimeKey), std::to_string(taken.uptime.count())}});
}

/// Absent for a sample that was stored without.
std::optional<Reading> notedSample(Date taken) {
    const auto noted = recordsSuite()->values({sampleTakenKey, sampleUptimeKey});
    const auto uptime = decimalInteger(KeyValueStore::typed<std::string>(noted[1]).value_or(""));
    if (KeyValueStore::typed<Date>(noted[0]) != taken || !uptime) return std::nullopt;
    return Reading{taken, nanoseconds(*uptime)};
}

/// Notices when somebody sets the device's clock, by which a sample says nothing about the server's any more. The note
/// of a sample is looked up only once.
class ClockWatch {
public:
    bool isSteadySince(Date sampleTaken, const Reading& current) {
        const auto start = startOf(sampleTaken, current);
        const std::chrono::duration<double> shift = (current.now - start.now) - (current.uptime - start.uptime);
        return abs(shift) <= mostDrift;
    }

private:
    static constexpr std::chrono::seconds mostDrift{5};

    Reading startOf(Date sampleTaken, const Reading& current) {
        {
            const std::lock_guard lock(mMutex);
            if (sampleTaken == mSampleTaken) return mStart;
        }
        const auto start = notedSample(sampleTaken).value_or(current);  // without the lock: the store may call the host
        const std::lock_guard lock(mMutex);
        mSampleTaken = sampleTaken;
        return mStart = start;
    }

    std::mutex mMutex;
    std::optional<Date> mSampleTaken;
    Reading mStart{};
};

// One reading of the device's clock for all that is missing, so that without a sample the sum is exactly that reading.
Date serverTimeAt(Date now, const StoredSample& sample) {
    return sample.serverTime.value_or(now) + (now - sample.savedCpuTime.value_or(now));
}

/// Whether the sample does not expire within `margin`, and nobody has set the device's clock since it was taken.
bool isGoodFor(std::chrono::seconds margin, const StoredSample& sample) {
    const auto current = reading();
    if (!sample.expiry || serverTimeAt(current.now, sample) >= *sample.expiry - margin) return false;
    return !sample.savedCpuTime || sharedInstance<ClockWatch>()->isSteadySince(*sample.savedCpuTime, current);
}

}  // namespace

StoredSample storedSample() {
    const auto stored =
        KavioUserDefaults::shared()->defualt->values({keys::serverTime, keys::savedCpuTime, keys::serverExpiredTime});
    return {KeyValueStore::typed<Date>(stored[0]), KeyValueStore::typed<Date>(stored[1]),
            KeyValueStore::typed<Date>(stored[2])};
}

Date serverNow(const StoredSample& sample) { return serverTimeAt(reading().now, sample); }

std::string serverTimeStamp(const StoredSample& sample) { return DateText::stamp(serverNow(sample)); }

bool isServerTimeKnown() {
    const auto sample = storedSample();
    // What stands in for a sample has the device's time twice.
    const bool isOfServer = sample.serverTime && sample.serverTime != sample.savedCpuTime;
    return isOfServer && isGoodFor(std::chrono::seconds(0), sample);
}

bool isTimeSampleFresh(const StoredSample& sample) { return isGoodFor(TIME_SAMPLE_MARGIN, sample); }

void storeTimeSample(const std::optional<ServerTimeResponse>& response) {
    const auto defaults = KavioUserDefaults::shared();
    const auto taken = reading();
    const auto now = taken.now;
    noteSample(taken);  // first: a crash in between leaves a note without a sample, which is harmless
    StoreChanges sample{{std::string(keys::serverTime), response ? response->serverTime : now},
                        {std::string(keys::savedCpuTime), now}};
    if (response) sample.emplace(keys::serverExpiredTime, response->expireTime);
    defaults->defualt->write(sample);  // one write: half a sample would set the clock wrong
}

}  // namespace kavio
