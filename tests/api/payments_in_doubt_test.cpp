#include "models/json/json_value.h"
#include "storage/payment_journal.h"
#include "support/sample_replies.h"
#include "support/world.h"

#include <gmock/gmock.h>

#include <chrono>

namespace kavio::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;
using PaymentType = PaymentMethod::PaymentType;

using Start = void (*)(World&);

void buy(World& world) {
    const auto card = std::make_shared<PaymentMethod>("L1", "**11", PaymentType::CREDIT_CARD);
    world.kavio().placeOrder(1234, card, 150, {});
}

void topUp(World& world) {
    const auto wallet = std::make_shared<DepositCard>("0", "501", PaymentType::KAVIO, 0, "EUR", 2);
    world.kavio().deposit(wallet, 12.5, "L1");
}

std::vector<UnsettledPayment> unsettled(World& world) { return world.kavio().unsettledPayments(); }

TEST(Results, TellOfEveryAnswerWhatHappenedAndWhy) {
    struct Operation {
        const char* name;
        Start start;
        std::string good;
        bool changes = true;
    };
    const std::vector<Operation> operations{
        {"purchase", buy, replies::order("completed")},
        {"deposit", topUp, R"({"deposit":{"balance":5}})"},
        {"login", [](World& w) { w.kavio().login("49", "501"); }, replies::challenge},
        {"logout", [](World& w) { w.kavio().logout(); }, replies::ok},
        {"add a card",
         [](World& w) {
             w.kavio().addCreditCard(std::make_shared<Card>(Card{"4", "1", "2030", "1", "a@b"}));
         },
         "null"},
        {"remove a card", [](World& w) { w.kavio().removeCard("L1"); }, replies::ok},
        {"a question", [](World& w) { w.kavio().getOrder("77"); }, replies::order("completed"), false},
    };
    struct Case {
        Answer answer;
        const char* outcome;
    };
    const std::vector<Case> cases{
        {{400, "{}"}, "NONE REFUSED_BY_SERVICE"},
        {{401, "{}"}, "NONE SESSION_REFUSED"},
        {{404, "{}"}, "NONE REFUSED_BY_SERVICE"},
        {{406, "{}"}, "NONE SESSION_REFUSED"},
        {{417, "{}"}, "NONE SIGNATURE_REFUSED"},
        {{426, "{}"}, "NONE UPDATE_REQUIRED"},
        {{204, ""}, "UNKNOWN SERVICE_FAILED"},
        {{302, ""}, "UNKNOWN SERVICE_FAILED"},
        {{503, "{}"}, "UNKNOWN SERVICE_FAILED"},
        {{200, "{"}, "UNKNOWN UNREADABLE_REPLY"},
        {{UrlError::notConnectedToInternet}, "NONE NO_NETWORK"},
        {{UrlError::cannotFindHost}, "NONE CONNECTION_FAILED"},
        {{UrlError::cannotConnectToHost}, "NONE CONNECTION_FAILED"},
        {{UrlError::secureConnectionFailed}, "NONE UNTRUSTED_SERVICE"},
        {{UrlError::serverCertificateUntrusted}, "NONE UNTRUSTED_SERVICE"},
        {{UrlError::networkConnectionLost}, "UNKNOWN CONNECTION_LOST"},
        {{UrlError::timedOut}, "UNKNOWN TIMED_OUT"},
        {{UrlError::dataLengthExceedsMaximum}, "UNKNOWN UNREADABLE_REPLY"},
    };
    for (const auto& operation : operations) {
        const auto expected = [&](std::string outcome) {
            if (!operation.changes) outcome.replace(0, outcome.find(' '), "NONE");
            return outcome;
        };
        for (const auto& c : cases) {
            SCOPED_TRACE(operation.name + std::string(", ") + c.outcome);
            World world;
            operation.start(world);
            world.answer(c.answer);
            EXPECT_THAT(world.outcomes(), ElementsAre(expected(c.outcome)));
            // A payment is in doubt for exactly as long as its effect is.
            const bool isPayment = operation.start == buy || operation.start == topUp;
            const bool isInDoubt = isPayment && expected(c.outcome).starts_with("UNKNOWN");
            EXPECT_THAT(unsettled(world), SizeIs(isInDoubt ? 1 : 0));
        }
        SCOPED_TRACE(operation.name);
        World world;
        operation.start(world);
        world.kavio().isLoggedIn();
        world.answer({200, operation.good});
        EXPECT_THAT(world.outcomes(), ElementsAre("NONE BUSY", expected("DONE NONE")));
        EXPECT_THAT(unsettled(world), IsEmpty());
    }
}

