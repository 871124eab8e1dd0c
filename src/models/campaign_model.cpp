#include "models/campaign_model.h"

#include "models/date_text.h"
#include "models/json/keyed_container.h"
#include "models/public_objects.h"

namespace kavio {

template <class Text>
BasicImageMetaModel<Text> BasicImageMetaModel<Text>::decode(const KeyedContainer& in) {
    return {
        .file = in.required<Text>("file"),
        .w = in.required<std::int64_t>("w"),
        .h = in.required<std::int64_t>("h"),
        .wasUploaded = in.required<bool>("wasUploaded"),
        .dpi = in.required<std::int64_t>("dpi"),
        .ios = in.required<bool>("ios"),
    };
}

template <class Text>
BasicLookAndFeelModel<Text> BasicLookAndFeelModel<Text>::decode(const KeyedContainer& in) {
    return {
        .imageUrl = in.optional<Text>("images_url", ""),
        .backgroundColor = in.optional<Text>("backgroundColor", ""),
        .textColor = in.optional<Text>("textColor", ""),
        .receiptText = in.optional<Text>("receiptText", ""),
        .punchCardText = in.optional<Text>("punchCardText", ""),
        .images = in.optional<std::vector<BasicImageMetaModel<Text>>>("images", {}),
    };
}

namespace {

CampainModel decodeCampaign(const KeyedContainer& in) {
    return {
        .id = in.required<std::int64_t>("campaignId"),
        .name = in.required<std::string_view>("campaignName"),
        .title = in.required<std::string_view>("campaignTitle"),
        .description = in.required<std::string_view>("campaignDescription"),
        .punched = in.required<std::int64_t>("punched"),
        .totalPunches = in.required<std::int64_t>("totalPunches"),
        .created = in.required<std::string_view>("created"),
        .expiration = in.optional<std::string_view>("expiration"),
        .imageUrl = in.optional<std::string_view>("imagesUrl"),
        .fullTreeOperators = in.optional<std::vector<std::int64_t>>("fullTreeOperators"),
        .punchCardId = in.required<std::int64_t>("punchCardId"),
        .updatedDate = in.optional<std::string_view>("updated"),
        .lookAndFeel = in.required<BasicLookAndFeelModel<std::string_view>>("lookAndFeel"),
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

std::shared_ptr<const Image> publicObject(const BasicImageMetaModel<std::string_view>& model) {
    return std::make_shared<Image>(std::string(model.file), model.w, model.h, model.wasUploaded, model.dpi, model.ios);
}

std::shared_ptr<const LookAndFeel> publicObject(BasicLookAndFeelModel<std::string_view>&& model) {
    return std::make_shared<LookAndFeel>(std::string(model.imageUrl), std::string(model.backgroundColor),
                                         std::string(model.textColor), std::string(model.receiptText),
                                         std::string(model.punchCardText), publicObjects(std::move(model.images)));
}

std::shared_ptr<const Campaign> publicObject(CampainModel&& model) {
    const auto date = [](const std::optional<std::string_view>& text) {
        return text ? DateText::parseLocalized(*text) : std::nullopt;
    };
    return std::make_shared<Campaign>(model.id, std::string(model.name), std::string(model.title),
                                      std::string(model.description), model.punched, model.totalPunches,
                                      date(model.created), date(model.updatedDate), date(model.expiration),
                                      std::optional<std::string>(model.imageUrl), model.punchCardId,
                                      model.lookAndFeel ? publicObject(*std::move(model.lookAndFeel)) : nullptr);
}

template struct BasicImageMetaModel<std::string>;
template struct BasicImageMetaModel<std::string_view>;
template struct BasicLookAndFeelModel<std::string>;
template struct BasicLookAndFeelModel<std::string_view>;

}  // namespace kavio
