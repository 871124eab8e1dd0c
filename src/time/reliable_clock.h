#pragma once

#include <kavio/date.h>

#include <chrono>
#include <optional>
#include <string>

namespace kavio {

struct ServerTimeResponse;

/// A time sample is renewed when no more than this is left of it.
inline constexpr std::chrono::seconds TIME_SAMPLE_MARGIN{300};

/// The server's clock: the last time sample moved forward by what the device's clock has moved since.
Date serverNow();
/// `serverNow` as yyyyMMddHHmmss in UTC.
std::string serverTimeStamp();

/// Whether `serverNow` follows a time sample that has not expired, and not the device's clock alone.
bool isServerTimeKnown();

/// Whether the stored time sample is good for more than `TIME_SAMPLE_MARGIN`.
bool isTimeSampleFresh();

/// Keeps a new time sample; with none, the device's clock stands in for the server's and the expiry is left as it was.
void storeTimeSample(const std::optional<ServerTimeResponse>& response);

}  // namespace kavio
