#include "plain_decoder.h"

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
        images.push_back(std::make_shared<Image>(image.at("file").get<std::string>(), image.at("w").get<int>(),
                                                 image.at("h").get<int>(), image.at("wasUploaded").get<bool>(),
                                                 image.at("dpi").get<int>(), image.at("ios").get<bool>()));
    }
    const auto text = [&in](const char* key) { return member<std::string>(in, key).value_or(""); };
    return std::make_shared<LookAndFeel>(text("images_url"), text("backgroundColor"), text("textColor"),
                                         text("receiptText"), text("punchCardText"), std::move(images));
}

std::shared_ptr<const Campaign> campaign(const Json& in) {
    check<std::vector<std::int64_t>>(in, {"fullTreeOperators"});
    const auto text = [&in](const char* key) { return in.at(key).get<std::string>(); };
    const auto integer = [&in](const char* key) { return in.at(key).get<std::int64_t>(); };
    return std::make_shared<Campaign>(
        integer("campaignId"), text("campaignName"), text("campaignTitle"), text("campaignDescription"),
        integer("punched"), integer("totalPunches"), date(in, "created"), date(in, "updated"), date(in, "expiration"),
        member<std::string>(in, "imagesUrl"), integer("punchCardId"), lookAndFeel(in.at("lookAndFeel")));
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
    return std::make_shared<Machine>(
        in.at("machineId").get<std::int64_t>(), member<std::int64_t>(in, "kavioID").value_or(0),
        member<std::string>(in, "operatorName"), member<bool>(in, "isWalletAllowed").value_or(true),
        coordinate.at("latitude").get<double>(), coordinate.at("longitude").get<double>(),
        Machine::machineType(in.at("machineType").get<int>()).value_or(Machine::MachineType::OTHER),
        std::move(campaigns), member<std::string>(in, "machineName"), member<std::string>(in, "country"),
        member<std::string>(in, "city"), member<std::string>(in, "machineSerial"),
        member<bool>(in, "supportRemoteVend").value_or(false), member<std::int64_t>(in, "multiVendCount").value_or(0),
        member<int>(in, "machineStatusId") == 1);
}

}  // namespace

Machines decodePlainly(const std::string& reply) {
    Machines list;
    for (const auto& entry : Json::parse(reply)) list.push_back(machine(entry));
    return list;
}

}  // namespace kavio::bench
