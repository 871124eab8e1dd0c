#include "models/campaign_model.h"

#include "models/date_text.h"
#include "models/json/keyed_container.h"
#include "models/public_objects.h"

namespace kavio {

ImageMetaModel ImageMetaModel::decode(const KeyedContainer& in) {
    return {
        .file = in.required<std::string>("file"),
        .w = in.required<std::int64_t>("w"),
        .h = in.required<std::int64_t>("h"),
        .wasUploaded = in.required<bool>("wasUploaded"),
        .dpi = in.required<std::int64_t>("dpi"),
        .ios = in.required<bool>("ios"),
    };
}

LookAndFeelModel LookAndFeelModel::decode(const KeyedContainer& in) {
    return {
        .imageUrl = in.optional<std::string>("images_url", ""),
        .backgroundColor = in.optional<std::string>("backgroundColor", ""),
        .textColor = in.optional<std::string>("textColor", ""),
        .receiptText = in.optional<std::string>("receiptText", ""),
        .punchCardText = in.optional<std::string>("punchCardText", ""),
        .images = in.optional<std::vector<ImageMetaModel>>("images", {}),
    };
}

namespace {

CampainModel decodeCampaign(const KeyedContainer& in) {
    return {
        .id = in.required<std::int64_t>("campaignId"),
        .name = in.required<std::string>("campaignName"),
        .title = in.required<std::string>("campaignTitle"),
        .description = in.required<std::string>("campaignDescription"),
        .punched = in.required<std::int64_t>("punched"),
        .totalPunches = in.required<std::int64_t>("totalPunches"),
        .created = in.required<std::string>("created"),
        .expiration = in.optional<std::string>("expiration"),
        .imageUrl = in.optional<std::string>("imagesUrl"),
        .fullTreeOperators = in.optional<std::vector<std::int64_t>>("fullTreeOperators"),
        .punchCardId = in.required<std::int64_t>("punchCardId"),
        .updatedDate = in.optional<std::string>("updated"),
        .lookAndFeel = in.required<LookAndFeelModel>("lookAndFeel"),
    };
}

}  // namespace

CampainModel CampainModel::decode(const KeyedContainer& in) {
    const auto voucher = in.nestedIfObject("voucher");
    return decodeCampaign(voucher ? *voucher : in);
}

VoucherModel VoucherModel::decode(const KeyedContainer& in) {
    return {.campaigns = in.required<std::vector<CampainModel>>("vouchers")};
}

std::shared_ptr<const Image> publicObject(ImageMetaModel&& model) {
    return std::make_shared<Image>(std::move(model.file), model.w, model.h, model.wasUploaded, model.dpi, model.ios);
}

std::shared_ptr<const LookAndFeel> publicObject(LookAndFeelModel&& model) {
    return std::make_shared<LookAndFeel>(std::move(model.imageUrl), std::move(model.backgroundColor),
                                         std::move(model.textColor), std::move(model.receiptText),
                                         std::move(model.punchCardText), publicObjects(std::move(model.images)));
}

std::shared_ptr<const Campaign> publicObject(CampainModel&& model) {
    const auto date = [](const std::optional<std::string>& text) {
        return text ? DateText::parseLocalized(*text) : std::nullopt;
    };
    return std::make_shared<Campaign>(model.id, std::move(model.name), std::move(model.title),
                                      std::move(model.description), model.punched, model.totalPunches,
                                      date(model.created), date(model.updatedDate), date(model.expiration),
                                      std::move(model.imageUrl), model.punchCardId,
                                      model.lookAndFeel ? publicObject(*std::move(model.lookAndFeel)) : nullptr);
}

}  // namespace kavio
