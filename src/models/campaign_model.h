#pragma once

#include <kavio/campaign.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kavio {

class KeyedContainer;

struct ImageMetaModel {
    std::string file;
    std::int64_t w = 0;
    std::int64_t h = 0;
    bool wasUploaded = false;
    std::int64_t dpi = 0;
    bool ios = false;
    static ImageMetaModel decode(const KeyedContainer& in);
};

struct LookAndFeelModel {
    std::string imageUrl;
    std::string backgroundColor;
    std::string textColor;
    std::string receiptText;
    std::string punchCardText;
    std::vector<ImageMetaModel> images;
    static LookAndFeelModel decode(const KeyedContainer& in);
};

/// A campaign: an object, or such an object wrapped as "voucher".
struct CampainModel {
    std::int64_t id = 0;
    std::string name;
    std::string title;
    std::string description;
    std::int64_t punched = 0;
    std::int64_t totalPunches = 0;
    std::string created;
    std::optional<std::string> expiration;
    std::optional<std::string> imageUrl;
    std::optional<std::vector<std::int64_t>> fullTreeOperators;
    std::int64_t punchCardId = 0;
    std::optional<std::string> updatedDate;
    std::optional<LookAndFeelModel> lookAndFeel;
    static CampainModel decode(const KeyedContainer& in);
};

/// Reply that lists campaigns.
struct VoucherModel {
    std::vector<CampainModel> campaigns;
    static VoucherModel decode(const KeyedContainer& in);
};

std::shared_ptr<const Image> publicObject(ImageMetaModel&& model);
std::shared_ptr<const LookAndFeel> publicObject(LookAndFeelModel&& model);
std::shared_ptr<const Campaign> publicObject(CampainModel&& model);

}  // namespace kavio
