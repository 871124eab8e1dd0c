#include <kavio/async.h>
#include <kavio/testing/device.h>
#include <kavio/testing/recording_delegate.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace kavio::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// "SUCCESS DONE NONE", and the status of the order, if there is one.
template <class Payload>
std::string shown(const Outcome<Payload>& outcome) {
    std::string text = std::string(name(outcome.result->type)) + ' ' + std::string(name(outcome.result->effect)) + ' ' +
                       std::string(name(outcome.result->cause));
    if constexpr (std::is_same_v<Payload, std::shared_ptr<const Order>>) {
        if (outcome.payload) text += ' ' + std::string(name(outcome.payload->status));
    }
    return text;
}

const auto balance = std::make_shared<const PaymentMethod>("0", "", PaymentMethod::PaymentType::KAVIO);

class AsyncTest : public ::testing::Test {
protected:
    AsyncTest() {
        if (!device.logIn()) throw std::logic_error("nobody can log in");
    }
    auto buy(std::stop_token stop = {}) { return wallet->placeOrder(42100107, balance, 150, {}, std::move(stop)); }
    template <class Payload>
    std::vector<std::string> heard(const Operation<Payload>& operation) {
        std::vector<std::string> all;
        for (const auto& report : operation.reports()) all.push_back(shown(report));
        return all;
    }

    Device device;
    const std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
    std::unique_ptr<AsyncKavio> wallet = std::make_unique<AsyncKavio>("key", Kavio::EnvironmentType::TEST, delegate);
};

const std::vector<std::string> orderReports{"SUCCESS DONE NONE CREATED", "SUCCESS DONE NONE AUTHORIZED",
                                            "SUCCESS DONE NONE COMPLETED"};

TEST_F(AsyncTest, TellsEveryWayAtOnceAndTheDelegate) {
    const auto operation = buy();
    std::vector<std::string> onTheWay;
    std::vector<std::string> last;
    const auto context = std::make_shared<int>(7);
    operation.onReport([&](const auto& report) { onTheWay.push_back(shown(report)); });
    operation.then([&](const auto& report) { last.push_back(shown(report)); });
    operation.then<int>(context, [&](int& given, const auto&) { last.push_back(std::to_string(given)); });
    operation.then<int>(std::make_shared<int>(8), [&](int&, const auto&) { last.push_back("nobody is there"); });
    auto future = operation.future();
    std::string waited;
    std::thread elsewhere([&] { waited = shown(future.get()); });
    device.letPass(2min);
    elsewhere.join();
    EXPECT_EQ(onTheWay, orderReports);
    EXPECT_EQ(heard(operation), orderReports);
    EXPECT_THAT(last, ElementsAre(orderReports[2], "7"));
    EXPECT_EQ(waited, orderReports[2]);
    EXPECT_EQ(delegate->reports.size(), 3U);

    // Too late is not never.
    onTheWay.clear(), last.clear();
    operation.onReport([&](const auto& report) { onTheWay.push_back(shown(report)); });
    operation.then([&](const auto& report) { last.push_back(shown(report)); });
    EXPECT_EQ(onTheWay, orderReports);
    EXPECT_THAT(last, ElementsAre(orderReports[2]));
}

TEST_F(AsyncTest, EndsWhereTheFacadeFallsSilent) {
    // Over from the start: only the first report comes, and the end a second later.
    device.service().add({.path = "/machines/*/orders", .body = R"({"id":7,"status":"completed","amount":150})"});
    device.service().add({.path = "/orders/*", .body = R"({"id":7,"status":"completed","amount":150})"});
    const auto operation = buy();
    device.letPass(10s);
    EXPECT_TRUE(operation.isOver());
    EXPECT_EQ(operation.reports().size(), 1U);
    EXPECT_FALSE(wallet->kavio().isBusy());
}

