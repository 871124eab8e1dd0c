#pragma once

#include <kavio/platform/device.h>

#include <string>
#include <string_view>

namespace kavio {

/// Two lower-case hexadecimal digits per byte.
inline std::string hexDigest(const Digest::Sha1& digest) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const auto byte : digest) text += {digits[byte >> 4U], digits[byte & 0xFU]};
    return text;
}

// Names without state or operations. What is stored goes through `KavioUserDefaults`; the clock is the functions of
// reliable_clock.h; whether there is a network is learnt by sending; nothing is thrown across the public boundary.
class StorageTool {};
class ReliableClock {};
class SystemClock {};
class Reachability {};
class Exceptions {};
class GoodiesService {};
class GoodiesRepository {};
struct PrepaidGetPhysicalCreationResponse {};

}  // namespace kavio
