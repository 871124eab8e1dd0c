#include "support/world.h"

#include <gmock/gmock.h>

namespace kavio::test {
namespace {

using testing::ElementsAre;

TEST(Machines, AreAskedForByTheFirstThatTheFilterHolds) {
    struct Case {
        std::optional<MachineFilter> filter;
        const char* body;  // null if the filter is refused
    };
    for (const auto& [filter, body] : std::initializer_list<Case>{
             {{}, R"({"isByAccount":true})"},
             {{{.value = "12345", .latitude = 1, .longitude = 2, .country = "DE", .radius = 3}},
              R"({"limit":50,"machineId":12345})"},
             {{{.value = "12345", .operatorId = 8, .hwSerial = "S", .limit = 7}},
              R"({"limit":7,"machineId":12345,"operatorId":8})"},
             {{{.value = "", .latitude = 1, .longitude = 2, .hwSerial = "S/1"}}, R"({"hwSerial":"S/1"})"},
             {{{.latitude = 1, .longitude = 2, .country = "DE", .operatorId = 4, .hwSerial = "S", .limit = 600}},
              R"({"hwSerial":"S","limit":600})"},
             {{{.latitude = 1, .longitude = 2, .country = "DE", .radius = 300, .operatorId = 4, .limit = 0}},
              R"({"country":"DE","distance":300,"latitude":1.0,"limit":0,"longitude":2.0,"operatorId":4})"},
             {{{.limit = 1}}, R"({"isByAccount":true,"limit":1})"},
             {{{.latitude = 1, .limit = 500}}, R"({"isByAccount":true,"limit":500})"},
             {{{.latitude = 1, .limit = 501}}, nullptr},
         }) {
        World world;
        world.kavio().getMachines(filter ? std::make_shared<MachineFilter>(*filter) : nullptr);
        ASSERT_EQ(world.sent().size(), body ? 1U : 0U);
        if (!body) continue;
        EXPECT_EQ(world.paths().front(), "/machines/byValue");
        EXPECT_EQ(world.sent().front().body, body);
    }
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
        std::make_shared<TransactionFilter>(TransactionFilter{.machineId = -5,
                                                              .paymentMethodId = "L 1",
                                                              .paymentType = PaymentMethod::PaymentType::PREPAID,
                                                              .limit = 9,
                                                              .transactionsBefore = before}));
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
