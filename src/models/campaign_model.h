#pragma once

#include <kavio/campaign.h>

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kavio {

class KeyedContainer;

// `Text` is std::string in a record that is kept. With std::string_view, for making a public object, the texts are the
// document's own, and are gone with it.

template <class Text>
struct BasicImageMetaModel {
    Text file;
    std::int64_t w = 0;
    std::int64_t h = 0;
    bool wasUploaded = false;
    std::int64_t dpi = 0;
    bool ios = false;
    static constexpr bool borrowsTexts = std::same_as<Text, std::string_view>;
    static BasicImageMetaModel decode(const KeyedContainer& in);
};

template <class Text>
struct BasicLookAndFeelModel {
    Text imageUrl;
    Text backgroundColor;
    Text textColor;
    Text receiptText;
    Text punchCardText;
    std::vector<BasicImageMetaModel<Text>> images;
    static constexpr bool borrowsTexts = std::same_as<Text, std::string_view>;
    static BasicLookAndFeelModel decode(const KeyedContainer& in);
};

using ImageMetaModel = BasicImageMetaModel<std::string>;
using LookAndFeelModel = BasicLookAndFeelModel<std::string>;

/// A campaign: an object, or such an object wrapped as "voucher". The texts are the document's own.
struct CampainModel {
    std::int64_t id = 0;
    std::string_view name;
    std::string_view title;
    std::string_view description;
    std::int64_t punched = 0;
    std::int64_t totalPunches = 0;
    std::string_view created;
    std::optional<std::string_view> expiration;
    std::optional<std::string_view> imageUrl;
    std::optional<std::vector<std::int64_t>> fullTreeOperators;
    std::int64_t punchCardId = 0;
    std::optional<std::string_view> updatedDate;
    std::optional<BasicLookAndFeelModel<std::string_view>> lookAndFeel;
    static constexpr bool borrowsTexts = true;
    static CampainModel decode(const KeyedContainer& in);
};

/// Reply that lists campaigns. The texts are the document's own.
struct VoucherModel {
    std::vector<CampainModel> campaigns;
    static constexpr bool borrowsTexts = true;
    static VoucherModel decode(const KeyedContainer& in);
};

std::shared_ptr<const Image> publicObject(const BasicImageMetaModel<std::string_view>& model);
std::shared_ptr<const LookAndFeel> publicObject(BasicLookAndFeelModel<std::string_view>&& model);
std::shared_ptr<const Campaign> publicObject(CampainModel&& model);

}  // namespace kavio
