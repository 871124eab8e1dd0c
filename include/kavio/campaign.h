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
    const std::string file;  ///< the name of its file
    ///@{
    /// Width and height in pixels.
    const std::int64_t width;
    const std::int64_t height;
    ///@}
    ///@{
    /// As the service sends it.
    const bool wasUploaded;
    const std::int64_t dpi;
    const bool iOS;
    ///@}

    /// One line per member, for logs and tests.
    std::string debugDescription() const;
};

/// The pictures of a look-and-feel.
using Images = std::vector<std::shared_ptr<const Image>>;

/// How an operator wants receipts and punch cards to look. A text that the operator left out is empty.
struct KAVIO_API LookAndFeel {
    ///@{
    /// As the operator has set it; a text may be empty.
    const std::string imageUrl;
    const std::string backgroudColor;
    const std::string textColor;
    const std::string receiptText;
    const std::string punchCardText;
    const Images images;
    ///@}

    /// One line per member, for logs and tests.
    std::string debugDescription() const;
};

/// A punch card: after `totalPunches` purchases the user earns a reward.
struct KAVIO_API Campaign {
    const std::int64_t id;  ///< as the service sends it
    ///@{
    /// As the operator has worded it.
    const std::string name;
    const std::string title;
    const std::string description;
    ///@}
    const std::int64_t punched;       ///< purchases so far
    const std::int64_t totalPunches;  ///< purchases until the reward
    ///@{
    /// The dates are absent when the service sent none, or none that can be read.
    const std::optional<Date> created;
    const std::optional<Date> updated;
    const std::optional<Date> expiration;
    ///@}
    const std::optional<std::string> imageUrl;  ///< absent when the service sent none
    const std::int64_t punchCardId;             ///< as the service sends it
    /// May be null.
    const std::shared_ptr<const LookAndFeel> lookAndFeel;

    /// One line per member, for logs and tests.
    std::string debugDescription() const;
};

/// The punch cards that a machine takes part in.
using Campaigns = std::vector<std::shared_ptr<const Campaign>>;

}  // namespace kavio