TEST_F(AsyncTest, GivesUpAPurchaseOnlyBeforeItLeaves) {
    struct Case {
        const char* name;
        bool isCut;
        std::chrono::milliseconds stopped;  // less than none: before the start
        std::vector<std::string> expected;
    };
    const std::vector<std::string> canceled{"FAILURE NONE CANCELED_BY_PERSON"};
    for (const auto& c : {Case{"before the start", false, -1ms, canceled},
                          Case{"without a network", true, 5s, canceled}, Case{"too late", false, 5s, orderReports}}) {
        SCOPED_TRACE(c.name);
        const auto before = device.service().orders().size();
        if (c.isCut) device.network().cut();
        std::stop_source stop;
        if (c.stopped < 0ms) stop.request_stop();
        const auto operation = buy(stop.get_token());
        device.letPass(std::max(c.stopped, 0ms));
        std::thread([&] { stop.request_stop(); }).join();
        device.letPass(1s);
        device.network().restore();
        device.letPass(2min);
        EXPECT_EQ(heard(operation), c.expected);
        EXPECT_EQ(device.service().orders().size() - before, c.expected == canceled ? 0U : 1U);
        EXPECT_THAT(wallet->kavio().unsettledPayments(), IsEmpty());
    }
}

TEST_F(AsyncTest, EndsWithTheWallet) {
    for (const bool isDestroyed : {false, true}) {
        SCOPED_TRACE(isDestroyed);
        wallet = std::make_unique<AsyncKavio>("key", Kavio::EnvironmentType::TEST);
        const auto operation = wallet->getPaymentMethods();
        std::vector<std::string> told;
        operation.then([&](const auto& last) { told.push_back(shown(last)); });
        isDestroyed ? wallet.reset() : wallet->release();
        EXPECT_THAT(told, ElementsAre("FAILURE UNKNOWN RELEASED"));
        device.letPass(2min);
        EXPECT_THAT(heard(operation), ElementsAre("FAILURE UNKNOWN RELEASED"));
    }
}

TEST_F(AsyncTest, LetsWhoIsToldDestroyTheWallet) {
    bool isTold = false;
    const auto operation = wallet->getPaymentMethods();
    operation.then([&](const auto&) { wallet.reset(), isTold = true; });
    device.letPass(1s);
    EXPECT_TRUE(isTold);
    EXPECT_THAT(heard(operation), ElementsAre("SUCCESS NONE NONE"));
}

Task waitFor(Operation<std::optional<PaymentMethods>> operation, bool& isResumed) {
    co_await operation;
    isResumed = true;
}

TEST_F(AsyncTest, ForgetsACoroutineThatIsGone) {
    bool isResumed = false;
    { const auto task = waitFor(wallet->getPaymentMethods(), isResumed); }
    device.letPass(1s);
    EXPECT_FALSE(isResumed);
    EXPECT_EQ(delegate->reports.size(), 1U);
}

TEST_F(AsyncTest, SettlesADeposit) {
    const auto wallets = std::make_shared<const DepositCard>("0", "", PaymentMethod::PaymentType::KAVIO, 0, "EUR", 2);
    const auto methods = wallet->getPaymentMethods();
    device.letPass(1s);
    device.network().next(fate::replyLost());
    const auto deposited = wallet->deposit(wallets, 5, methods.reports().back().payload->at(1)->id);
    device.letPass(5min);
    EXPECT_THAT(heard(deposited), ElementsAre("NETWORK_FAILED UNKNOWN CONNECTION_LOST"));
    const auto settled = wallet->settlePayment(wallet->kavio().unsettledPayments().at(0).id);
    device.letPass(2min);
    EXPECT_THAT(heard(settled), ElementsAre("SUCCESS DONE NONE"));
    EXPECT_EQ(settled.reports().back().payload.order, nullptr);
    EXPECT_TRUE(settled.reports().back().payload.balance);
    EXPECT_THAT(wallet->kavio().unsettledPayments(), IsEmpty());
}

}  // namespace
}  // namespace kavio::test
