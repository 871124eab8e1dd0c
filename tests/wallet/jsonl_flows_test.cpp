#include "wallet_process.h"

#include <gmock/gmock.h>

namespace kavio::test {

using namespace ::testing;

namespace {

const std::string card = R"({"pan":"4111111111111111","month":"12","year":"2039","cvv":"123","email":"a@b.example"})";

std::set<std::string> membersOf(const Json& object) {
    std::set<std::string> members;
    for (const auto& [name, value] : object.items()) members.insert(name);
    return members;
}

}  // namespace

using WalletFlows = WalletTest;

TEST_F(WalletFlows, LogInBuyAndLogOut) {
    const auto run = drive({
        R"({"op":"login","countryCode":"49","phoneNumber":"151234567"})",
        R"({"op":"verify","otp":"000000","country":"DE","countryCode":"49","phoneNumber":"151234567"})",
        R"({"op":"verify","otp":"123456","country":"DE","countryCode":"49","phoneNumber":"151234567"})",
        R"({"op":"isLoggedIn"})",
        R"({"op":"addCreditCard","card":)" + card + "}",
        R"({"op":"getPaymentMethods"})",
        R"({"op":"getMachines","filter":{"latitude":52.5219,"longitude":13.4132,"limit":3}})",
        R"({"op":"getTransactions"})",
        R"({"op":"getOrder","orderId":"12a"})",
        R"({"op":"logout"})",
        R"({"op":"getPaymentMethods"})",
    });
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.summary(), ElementsAre("main onLogin SUCCESS", "main onVerify BAD_INPUT", "main onVerify SUCCESS",
                                           "main onCheckIsUserLogin SUCCESS", "main onAddCreditCard SUCCESS",
                                           "main onGetPaymentMethods SUCCESS", "main onGetMachines SUCCESS",
                                           "main onGetTransactions SUCCESS", "main onGetOrder BAD_INPUT",
                                           "main onLogout SUCCESS", "main onGetPaymentMethods ACCESS_DENIED"));
    for (const auto& event : run.events()) EXPECT_EQ(event.at("onMainThread"), true);
}

/// An order gets on only when the test lets it.
class WalletOrders : public WalletTest {
protected:
    static constexpr std::chrono::hours step{1};
    WalletOrders() : WalletTest(step) {}
};

TEST_F(WalletOrders, AreFollowedToTheirEnd) {
    logIn();
    const auto machine = drive({R"({"op":"getMachines","filter":{"latitude":52.5219,"longitude":13.4132,"limit":1}})"})
                             .events()
                             .at(0)
                             .at("machines")
                             .at(0);
    LiveWallet wallet{options({"--jsonl"})};
    wallet.write(R"({"op":"placeOrder","kavioId":)" + machine.at("kavioId").dump() +
                 R"(,"amount":150,"paymentMethod":{"id":"0","number":"","type":"KAVIO"},"await":3})");
    const auto status = [&] { return Json::parse(wallet.read()).at("order").at("status").get<std::string>(); };
    EXPECT_EQ(status(), "CREATED");
    advanceOrders(2 * step);
    EXPECT_EQ(status(), "AUTHORIZED");
    advanceOrders(step);
    EXPECT_EQ(status(), "COMPLETED");

    wallet.write(R"({"op":"getMachineProducts","machineId":)" + machine.at("id").dump() + "}");
    EXPECT_EQ(Json::parse(wallet.read()).at("result").at("type"), "SUCCESS");
}

TEST_F(WalletFlows, WriteObjectsWithAllTheirMembers) {
    logIn();
    const auto run = drive({
        R"({"op":"addCreditCard","card":)" + card + "}",
        R"({"op":"getPaymentMethods"})",
        R"({"op":"getMachines","filter":{"latitude":52.5219,"longitude":13.4132,"limit":3}})",
    });
    const auto events = run.events();
    ASSERT_THAT(events, SizeIs(3));
    EXPECT_THAT(membersOf(events[0]), ElementsAre("callback", "card", "event", "facade", "onMainThread", "result"));
    EXPECT_EQ(events[0].at("result"),
              Json({{"type", "SUCCESS"}, {"message", nullptr}, {"debug", "\n\t{type: SUCCESS,\n\tmessage: nil}"}}));

    std::map<std::string, std::set<std::string>> classes;
    for (const auto& method : events[1].at("paymentMethods")) classes[method.at("class")] = membersOf(method);
    using Members = std::set<std::string>;
    EXPECT_THAT(
        classes,
        ElementsAre(Pair("CreditCard", Members{"brand", "class", "debug", "id", "number", "type"}),
                    Pair("DepositCard", Members{"balance", "class", "currency", "currencyDecimalDigits", "debug", "id",
                                                "number", "type"}),
                    Pair("PrepaidCard", Members{"balance", "class", "created", "currency", "currencyDecimalDigits",
                                                "debug", "id", "isActive", "isMoney", "number", "type"})));

    const auto machine = events[2].at("machines").at(0);
    EXPECT_THAT(membersOf(machine), Members({"id", "kavioId", "operatorName", "isWalletAllowed", "latitude",
                                             "longitude", "type", "campaigns", "name", "country", "city", "hwSerial",
                                             "supportRemoteVend", "multiVendCount", "machineStatus", "debug"}));
    EXPECT_EQ(machine.at("city"), "Berlin");
    EXPECT_THAT(machine.at("debug").get<std::string>(), StartsWith("\n\t{ref ID: "));
}

TEST_F(WalletFlows, TellFailuresOfTheService) {
    logIn();
    sandbox::Fault broken;
    broken.status = 503;
    broken.body = R"({"message":"closed for today"})";
    sandbox.fault("/account", broken);
    sandbox::Fault lost;
    lost.drop = true;
    lost.times = -1;
    sandbox.fault("/machines/*", lost);
    const auto events = drive({R"({"op":"getPaymentMethods"})", R"({"op":"getMachines"})"}).events();
    ASSERT_THAT(events, SizeIs(2));
    EXPECT_EQ(events[0].at("result").at("type"), "SERVER_ERROR");
    EXPECT_EQ(events[0].at("paymentMethods"), nullptr);
    EXPECT_EQ(events[1].at("result").at("type"), "NETWORK_FAILED");
    EXPECT_EQ(events[1].at("machines"), nullptr);
}

}  // namespace kavio::test
