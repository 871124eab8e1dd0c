#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace kavio {

class KeyedContainer;

/// One user's review of a machine.
struct MachineReviewModel {
    std::optional<std::string> userName;
    std::string createdDT;
    std::string updatedDT;
    std::optional<bool> accountReview;
    std::uint32_t machineRating = 0;
    std::string machineReview;
    static MachineReviewModel decode(const KeyedContainer& in);
};

struct PurchaseGameResponse {
    bool ok = false;
    std::int64_t winAmount = 0;
    static PurchaseGameResponse decode(const KeyedContainer& in);
};

struct CheckGeoIPResponse {
    std::string isoCode;
    static CheckGeoIPResponse decode(const KeyedContainer& in);
};

struct PrepaidCreateVirtualCardResponse {
    std::optional<std::string> token;
    static PrepaidCreateVirtualCardResponse decode(const KeyedContainer& in);
};

struct PrepaidCreatePhysicalCardResponse {
    std::optional<std::int64_t> id;
    static PrepaidCreatePhysicalCardResponse decode(const KeyedContainer& in);
};

/// Reply that only acknowledges.
struct BasicResponse {
    bool ok = false;
    std::optional<std::string> result;
    static BasicResponse decode(const KeyedContainer& in);
};

}  // namespace kavio