TEST(Results, OfAFollowedOrderAreDone) {
    for (const int status : {503, 401}) {
        World world;
        buy(world);
        world.answer({200, replies::order("created")});
        for (int i = 0; i < 60; ++i) {
            world.advance(seconds(1));
            world.answer({status, "{}"});
        }
        EXPECT_THAT(world.outcomes(),
                    ElementsAre("DONE NONE", status == 401 ? "DONE SESSION_REFUSED" : "DONE FOLLOWING_TIMED_OUT"));
    }
}

TEST(PaymentsInDoubt, AreWrittenDownBeforeTheyLeaveAndOutliveTheProgram) {
    World world;
    buy(world);
    ASSERT_THAT(unsettled(world), SizeIs(1)) << "before any byte has left";
    world.restart();
    world.advance(seconds(1));
    topUp(world);
    world.restart();
    const auto left = unsettled(world);
    ASSERT_THAT(left, SizeIs(2));
    EXPECT_EQ(left[0].kind, UnsettledPayment::Kind::ORDER);
    EXPECT_EQ(left[0].startedAt, world.device().time().now() - seconds(1));
    EXPECT_THAT(left[0].kavioId, testing::Optional(1234));
    EXPECT_EQ(left[0].amount, 150);
    EXPECT_EQ(left[0].paymentMethodId, "L1");
    EXPECT_EQ(left[0].paymentType, PaymentType::CREDIT_CARD);
    EXPECT_EQ(left[1].kind, UnsettledPayment::Kind::DEPOSIT);
    EXPECT_EQ(left[1].amount, 1250);
    EXPECT_EQ(left[1].chargedCardId, "L1");

    EXPECT_TRUE(world.kavio().forgetPayment(left[0].id));
    EXPECT_FALSE(world.kavio().forgetPayment(left[0].id));
    EXPECT_THAT(unsettled(world), SizeIs(1));
}

TEST(PaymentsInDoubt, KnowTheirOrderOnceItIsToldAndEndWithIt) {
    World world;
    buy(world);
    world.answer({200, replies::order("created")});
    world.restart();
    ASSERT_THAT(unsettled(world), SizeIs(1));
    EXPECT_EQ(unsettled(world).front().orderId, "77");
    EXPECT_EQ(unsettled(world).front().status, Order::Status::CREATED);

    world.kavio().getOrder("77");  // no matter which operation asks
    world.answer({200, replies::order("completed")});
    EXPECT_THAT(unsettled(world), IsEmpty());
}

TEST(PaymentsInDoubt, AreNotMadeWhereTheyCannotBeWrittenDown) {
    for (const Start start : {buy, topUp}) {
        World world;
        world.device().stores().refuseWrites();
        start(world);
        world.run();
        EXPECT_THAT(world.outcomes(), ElementsAre("NONE STORE_FAILED"));
        EXPECT_THAT(world.sent(), IsEmpty());
        EXPECT_THAT(world.sentInBackground(), IsEmpty());
        EXPECT_FALSE(world.isBusy());
        EXPECT_THAT(unsettled(world), IsEmpty());
    }
}

TEST(PaymentsInDoubt, AreAHundredAtMostAndNoneInDoubtGoesByItself) {
    World world;
    buy(world);
    world.answer({200, replies::order("created", "1")});
    world.restart();
    for (int i = 0; i < 99; ++i) {
        world.advance(seconds(1));
        topUp(world);
        world.answer({UrlError::timedOut});
    }
    EXPECT_EQ(unsettled(world).size(), 100U);
    topUp(world);
    world.answer({UrlError::timedOut});
    EXPECT_EQ(unsettled(world).front().kind, UnsettledPayment::Kind::DEPOSIT) << "the order is no longer in doubt";
    topUp(world);
    world.run();
    EXPECT_EQ(world.outcomes().back(), "NONE STORE_FAILED");
    EXPECT_EQ(unsettled(world).size(), 100U);
}

