#pragma once

#include <kavio/date.h>
#include <kavio/export.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kavio {

/// A picture of a look-and-feel, and the size it was made for.
struct KAVIO_API Image {
    const std::string file;
    /// Width and height in pixels.
    const std::int64_t width;
    const std::int64_t height;
    const bool wasUploaded;
    const std::int64_t dpi;
    const bool iOS;

    std::string debugDescription() const;
};

using Images = std::vector<std::shared_ptr<const Image>>;

/// How an operator wants receipts and punch cards to look. A text that the operator left out is empty.
struct KAVIO_API LookAndFeel {
    const std::string imageUrl;
    const std::string backgroudColor;
    const std::string textColor;
    const std::string receiptText;
    const std::string punchCardText;
    const Images images;

    std::string debugDescription() const;
};

/// A punch card: after `totalPunches` purchases the user earns a reward.
struct KAVIO_API Campaign {
    const std::int64_t id;
    const std::string name;
    const std::string title;
    const std::string description;
    const std::int64_t punched;
    const std::int64_t totalPunches;
    /// The dates are absent when the service sent none, or none that can be read.
    const std::optional<Date> created;
    const std::optional<Date> updated;
    const std::optional<Date> expiration;
    const std::optional<std::string> imageUrl;
    const std::int64_t punchCardId;
    /// May be null.
    const std::shared_ptr<const LookAndFeel> lookAndFeel;

    std::string debugDescription() const;
};

using Campaigns = std::vector<std::shared_ptr<const Campaign>>;

}  // namespace kavio
