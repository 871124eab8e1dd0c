#include "service.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kavio::sandbox {
namespace {

constexpr std::int64_t mostMachines = 500;

/// Metres along the surface of the Earth.
double distanceBetween(double latitude1, double longitude1, double latitude2, double longitude2) {
    constexpr double earthRadius = 6'371'000, radian = std::numbers::pi / 180;
    const double north = std::sin((latitude2 - latitude1) * radian / 2);
    const double east = std::sin((longitude2 - longitude1) * radian / 2);
    const double h = north * north + std::cos(latitude1 * radian) * std::cos(latitude2 * radian) * east * east;
    return 2 * earthRadius * std::asin(std::sqrt(h));
}

/// In a scanned text, the machine's number follows the last "/" and may be followed by a query.
std::int64_t scannedNumber(std::string_view text) {
    text = text.substr(0, text.find('?'));
    return numberFrom(text.substr(text.rfind('/') + 1));
}

bool hadOrder(const Account& account, const Machine& machine) {
    return std::any_of(account.orders.begin(), account.orders.end(),
                       [&](const Order& order) { return order.machine == &machine; });
}

bool isWanted(const Machine& machine, const nlohmann::json& in, const Account& account) {
    const auto differs = [&](const char* name, const auto& value) { return in.contains(name) && in[name] != value; };
    if (differs("machineId", machine.id) || differs("kavioMachineId", machine.kavioId) ||
        differs("machineType", machine.type) || differs("country", machine.city->country.code) ||
        differs("operatorId", machine.owner->id) || differs("uni_qr_number", std::to_string(machine.qrNumber)))
        return false;
    // A link without a serial number arrives as a search for an empty one.
    if (!in.value("hwSerial", "").empty() && in["hwSerial"] != machine.serial) return false;
    if (in.contains("uni_qr_scan") && scannedNumber(in["uni_qr_scan"].get<std::string>()) != machine.kavioId)
        return false;
    if (in.value("isByAccount", false) && account.machineIds.count(machine.id) == 0) return false;
    return !in.value("hadOrder", false) || hadOrder(account, machine);
}

nlohmann::json campaignReply(const Campaign& campaign, const Account& account) {
    const auto bought = std::count_if(account.orders.begin(), account.orders.end(), [&](const Order& order) {
        return order.settled && order.machine != nullptr && order.machine->owner->campaign == &campaign;
    });
    nlohmann::json reply{{"campaignId", campaign.id},
                         {"campaignName", fmt::format("campaign-{}", campaign.id)},
                         {"campaignTitle", campaign.title},
                         {"campaignDescription", campaign.description},
                         {"punched", bought % campaign.totalPunches},
                         {"totalPunches", campaign.totalPunches},
                         {"created", "2024-01-01T00:00:00.000"},
                         {"expiration", "2034-12-31T23:59:59.000"},
                         {"updated", "2024-02-01T08:00:00.000"},
                         {"imagesUrl", "https://images.kavio.example/"},
                         {"fullTreeOperators", {9000, 9001}},
                         {"punchCardId", 10 * campaign.id},
                         {"lookAndFeel", lookAndFeelReply(campaign)}};
    // The service sends both forms; so do we.
    return campaign.id % 2 == 0 ? nlohmann::json{{"voucher", reply}} : reply;
}

nlohmann::json placeReply(const Machine& machine) {
    nlohmann::json reply{{"country", machine.city->country.code},
                         {"city", machine.city->name},
                         {"zipCode", machine.city->zip},
                         {"location", fmt::format("{}, {}", machine.name, machine.city->name)}};
    // The service sends both forms; so do we.
    nlohmann::json position{{"latitude", machine.latitude}, {"longitude", machine.longitude}};
    if (machine.kavioId % 2 == 0) {
        reply.update(position);
    } else {
        reply["coordinate"] = std::move(position);
    }
    return reply;
}

nlohmann::json machineReply(const Machine& machine, const Account& account) {
    const auto* const campaign = machine.owner->campaign;
    const bool online = machine.ending != "timedOut";
    const bool manyProducts = productsOf(machine).size() > 1;
    auto reply = placeReply(machine);
    reply.update({{"kavioID", machine.kavioId},
                  {"operatorName", machine.owner->name},
                  {"name", machine.id},
                  {"machineName", machine.name},
                  {"machineId", machine.id},
                  {"machineConnectivityStatus", online ? "online" : "offline"},
                  {"machineStatusId", online ? 1 : 2},
                  {"currency", machine.city->country.currency.code},
                  {"decimalPlace", machine.city->country.currency.decimals},
                  {"machineType", machine.type},
                  {"isRevalueOnly", false},
                  {"isFavorite", account.machineIds.count(machine.id) != 0},
                  {"fullTreeOperatorsField", {9000, machine.owner->id}},
                  {"campaigns", nlohmann::json::array()},
                  {"isWalletAllowed", online},
                  {"lastOrderDT", "2024-03-05T14:07:09.250"},
                  {"reviewsCount", 12},
                  {"reviewsAvg", 4.25},
                  {"isPulse", !manyProducts},
                  {"uniQR", machine.qrNumber},
                  {"smartStickerIdUrl", fmt::format("https://qr.kavio.example/m/{}", machine.kavioId)},
                  {"supportRemoteVend", manyProducts},
                  {"multiVendCount", manyProducts ? 3 : 1},
                  {"machineSerial", machine.serial},
                  {"extraCharge", 0.5},
                  {"extraChargeType", 0}});
    for (int stars = 1; const int count : {0, 1, 1, 4, 6}) reply[fmt::format("reviewsCount{}", stars++)] = count;
    if (campaign != nullptr) reply["campaigns"].push_back(campaignReply(*campaign, account));
    return reply;
}

void checkPosition(const nlohmann::json& in) {
    if (in.contains("latitude") != in.contains("longitude"))
        throw Refusal(400, "latitude and longitude must be given together");
    if (std::abs(in.value("latitude", 0.0)) > 90) throw Refusal(400, "latitude must be -90 to 90");
    if (std::abs(in.value("longitude", 0.0)) > 180) throw Refusal(400, "longitude must be -180 to 180");
    if (in.value("distance", std::int64_t{0}) < 0) throw Refusal(400, "distance must not be negative");
}

nlohmann::json byValue(Call& call) {
    const auto& in = call.in;
    if (in.empty()) throw Refusal(400, "there is nothing to look for");
    checkPosition(in);
    const auto limit = in.value("limit", mostMachines);
    if (limit < 1 || limit > mostMachines) throw Refusal(400, fmt::format("limit must be 1 to {}", mostMachines));

    struct Found {
        const Machine* machine;
        double distance;
    };
    std::vector<Found> found;
    for (const auto& machine : machines()) {
        if (!isWanted(machine, in, *call.account)) continue;
        const auto distance = in.contains("latitude") ? distanceBetween(in["latitude"], in["longitude"],
                                                                        machine.latitude, machine.longitude)
                                                      : 0;
        if (distance <= in.value("distance", distance)) found.push_back({&machine, distance});
    }
    std::stable_sort(found.begin(), found.end(), [](auto& a, auto& b) { return a.distance < b.distance; });
    found.resize(std::min(found.size(), std::size_t(limit)));

    auto reply = nlohmann::json::array();
    for (const auto& [machine, distance] : found) {
        reply.push_back(machineReply(*machine, *call.account));
        if (in.contains("latitude")) reply.back()["distance"] = distance;
    }
    return reply;
}

nlohmann::json productReply(const Machine& machine, const Product& product) {
    constexpr double lastSale = 700'000'000;  // seconds since 2001, as product dates are sent
    const auto row = std::int64_t(product.code - 11);
    return {{"machineProductID", machine.id * 100 + product.code},
            {"productID", 5000 + product.code},
            {"productName", product.name},
            {"groupName", product.group},
            {"cashPrice", product.price},
            {"cardPrice", product.price},
            {"exPrepaidPrice", product.price},
            {"machinePrice", product.price},
            {"preapidPrice", machine.city->country.currency.smallestUnits(product.price)},
            {"commissionValue", 0.0},
            {"paCode", fmt::format("{:02}", product.code)},
            {"opButtonCode", fmt::format("{}", product.code)},
            {"opRowCode", row / 4},
            {"opColCode", row % 4},
            {"imageURL", fmt::format("https://images.kavio.example/products/{}.png", product.code)},
            {"ageVerification", 0},
            {"productMemberType", false},
            {"codeInMap", product.code},
            {"missingProduct", 0},
            {"vendOut", row == 3},
            {"retailPrice", product.price},
            {"par", 10},
            {"missingStockByMdb", row},
            {"lastSaleDt", lastSale},
            {"slowMover", row == 3}};
}

nlohmann::json products(Call& call) {
    const auto machine = std::find_if(machines().begin(), machines().end(), [&](const Machine& candidate) {
        return std::to_string(candidate.id) == call.captured.front();
    });
    if (machine == machines().end()) throw Refusal(404, "there is no machine with this identifier");
    auto reply = nlohmann::json::array();
    for (const auto& product : productsOf(*machine)) reply.push_back(productReply(*machine, product));
    return reply;
}

}  // namespace

nlohmann::json lookAndFeelReply(const Campaign& campaign) {
    return {{"images_url", "https://images.kavio.example/"},
            {"backgroundColor", campaign.background},
            {"textColor", campaign.text},
            {"receiptText", "Thank you, see you soon"},
            {"punchCardText", campaign.title},
            {"images",
             {{{"file", "punch.png"}, {"w", 96}, {"h", 96}, {"wasUploaded", true}, {"dpi", 326}, {"ios", true}}}}};
}

Routes machineRoutes() {
    return {
        {"POST",
         "/machines/byValue",
         byValue,
         {{Kind::integer, {}, {"machineId", "kavioMachineId", "machineType", "limit", "distance", "operatorId"}},
          {Kind::number, {}, {"longitude", "latitude"}},
          {Kind::boolean, {}, {"isByAccount", "hadOrder"}},
          {Kind::text, {}, {"country", "uni_qr_scan", "uni_qr_number", "hwSerial"}}}},
        {"GET", "/machines/*/products", products},
    };
}

}  // namespace kavio::sandbox