TEST(GivenUp, APurchaseThatHasNotLeftIsNeverSent) {
    for (const Loss loss : {losses[0], losses[2]}) {
        for (const bool hasLeft : {false, true}) {
            World world;
            buy(world);
            if (hasLeft) {
                ASSERT_TRUE(world.device().network().leave());
            }
            loss(world);
            EXPECT_EQ(world.device().network().leave(), hasLeft);
            world.answer({200, replies::order("created")});
            world.makeFacade();
            EXPECT_THAT(unsettled(world), SizeIs(hasLeft ? 1 : 0)) << "what has left goes on, and is written down";
        }
    }
}

TEST(GivenUp, APurchaseIsEvenAfterALateReplyToAnEarlierOne) {
    World world;
    buy(world);
    ASSERT_TRUE(world.device().network().leave());
    losses[2](world);
    buy(world);
    world.answer({200, replies::order("created")});
    world.destroyFacade();
    EXPECT_FALSE(world.device().network().leave());
}

TEST(GivenUp, APurchaseThatWaitsForTheTimeIsNeverSent) {
    World world;
    world.store().remove(keys::serverExpiredTime);
    buy(world);
    world.destroyFacade();
    world.answer({200, replies::time("2024")});
    EXPECT_THAT(world.sentInBackground(), IsEmpty());
    world.makeFacade();
    EXPECT_THAT(unsettled(world), IsEmpty());
}

/// A transaction like that of `buy`, one second after it was written down.
JsonObject transaction(const JsonObject& changes = {}) {
    JsonObject activity{{"orderId", 501},
                        {"created", "2024-01-01T00:00:01.000"},
                        {"amount", 150},
                        {"orderStatusName", "completed"},
                        {"paymentSourceName", "ecommerce"},
                        {"orderType", 1},
                        {"startingBalance", 0},
                        {"endingBalance", 7},
                        {"bonus", 0},
                        {"gameWin", 0},
                        {"autoTopup", false},
                        {"locator", "L1"},
                        {"currency", "EUR"}};
    for (const auto& [key, value] : changes) activity[key] = value;
    return activity;
}

const JsonObject before{{"orderId", 400}, {"created", "2023-12-31T00:00:00.000"}, {"amount", 1}};

std::string orderAt(std::int64_t machine, const std::string& status, const std::string& id = "501") {
    auto order = JsonValue::parse(replies::order(status, id));
    order["order"]["externalId"] = machine;
    return order.dump();
}

/// Settles the oldest payment in doubt by these transactions.
void settle(World& world, const std::vector<JsonObject>& transactions) {
    world.kavio().settlePayment(unsettled(world).front().id);
    world.answer({200, JsonValue(transactions).dump()});
}

TEST(Settling, FindsThePurchaseThatFitsOrSaysThatNoneWasMade) {
    struct Case {
        const char* name;
        std::vector<JsonObject> transactions;  // since the purchase
        std::vector<std::string> orders;       // replies to requests for a candidate's machine and state
        seconds later;
        std::string outcome;
        bool hasBoughtBefore = false;
    };
    const seconds soon{30};
    const seconds late{600};
    const std::string made = "DONE NONE";
    const std::string notMade = "NONE NOT_MADE";
    const std::string notCertain = "UNKNOWN NOT_CERTAIN";
    const auto ours = orderAt(1234, "completed");
    const auto elsewhere = orderAt(99, "completed");
    const auto anywhere = replies::order("completed", "501");
    const auto another = replies::order("completed", "502");
    const auto but = [](const char* member, const JsonValue& value) { return transaction({{member, value}}); };
    const std::vector<JsonObject> others{transaction({{"orderId", 502}, {"locator", "L2"}}), but("amount", 151),
                                         transaction({{"orderId", 503}, {"orderType", 3}}),
                                         transaction({{"orderId", 504}, {"created", "2023-12-31T23:58:00.000"}})};
    for (const auto& c : std::vector<Case>{
             {"it is the one", {transaction()}, {ours, ours}, soon, made},
             {"none was made", {}, {}, late, notMade},
             {"it may still arrive", {}, {}, soon, notCertain},
             {"another machine's", {transaction()}, {elsewhere}, late, notCertain},
             {"another machine's, of a service that names them", {transaction()}, {elsewhere}, late, notMade, true},
             {"later than it can have arrived", {but("created", "2024-01-01T00:05:00.000")}, {}, late, notMade},
             {"a kind that is not known", {but("orderType", 0)}, {}, late, notCertain},
             {"an unnamed machine's", {transaction()}, {anywhere}, late, notCertain},
             {"another amount, card, time, kind", others, {}, late, notMade},
             {"a card that is not named", {but("locator", nullptr)}, {}, late, notCertain},
             {"a time that cannot be read", {but("created", "yesterday")}, {}, late, notCertain},
             {"two fit", {transaction(), but("orderId", 502)}, {another, ours}, late, notCertain},
         }) {
        SCOPED_TRACE(c.name);
        World world;
        if (c.hasBoughtBefore) {
            buy(world);
            world.answer({200, orderAt(1234, "completed", "300")});
            world.restart();
        }
        buy(world);
        world.restart();
        world.advance(c.later);
        auto transactions = c.transactions;
        transactions.push_back(transaction(before));
        settle(world, transactions);
        for (const auto& order : c.orders) world.answer({200, order});
        EXPECT_THAT(world.outcomes(), ElementsAre(c.outcome));
        EXPECT_THAT(unsettled(world), SizeIs(c.outcome == notCertain ? 1 : 0));
        EXPECT_FALSE(world.isBusy());
        EXPECT_THAT(world.sentInBackground(), SizeIs(c.hasBoughtBefore ? 2 : 1)) << "settling never pays";
    }
}

