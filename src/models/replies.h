#pragma once

#include <kavio/date.h>

#include <cstdint>
#include <optional>
#include <string>

namespace kavio {

class KeyedContainer;

/// A summary of the reviews of an order's machine.
struct OrderMachineReviewModel {
    std::uint32_t reviewsCount;
    float reviewsAvg;
    std::optional<bool> accountReview;
    static OrderMachineReviewModel decode(const KeyedContainer& in);
};

/// Body of a reply that reports an error.
struct ErrorKeys {
    std::string message;
    static ErrorKeys decode(const KeyedContainer& in);
};

/// The extended form of such a body.
struct ErrorModel {
    std::optional<std::string> message;
    std::optional<std::string> code;
    static ErrorModel decode(const KeyedContainer& in);
};

/// The service's clock. The device's own time stands in for whatever cannot be read.
struct ServerTimeResponse {
    Date expireTime;
    Date serverTime;
    static ServerTimeResponse decode(const KeyedContainer& in);
};

}  // namespace kavio
