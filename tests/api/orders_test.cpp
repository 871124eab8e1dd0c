#include "models/json/json_value.h"
#include "support/sample_replies.h"
#include "support/world.h"

#include <gmock/gmock.h>

namespace kavio::test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using PaymentType = PaymentMethod::PaymentType;
using ProductList = std::vector<std::shared_ptr<const RemoteVendProduct>>;

std::shared_ptr<const PaymentMethod> paying(PaymentType type) {
    return std::make_shared<PaymentMethod>("id", "number", type);
}

Report placed(const std::string& order) { return {"onPlaceOrder", ResultType::SUCCESS, std::nullopt, order}; }
const Report timedOut{"onPlaceOrder", ResultType::TIMEOUT, "polling status timed out"};

void startOrder(World& world) { world.kavio().placeOrder(1234, paying(PaymentType::KAVIO), 150, {}); }

// Buys, and answers the purchase with an order of that status.
void buy(World& world, const std::string& status = "created") {
    startOrder(world);
    world.answer({200, replies::order(status)});
}

void pollOnce(World& world, const Answer& answer) {
    world.advance(milliseconds(1000));
    world.answer(answer);
}

TEST(PlaceOrder, SendsWhatTheKindOfPaymentNeeds) {
    const ProductList products{std::make_shared<RemoteVendProduct>(RemoteVendProduct{11, 2, 0}),
                               std::make_shared<RemoteVendProduct>(RemoteVendProduct{12, 1, 3})};
    const std::string entries = R"([{"productCode":11,"quantityValue":2,"pulseLineNumber":0},
                                    {"productCode":12,"quantityValue":1,"pulseLineNumber":3}])";
    for (const auto& [type, chosen, body] :
         std::vector<std::tuple<PaymentType, std::optional<ProductList>, std::string>>{
             {PaymentType::KAVIO, std::nullopt, R"({"amount":150,"products":[]})"},
             {PaymentType::KAVIO, products, R"({"amount":150,"products":)" + entries + "}"},
             {PaymentType::CREDIT_CARD, std::nullopt, R"({"tokenLocator":"id","amount":150,"products":[]})"},
             {PaymentType::PREPAID, products, R"({"prepaidCardId":"id","products":)" + entries + "}"},
         }) {
        World world;
        world.kavio().placeOrder(1234, paying(type), 150, chosen);
        ASSERT_EQ(world.sentInBackground().size(), 1U);
        const auto request = world.sentInBackground().front();
        EXPECT_EQ(request.method, "POST");
        EXPECT_EQ(request.url, "https://api-qa2.kavio.example/v1/machines/1234/orders");
        EXPECT_EQ(request.idempotency, Idempotency::ONCE);
        EXPECT_EQ(JsonValue::parse(*request.body), JsonValue::parse(body));
        EXPECT_THAT(world.sent(), IsEmpty());
    }
}

TEST(PlaceOrder, RefusesWhatCannotPay) {
    World world;
    world.kavio().placeOrder(1, nullptr, 150, {});
    world.kavio().placeOrder(1, paying(PaymentType::PAYPAL), 150, {});
    world.kavio().placeOrder(1, paying(PaymentType::KAVIO), 150, ProductList{nullptr});
    const auto refused = [](const char* why) { return Report{"onPlaceOrder", ResultType::BAD_INPUT, why}; };
    EXPECT_THAT(world.reports(),
                ElementsAre(refused("selected payment method UNKNOWN is not supported"),
                            refused("selected payment method PAYPAL is not supported"), refused("invalid product")));
    EXPECT_THAT(world.sentInBackground(), IsEmpty());
}

TEST(PlaceOrder, ReportsEachChangeOfTheStatusOnce) {
    struct Case {
        const char* name;
        std::vector<std::string> statuses;  // of the placed order, then of each poll
        std::vector<Report> reports;
    };
    for (const auto& c : std::vector<Case>{
             {"to its end",
              {"created", "started", "authorized", "Authorized", "completed"},
              {placed("77 CREATED"), placed("77 AUTHORIZED"), placed("77 COMPLETED")}},
             {"an end without a change", {"unknown", "proccessing"}, {placed("77 UNKNOWN")}},
             {"progress under other names",
              {"created", "createdPreselection", "startedpreselection", "failed"},
              {placed("77 CREATED"), placed("77 CANCELED")}},
         }) {
        SCOPED_TRACE(c.name);
        World world;
        buy(world, c.statuses.front());
        for (std::size_t i = 1; i < c.statuses.size(); ++i) {
            EXPECT_TRUE(world.isBusy());
            pollOnce(world, {200, replies::order(c.statuses[i])});
        }
        EXPECT_EQ(world.reports(), c.reports);
        EXPECT_FALSE(world.isBusy());
        EXPECT_EQ(world.device().time().waiting(Lane::MAIN), 0U) << "no further poll";
        EXPECT_EQ(world.paths().back(), "/orders/77?statusOnly=true");
    }
}