TEST(Settling, ReadsTheTransactionsBackToThePurchase) {
    World world;
    buy(world);
    world.restart();
    world.advance(std::chrono::hours(1));
    // A service that returns fewer than were asked for has not said that there are no others.
    settle(world, {transaction({{"orderId", 600}, {"created", "2024-01-01T00:50:00.000"}, {"amount", 5}})});
    EXPECT_EQ(world.paths().back(), "/orders/activities?beforeAuTime=2024-01-01T00:50:00.001&limit=100");
    world.answer({200, "[]"});
    EXPECT_THAT(world.outcomes(), ElementsAre("NONE NOT_MADE"));
}

// The order of a list, the clock and the wait for a network decide what may be concluded.
TEST(Settling, SaysThatNoneWasMadeOnlyWhenThatIsCertain) {
    const auto settleFirst = [](World& world) {
        settle(world, {transaction(before)});
        return world.outcomes().back();
    };
    {
        World world;  // the device's clock stands in for the service's, which does not answer
        world.store().remove(keys::serverExpiredTime);
        buy(world);
        world.answer({UrlError::timedOut});
        world.restart();
        world.advance(std::chrono::hours(1));
        world.kavio().settlePayment(unsettled(world).front().id);
        world.answer({200, replies::time("2024")});
        world.answer({200, "[]"});
        EXPECT_EQ(world.outcomes().back(), "UNKNOWN NOT_CERTAIN");
    }
    {
        World world;  // it waited for the network, and may have left just before the program was killed
        buy(world);
        world.device().network().requests(Network::Session::BACKGROUND).front().willWait();
        world.restart();
        world.advance(std::chrono::hours(1));
        EXPECT_EQ(settleFirst(world), "UNKNOWN NOT_CERTAIN");
        world.advance(std::chrono::minutes(3));
        EXPECT_EQ(settleFirst(world), "NONE NOT_MADE");
    }
    {
        World world;  // it ended late
        buy(world);
        world.advance(std::chrono::minutes(4));
        world.answer({UrlError::timedOut});
        EXPECT_EQ(settleFirst(world), "UNKNOWN NOT_CERTAIN");
        world.advance(std::chrono::minutes(2));
        EXPECT_EQ(settleFirst(world), "NONE NOT_MADE");
    }
    {
        World world;  // oldest first
        buy(world);
        world.restart();
        world.advance(std::chrono::hours(1));
        settle(world, {transaction(before), transaction({{"amount", 5}})});
        EXPECT_TRUE(world.isBusy()) << "asks on";
        world.answer({200, "[]"});
        EXPECT_EQ(world.outcomes().back(), "NONE NOT_MADE");
    }
}

