#include "models/campaign_model.h"

#include "models/date_text.h"
#include "models/unkept_list.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kavio {

Image Decoder<Image>::decode(const KeyedContainer& in) {
    return {
        .file = in.required("file"),
        .width = in.required("w"),
        .height = in.required("h"),
        .wasUploaded = in.required("wasUploaded"),
        .dpi = in.required("dpi"),
        .iOS = in.required("ios"),
    };
}

LookAndFeel Decoder<LookAndFeel>::decode(const KeyedContainer& in) {
    return {
        .imageUrl = in.optional("images_url", ""),
        .backgroudColor = in.optional("backgroundColor", ""),
        .textColor = in.optional("textColor", ""),
        .receiptText = in.optional("receiptText", ""),
        .punchCardText = in.optional("punchCardText", ""),
        .images = in.orEmpty("images"),
    };
}

namespace {

/// A campaign of the reply. Only for making its public object: the texts belong to the document.
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
    std::optional<UnkeptList<std::int64_t>> fullTreeOperators;
    std::int64_t punchCardId;
    std::optional<std::string_view> updatedDate;
    std::shared_ptr<const LookAndFeelModel> lookAndFeel;
    static CampainModel decode(const BorrowingContainer& in);
};

CampainModel decodeCampaign(const BorrowingContainer& in) {
    return {
        .id = in.required("campaignId"),
        .name = in.required("campaignName"),
        .title = in.required("campaignTitle"),
        .description = in.required("campaignDescription"),
        .punched = in.required("punched"),
        .totalPunches = in.required("totalPunches"),
        .created = in.required("created"),
        .expiration = in.optional("expiration"),
        .imageUrl = in.optional("imagesUrl"),
        .fullTreeOperators = in.optional("fullTreeOperators"),
        .punchCardId = in.required("punchCardId"),
        .updatedDate = in.optional("updated"),
        .lookAndFeel = in.required("lookAndFeel"),
    };
}

std::optional<Date> date(std::optional<std::string_view> text) {
    return text ? DateText::parseLocalized(*text) : std::nullopt;
}

CampainModel CampainModel::decode(const BorrowingContainer& in) {
    const auto voucher = in.nestedIfObject("voucher");
    return decodeCampaign(voucher ? *voucher : in);
}

}  // namespace

Campaign Decoder<Campaign>::decode(const DecodedValue& value) {
    auto model = value.borrowed<CampainModel>();
    return {
        .id = model.id,
        .name = std::string(model.name),
        .title = std::string(model.title),
        .description = std::string(model.description),
        .punched = model.punched,
        .totalPunches = model.totalPunches,
        .created = date(model.created),
        .updated = date(model.updatedDate),
        .expiration = date(model.expiration),
        .imageUrl = std::optional<std::string>(model.imageUrl),
        .punchCardId = model.punchCardId,
        .lookAndFeel = std::move(model.lookAndFeel),
    };
}

}  // namespace kavio
