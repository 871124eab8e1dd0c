#include "models/json/json_value.h"
#include "support/sample_replies.h"
#include "support/world.h"

#include <gmock/gmock.h>

#include <limits>

namespace kavio::test {
namespace {

using PaymentType = PaymentMethod::PaymentType;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(PaymentMethods, AreWhatEachOfTheTwoRepliesHolds) {
    World world;
    for (const auto& [account, prepaids] : std::vector<std::pair<Answer, Answer>>{
             {{200, replies::account}, {200, replies::prepaids}},
             {{200, "null"}, {200, replies::prepaids}},
             {{200, replies::account}, {200, "null"}},
             {{200, replies::account}, {503, "down"}},
         }) {
        world.kavio().getPaymentMethods();
        world.answer(account);
        EXPECT_TRUE(world.isBusy()) << "between the two requests";
        world.answer(prepaids);
    }
    EXPECT_THAT(world.reports(), ElementsAre(Report{"onGetPaymentMethods", ResultType::SUCCESS, {}, "4"},
                                             Report{"onGetPaymentMethods", ResultType::SUCCESS, {}, "1"},
                                             Report{"onGetPaymentMethods", ResultType::SUCCESS, {}, "3"},
                                             Report{"onGetPaymentMethods", ResultType::SERVER_ERROR, "down"}));
}

TEST(CreditCard, IsAddedUnderANewKeyEachTime) {
    World world;
    const auto card = std::make_shared<Card>(
        Card{.pan = "4111", .month = "12", .year = "2030", .cvv = "123", .email = "a@b.example"});
    for (int i = 0; i < 2; ++i) {
        world.kavio().addCreditCard(card);
        world.answer({200, "null"});
    }
    const auto body = [&](std::size_t index) { return JsonValue::parse(world.sent().at(index).body.value()); };
    EXPECT_EQ(body(0)["paymentCard"], JsonValue::parse(R"({"number":"4111","year":"2030","month":"12",
        "securityCode":"123","email":"a@b.example"})"));
    EXPECT_NE(body(0)["key"], body(1)["key"]);
}

TEST(Deposit, SendsTheAmountInTheSmallestUnit) {
    for (const auto& [amount, digits, sent] : std::vector<std::tuple<double, std::int64_t, std::int64_t>>{
             {10.9, 0, 10},
             {0.5, 1, 5},
             {19.99, 2, 1998},  // 19.99 * 10 * 10 falls just short of 1999
             {-19.99, 2, -1998},
             {10, 3, 10000},
             {7, -3, 7},
             {0, 1000000000000, 0},
             {1e-300, 310, 9999999999},
             {-9223372036854775808.0, 0, std::numeric_limits<std::int64_t>::min()},
         }) {
        SCOPED_TRACE(testing::Message() << amount << " with " << digits << " digits");
        World world;
        world.kavio().deposit(std::make_shared<DepositCard>("0", "501", PaymentType::KAVIO, 0, "EUR", digits), amount,
                              "L1");
        ASSERT_THAT(world.paths(), ElementsAre("/deposits/"));
        const auto body = JsonValue::parse(world.sent().front().body.value());
        EXPECT_EQ(body, JsonValue({{"paymentCardLocator", {{"locator", "L1"}}},
                                   {"currency", "EUR"},
                                   {"amount", sent},
                                   {"autoTopup", false}}));
    }
}

TEST(Deposit, IsRefusedAtOnceWhereNothingCanBeSent) {
    const std::vector<std::tuple<std::optional<PaymentType>, double, const char*>> cases{
        {PaymentType::CREDIT_CARD, 1, "cannot deposit to CREDIT_CARD card"},
        {std::nullopt, 1, "cannot deposit to UNKNOWN card"},
        {PaymentType::CREDIT_CARD, std::nan(""), "invalid amount"},
        {PaymentType::KAVIO, std::numeric_limits<double>::infinity(), "invalid amount"},
        {PaymentType::KAVIO, -1e300, "invalid amount"},
        {PaymentType::PREPAID, 92233720368547758.08, "invalid amount"},  // 2^63 cents
    };
    for (const auto& [type, amount, message] : cases) {
        World world;
        world.kavio().deposit(type ? std::make_shared<DepositCard>("0", "501", *type, 0, "EUR", 2) : nullptr, amount,
                              "L1");
        EXPECT_THAT(world.reports(), ElementsAre(Report{"onDeposit", ResultType::BAD_INPUT, message}));
        EXPECT_THAT(world.sent(), IsEmpty());
    }
}

}  // namespace
}  // namespace kavio::test
