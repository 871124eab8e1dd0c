#pragma once

#include "models/json/keyed_container.h"

#include <kavio/campaign.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace kavio {

// These public objects have exactly the reply's members, so the reply is read straight into them.

using ImageMetaModel = Image;
template <>
struct Decoder<Image> {
    static Image decode(const KeyedContainer& in);
};

using LookAndFeelModel = LookAndFeel;
template <>
struct Decoder<LookAndFeel> {
    static LookAndFeel decode(const KeyedContainer& in);
};

/// A campaign: an object, or such an object wrapped as "voucher". The texts belong to the document.
struct CampainModel {
    std::int64_t id;
    std::string_view name;
    std::string_view title;
    std::string_view description;
    std::int64_t punched;
    std::int64_t totalPunches;
    std::string_view created;
    std::optional<std::string_view> expiration;
    std::optional<std::string_view> imageUrl;
    std::optional<std::vector<std::int64_t>> fullTreeOperators;
    std::int64_t punchCardId;
    std::optional<std::string_view> updatedDate;
    std::shared_ptr<const LookAndFeelModel> lookAndFeel;
    static CampainModel decode(const BorrowingContainer& in);
};
/// Made from a `CampainModel`.
template <>
struct Decoder<Campaign> {
    static Campaign decode(const DecodedValue& value);
};

}  // namespace kavio
