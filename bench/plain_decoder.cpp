#include "plain_decoder.h"

#include "models/json/shared_object.h"

#include <kavio/campaign.h>
#include <kavio/machine.h>
#include <kavio/platform/platform.h>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <initializer_list>
#include <optional>

namespace kavio::bench {
namespace {

using Json = nlohmann::json;

template <class T>
std::optional<T> member(const Json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return std::nullopt;
    return found->get<T>();
}
template <class T>
void check(const Json& object, std::initializer_list<const char*> keys) {
    for (const auto* key : keys) benchmark::DoNotOptimize(member<T>(object, key));
}
std::optional<Date> date(const Json& object, const char* key) {
    static const DateFormat format{"yyyy-MM-dd'T'HH:mm:ss.SSS", "en_US_POSIX", "UTC"};
    const auto text = member<std::string>(object, key);
    return text ? Platform::current().dateFormatter->parse(format, *text) : std::nullopt;
}

std::shared_ptr<const LookAndFeel> lookAndFeel(const Json& in) {
    Images images;
    for (const auto& image : in.at("images")) {
        images.push_back(sharedObject([&] {
            return Image{.file = image.at("file").get<std::string>(),
                         .width = image.at("w").get<int>(),
                         .height = image.at("h").get<int>(),
                         .wasUploaded = image.at("wasUploaded").get<bool>(),
                         .dpi = image.at("dpi").get<int>(),
                         .iOS = image.at("ios").get<bool>()};
        }));
    }
    const auto text = [&in](const char* key) { return member<std::string>(in, key).value_or(""); };
    return sharedObject([&] {
        return LookAndFeel{.imageUrl = text("images_url"),
                           .backgroudColor = text("backgroundColor"),
                           .textColor = text("textColor"),
                           .receiptText = text("receiptText"),
                           .punchCardText = text("punchCardText"),
                           .images = std::move(images)};
    });
}

std::shared_ptr<const Campaign> campaign(const Json& in) {
    check<std::vector<std::int64_t>>(in, {"fullTreeOperators"});
    const auto text = [&in](const char* key) { return in.at(key).get<std::string>(); };
    const auto integer = [&in](const char* key) { return in.at(key).get<std::int64_t>(); };
    return sharedObject([&] {
        return Campaign{.id = integer("campaignId"),
                        .name = text("campaignName"),
                        .title = text("campaignTitle"),
                        .description = text("campaignDescription"),
                        .punched = integer("punched"),
                        .totalPunches = integer("totalPunches"),
                        .created = date(in, "created"),
                        .updated = date(in, "updated"),
                        .expiration = date(in, "expiration"),
                        .imageUrl = member<std::string>(in, "imagesUrl"),
                        .punchCardId = integer("punchCardId"),
                        .lookAndFeel = lookAndFeel(in.at("lookAndFeel"))};
    });
}

std::shared_ptr<const Machine> machine(const Json& in) {
    check<std::string>(in, {"machineConnectivityStatus", "zipCode", "currency", "location", "customLabel", "customLabe",
                            "smartStickerIdUrl", "supportDcsImageUpdatedDt", "defaultCredit"});
    check<std::int64_t>(
        in, {"name", "machineModel", "decimalPlace", "reviewsCount", "reviewsCount1", "reviewsCount2", "reviewsCount3",
             "reviewsCount4", "reviewsCount5", "uniQR", "actorID", "distributorID", "extraChargeType"});
    check<double>(in, {"distance", "reviewsAvg", "extraCharge", "latitude", "longitude"});
    check<bool>(in, {"isRevalueOnly", "isFavorite", "isPulse", "evNozzle", "evNozzleLeft", "evNozzleRight",
                     "supportRevalue", "supportKavioAutoPP", "supportDcsImage"});
    check<std::vector<double>>(in, {"fullTreeOperatorsField"});
    benchmark::DoNotOptimize(date(in, "lastOrderDT"));
    Campaigns campaigns;
    for (const auto& entry : in.at("campaigns")) campaigns.push_back(campaign(entry));
    const auto& coordinate = in.at("coordinate");
    return sharedObject([&] {
        return Machine{
            .id = in.at("machineId").get<std::int64_t>(),
            .kavioId = member<std::int64_t>(in, "kavioID").value_or(0),
            .operatorName = member<std::string>(in, "operatorName"),
            .isWalletAllowed = member<bool>(in, "isWalletAllowed").value_or(true),
            .latitude = coordinate.at("latitude").get<double>(),
            .longitude = coordinate.at("longitude").get<double>(),
            .type = Machine::machineType(in.at("machineType").get<int>()).value_or(Machine::MachineType::OTHER),
            .campaigns = std::move(campaigns),
            .name = member<std::string>(in, "machineName"),
            .country = member<std::string>(in, "country"),
            .city = member<std::string>(in, "city"),
            .hwSerial = member<std::string>(in, "machineSerial"),
            .supportRemoteVend = member<bool>(in, "supportRemoteVend").value_or(false),
            .multiVendCount = member<std::int64_t>(in, "multiVendCount").value_or(0),
            .machineStatus = member<int>(in, "machineStatusId") == 1,
        };
    });
}

}  // namespace

Machines decodePlainly(const std::string& reply) {
    Machines list;
    for (const auto& entry : Json::parse(reply)) list.push_back(machine(entry));
    return list;
}

}  // namespace kavio::bench