TEST(PlaceOrder, GivesUpAfterSixtyPollsASecondApart) {
    const std::vector<Answer> answers{{503, "{}"}, UrlError::timedOut, {200, replies::order("started")}};
    World world;
    buy(world);
    for (std::size_t i = 1; i <= 60; ++i) {
        const auto now = world.device().time().now();
        world.device().time().setWallClock(Date());  // the time is not taken from this clock
        world.advance(milliseconds(999));
        world.device().time().setWallClock(now + milliseconds(999));
        EXPECT_EQ(world.sent().size(), i - 1);
        world.advance(milliseconds(1));
        ASSERT_EQ(world.sent().size(), i);
        ASSERT_THAT(world.reports(), ElementsAre(placed("77 CREATED")));
        world.answer(answers[i % answers.size()]);  // a failed poll counts but does not stop the polling
    }
    EXPECT_THAT(world.reports(), ElementsAre(placed("77 CREATED"), timedOut));
    EXPECT_FALSE(world.isBusy());
    world.advance(std::chrono::hours(1));
    EXPECT_EQ(world.sent().size(), 60U);
}

TEST(PlaceOrder, ReportsAChangeThatTheLastPollBrings) {
    World world;
    buy(world);
    for (int i = 1; i < 60; ++i) pollOnce(world, {200, replies::order("created")});
    pollOnce(world, {200, replies::order("authorized")});
    EXPECT_THAT(world.reports(), ElementsAre(placed("77 CREATED"), timedOut, placed("77 AUTHORIZED")));
}

TEST(PlaceOrder, EndsWhenTheServiceGivesNoOrder) {
    World world;
    buy(world);
    pollOnce(world, {200, "null"});
    EXPECT_THAT(world.reports(), ElementsAre(placed("77 CREATED"), placed("none")));
    EXPECT_FALSE(world.isBusy());
}

TEST(PlaceOrder, GivesEveryOutcomeOfALostReplyOnce) {
    const std::string failed = "failed to send request, error: gone";
    const auto lostWith = [](std::optional<int> status) {
        return UrlError{UrlError::networkConnectionLost, "gone", status};
    };
    for (const auto& [name, error, type, message] :
         std::vector<std::tuple<const char*, UrlError, ResultType, std::optional<std::string>>>{
             {"before a reply", lostWith({}), ResultType::NETWORK_FAILED, failed},
             {"inside a reply", lostWith(200), ResultType::FAILURE, std::nullopt},
             {"inside a refusal", lostWith(401), ResultType::ACCESS_DENIED, "Your session token is expaired"},
             {"inside a server error", lostWith(503), ResultType::SERVER_ERROR, std::nullopt},
         }) {
        SCOPED_TRACE(name);
        World world;
        startOrder(world);
        world.device().network().fail(error);
        world.run();
        EXPECT_THAT(world.reports(), ElementsAre(Report{"onPlaceOrder", type, message}));
        EXPECT_FALSE(world.isBusy());
    }
}

// Between any two steps, and inside each report.
TEST(PlaceOrder, IsSilentFromTheStepAtWhichTheApplicationLetsGo) {
    for (const auto lose : losses) {
        for (std::size_t step = 0, steps = 1; step < steps; ++step) {
            SCOPED_TRACE(step);
            World world;
            std::size_t now = 0;
            std::size_t heard = 0;
            std::optional<std::size_t> heardBefore;
            const auto maybeLose = [&] {
                if (now++ != step) return;
                heardBefore = heard;
                lose(world);
            };
            world.delegate().onReport = [&](const Report&) { ++heard, maybeLose(); };
            startOrder(world);
            maybeLose();
            world.answer({200, replies::order("created")});
            for (const auto* status : {"created", "authorized", "completed"}) {
                maybeLose();
                world.advance(milliseconds(1000));
                maybeLose();
                if (world.device().network().open(Network::Session::ORDINARY) > 0)
                    world.answer({200, replies::order(status)});
            }
            maybeLose();
            world.advance(std::chrono::minutes(2));
            EXPECT_EQ(heard, heardBefore);
            steps = std::max(steps, now);
        }
    }
}

TEST(GetOrder, AsksForDecimalIntegersOnly) {
    for (const auto& [id, isSent] : std::map<std::string, bool>{{"-5", true},
                                                                {"+007", true},
                                                                {"9223372036854775807", true},
                                                                {"9223372036854775808", false},
                                                                {"+-5", false},
                                                                {" 5", false},
                                                                {"", false},
                                                                {"\u0665", false}}) {
        World world;
        world.kavio().getOrder(id);
        EXPECT_EQ(world.paths(),
                  isSent ? std::vector{"/orders/" + id + "?statusOnly=false"} : std::vector<std::string>{});
    }
}

}  // namespace
}  // namespace kavio::test
