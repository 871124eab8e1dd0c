#pragma once

#include <kavio/date.h>

#include <chrono>
#include <optional>
#include <string>

namespace kavio {

struct ServerTimeResponse;

/// A time sample is renewed when no more than this is left of it.
inline constexpr std::chrono::seconds TIME_SAMPLE_MARGIN{300};

/// The last time sample as the store has it.
struct StoredSample {
    std::optional<Date> serverTime;
    std::optional<Date> savedCpuTime;  // the device's clock at that moment
    std::optional<Date> expiry;
};
StoredSample storedSample();

/// The server's clock: the last time sample plus the time that has passed on the device's clock since.
Date serverNow(const StoredSample& sample = storedSample());
/// `serverNow` as yyyyMMddHHmmss in UTC.
std::string serverTimeStamp(const StoredSample& sample = storedSample());

/// Whether `serverNow` follows a time sample that has not expired, and not the device's clock alone, which nobody has
/// set meanwhile.
bool isServerTimeKnown();

/// Whether the stored time sample is good for more than `TIME_SAMPLE_MARGIN`. Not if somebody has set the device's
/// clock.
bool isTimeSampleFresh(const StoredSample& sample = storedSample());

/// Keeps a new time sample; without one, the device's clock stands in for the server's and the expiry stays as it was.
void storeTimeSample(const std::optional<ServerTimeResponse>& response);

}  // namespace kavio
