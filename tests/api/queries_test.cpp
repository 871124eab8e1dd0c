#include "support/world.h"

#include <gmock/gmock.h>

namespace kavio::test {
namespace {

using testing::ElementsAre;

std::shared_ptr<const MachineFilter> filter(std::optional<std::string> value, std::optional<double> latitude = {},
                                            std::optional<double> longitude = {},
                                            std::optional<std::string> country = {}, std::optional<int> radius = {},
                                            std::optional<std::int64_t> operatorId = {},
                                            std::optional<std::string> hwSerial = {}, std::optional<int> limit = {}) {
    return std::make_shared<MachineFilter>(value, latitude, longitude, country, radius, operatorId, hwSerial, limit);
}

TEST(Machines, AreAskedForByTheFirstThatTheFilterHolds) {
    const std::vector<std::pair<std::shared_ptr<const MachineFilter>, const char*>> cases{
        {nullptr, R"({"isByAccount":true})"},
        {filter("12345", 1, 2, "DE", 3), R"({"limit":50,"machineId":12345})"},
        {filter("12345", {}, {}, {}, {}, 8, "S", 7), R"({"limit":7,"machineId":12345,"operatorId":8})"},
        {filter("", 1, 2, {}, {}, {}, "S/1"), R"({"hwSerial":"S/1"})"},  // an empty value counts as absent
        {filter({}, 1, 2, "DE", 3, 4, "S", 600), R"({"hwSerial":"S","limit":600})"},
        {filter({}, 1, 2, "DE", 300, 4, "", 0),
         R"({"country":"DE","distance":300,"latitude":1.0,"limit":0,"longitude":2.0,"operatorId":4})"},
        {filter({}, {}, {}, {}, {}, {}, {}, 1), R"({"isByAccount":true,"limit":1})"},
        {filter({}, 1, {}, {}, {}, {}, {}, 500), R"({"isByAccount":true,"limit":500})"},
    };
    for (const auto& [filter, body] : cases) {
        World world;
        world.kavio().getMachines(filter);
        EXPECT_THAT(world.paths(), ElementsAre("/machines/byValue"));
        EXPECT_EQ(world.sent().front().body, body);
    }
}

TEST(Queries, ThatCannotBeAskedAreRefusedAtOnce) {
    World world;
    world.kavio().getMachines(filter("abc"));
    world.kavio().getMachines(filter({}, 1, {}, {}, {}, {}, {}, 501));
    for (const auto* id : {"x1", ""}) world.kavio().getOrder(id);
    EXPECT_THAT(world.reports(),
                ElementsAre(Report{"onGetMachines", ResultType::BAD_INPUT, "{abc} is invalid machine ID or QR code"},
                            Report{"onGetMachines", ResultType::BAD_INPUT, "invalid filter"},
                            Report{"onGetOrder", ResultType::BAD_INPUT, "{x1} is invalid order ID"},
                            Report{"onGetOrder", ResultType::BAD_INPUT, "{} is invalid order ID"}));
    EXPECT_THAT(world.sent(), testing::IsEmpty());
}

TEST(Products, AreAskedForByTheMachinesUnsignedIdentifier) {
    World world;
    world.kavio().getMachineProducts(-1);
    world.answer({200, "[]"});
    world.kavio().getMachineProducts(7);
    world.answer({200, "null"});
    EXPECT_THAT(world.paths(), ElementsAre("/machines/18446744073709551615/products?", "/machines/7/products?"));
    EXPECT_THAT(world.reports(), ElementsAre(Report{"onGetMachineProducts", ResultType::SUCCESS, {}, "0"},
                                             Report{"onGetMachineProducts", ResultType::SUCCESS}));
}

TEST(Transactions, AreAskedForWithWhatTheFilterHolds) {
    const Date before{std::chrono::duration<double>(1709647629.25)};
    World world;
    world.kavio().getTransactions(nullptr);
    world.answer({200, "[]"});
    world.kavio().getTransactions(
        std::make_shared<TransactionFilter>(-5, "L 1", PaymentMethod::PaymentType::PREPAID, 9, before));
    world.answer({200, "null"});
    EXPECT_THAT(world.paths(),
                ElementsAre("/orders/activities?",
                            "/orders/activities?beforeAuTime=2024-03-05T14:07:09.250&card_id=L%201&limit=9&"
                            "machine_id=-5&paymentSource=99"));
    EXPECT_THAT(world.reports(), ElementsAre(Report{"onGetTransactions", ResultType::SUCCESS, {}, "0"},
                                             Report{"onGetTransactions", ResultType::SUCCESS}));
}

}  // namespace
}  // namespace kavio::test