// A purchase that was made must not be taken for one that was not, whatever the device's clock says by then.
TEST(Settling, FindsAPurchaseDuringWhichSomebodySetTheClock) {
    for (const auto jump : {-std::chrono::minutes(75), -std::chrono::minutes(4), std::chrono::minutes(4)}) {
        World world;
        buy(world);
        ASSERT_TRUE(world.device().network().leave());
        world.device().time().setWallClock(world.device().time().now() + jump);
        world.advance(std::chrono::minutes(1));
        world.answer({UrlError::timedOut});
        world.advance(std::chrono::minutes(5));
        world.kavio().settlePayment(unsettled(world).front().id);
        world.answer(
            {200, R"({"serverTime":"2024-01-01T00:06:00.000+0000","expireTime":"2024-01-01T01:06:00.000+0000"})"});
        world.answer({200, JsonValue(std::vector{transaction(), transaction(before)}).dump()});
        for (int i = 0; i < 2; ++i) world.answer({200, orderAt(1234, "completed")});
        EXPECT_EQ(world.outcomes().back(), "DONE NONE");
    }
}

TEST(Settling, FollowsAnOrderThatIsNotOver) {
    World world;
    buy(world);
    world.answer({200, replies::order("created")});
    world.restart();
    const auto id = unsettled(world).front().id;
    world.kavio().settlePayment(id);
    world.answer({503, "{}"});
    world.kavio().settlePayment(id);
    world.answer({200, replies::order("started")});
    EXPECT_TRUE(world.isBusy());
    world.advance(seconds(1));
    world.answer({200, replies::order("completed")});
    EXPECT_THAT(world.reports(),
                ElementsAre(Report{"onPlaceOrder", ResultType::SERVER_ERROR, "{}"},
                            Report{"onPlaceOrder", ResultType::SUCCESS, std::nullopt, "77 CREATED"},
                            Report{"onPlaceOrder", ResultType::SUCCESS, std::nullopt, "77 COMPLETED"}));
    EXPECT_THAT(world.outcomes(), ElementsAre("DONE SERVICE_FAILED", "DONE NONE", "DONE NONE"));
    EXPECT_THAT(unsettled(world), IsEmpty());
}

TEST(Settling, NeverTakesTheOrderOfAnotherPayment) {
    World world;
    buy(world);
    world.restart();
    buy(world);  // again, and this one is answered
    world.answer({200, orderAt(1234, "completed")});
    world.restart();
    world.advance(std::chrono::minutes(10));
    settle(world, {transaction(), transaction(before)});
    EXPECT_THAT(world.outcomes(), ElementsAre("NONE NOT_MADE"));
}

TEST(Settling, LeavesAnOrderToTheProgramThatMayBeMakingIt) {
    World world;
    buy(world);
    world.answer({UrlError::timedOut});
    world.advance(seconds(1));
    buy(world);
    world.restart();  // and for all this program knows, another one waits for the answer
    const auto settleFirst = [&] {
        settle(world, {transaction(), transaction(before)});
        if (world.isBusy()) world.answer({200, orderAt(1234, "completed")});
        if (world.isBusy()) world.answer({200, orderAt(1234, "completed")});
        return world.outcomes().back();
    };
    EXPECT_EQ(settleFirst(), "UNKNOWN NOT_CERTAIN");
    world.advance(std::chrono::minutes(14));
    EXPECT_EQ(settleFirst(), "DONE NONE");
}

TEST(Settling, FindsADeposit) {
    World world;
    topUp(world);
    world.restart();
    const auto made = transaction({{"orderType", 3}, {"amount", 1250}});
    const auto refused =
        transaction({{"orderId", 502}, {"orderType", 3}, {"amount", 1250}, {"orderStatusName", "refused"}});
    settle(world, {refused, made, transaction(before)});
    EXPECT_THAT(world.reports(), ElementsAre(Report{"onDeposit", ResultType::SUCCESS, std::nullopt, "7"}));
    EXPECT_THAT(unsettled(world), IsEmpty());
}

TEST(Settling, WaitsForThePaymentThatIsUnderWayAndForItsOwnSession) {
    World world;
    topUp(world);
    Kavio other(std::weak_ptr<KavioDelegate>(world.delegate().weak_from_this()), "key", Kavio::EnvironmentType::TEST);
    other.settlePayment(unsettled(world).front().id);
    EXPECT_EQ(world.reports().back(), (Report{"onDeposit", ResultType::FAILURE, "the payment is still under way"}));

    world.restart(Kavio::EnvironmentType::PROD);
    world.kavio().settlePayment(unsettled(world).front().id);
    EXPECT_EQ(world.reports().back(),
              (Report{"onDeposit", ResultType::FAILURE, "the payment belongs to another session"}));
    EXPECT_EQ(world.outcomes().back(), "UNKNOWN NOT_CERTAIN");
}

}  // namespace
}  // namespace kavio::test
