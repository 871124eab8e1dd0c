#include "wallet_process.h"

#include <gmock/gmock.h>

namespace kavio::test {

using namespace ::testing;

using WalletFlows = WalletTest;

namespace {

const std::string addCard =
    R"(addCreditCard card={"pan":"4111111111111111","month":"12","year":"2039","cvv":"123","email":"a@b.example"})";
const std::string getMachines = R"(getMachines filter={"latitude":52.5219,"longitude":13.4132,"limit":3})";

Words membersOf(const Json& object) {
    Words members;
    for (const auto& [name, value] : object.items()) members.push_back(name);
    return members;
}

}  // namespace

TEST_F(WalletFlows, LogInAndLogOutAndTellFailuresOfTheService) {
    const std::string verify = R"(verify country=DE countryCode="49" phoneNumber="151234567" otp=)";
    sandbox.fault("/orders/activities", {.status = 503, .body = R"({"message":"closed for today"})"});
    sandbox.fault("/machines/*", {.drop = true, .times = -1});
    const auto run = drive({R"(login countryCode="49" phoneNumber="151234567")", verify + R"("000000")",
                            verify + R"("123456")", "isLoggedIn", "getTransactions", "getTransactions", getMachines,
                            "getOrder orderId=12a", "logout", "getPaymentMethods"});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.summary(), ElementsAre("main onLogin SUCCESS", "main onVerify BAD_INPUT", "main onVerify SUCCESS",
                                           "main onCheckIsUserLogin SUCCESS", "main onGetTransactions SERVER_ERROR",
                                           "main onGetTransactions SUCCESS", "main onGetMachines NETWORK_FAILED",
                                           "main onGetOrder BAD_INPUT", "main onLogout SUCCESS",
                                           "main onGetPaymentMethods ACCESS_DENIED"));
    const auto events = run.events();
    for (const auto& event : events) EXPECT_EQ(event.at("onMainThread"), true);
    EXPECT_EQ(events[4].at("result").at("message"), "closed for today");
    EXPECT_EQ(events[4].at("transactions"), nullptr);
    EXPECT_EQ(events[6].at("machines"), nullptr);
}

/// An order gets on only when the test lets it.
class WalletOrders : public WalletTest {
protected:
    static constexpr std::chrono::hours step{1};
    WalletOrders() : WalletTest(step) {}
};

TEST_F(WalletOrders, AreFollowedToTheirEndAndEachChangeIsWrittenAtOnce) {
    logIn();
    const auto machine = drive({getMachines}).events().at(0).at("machines").at(0);
    LiveWallet wallet{options("--jsonl"), LiveWallet::On::PIPE};
    const auto answer = [&] { return Json::parse(wallet.read("\n")); };
    wallet.write(line(R"(placeOrder amount=150 paymentMethod={"id":"0","number":"","type":"KAVIO"} await=3 kavioId=)" +
                      machine.at("kavioId").dump()) +
                 '\n');
    EXPECT_EQ(answer().at("order").at("status"), "CREATED");
    advanceOrders(2 * step);
    EXPECT_EQ(answer().at("order").at("status"), "AUTHORIZED");
    advanceOrders(step);
    EXPECT_EQ(answer().at("order").at("status"), "COMPLETED");

    wallet.write(line("getMachineProducts machineId=" + machine.at("id").dump()) + '\n');
    EXPECT_EQ(answer().at("result").at("type"), "SUCCESS");
}

TEST_F(WalletFlows, WriteObjectsWithAllTheirMembers) {
    logIn();
    const auto events = drive({addCard, "getPaymentMethods", getMachines}).events();
    ASSERT_THAT(events, SizeIs(3));
    EXPECT_EQ(membersOf(events[0]), words("callback card event facade onMainThread result"));
    EXPECT_EQ(events[0].at("result"),
              Json({{"type", "SUCCESS"}, {"message", nullptr}, {"debug", "\n\t{type: SUCCESS,\n\tmessage: nil}"}}));

    std::map<std::string, Words> classes;
    for (const auto& method : events[1].at("paymentMethods")) classes[method.at("class")] = membersOf(method);
    const auto members = [](const char* text) { return ElementsAreArray(words(text)); };
    EXPECT_THAT(
        classes,
        ElementsAre(Pair("CreditCard", members("brand class debug id number type")),
                    Pair("DepositCard", members("balance class currency currencyDecimalDigits debug id number type")),
                    Pair("PrepaidCard", members("balance class created currency currencyDecimalDigits debug id "
                                                "isActive isMoney number type"))));

    const auto machine = events[2].at("machines").at(0);
    EXPECT_EQ(membersOf(machine),
              words("campaigns city country debug hwSerial id isWalletAllowed kavioId latitude longitude machineStatus "
                    "multiVendCount name operatorName supportRemoteVend type"));
    EXPECT_EQ(machine.at("city"), "Berlin");
    EXPECT_THAT(machine.at("debug").get<std::string>(), StartsWith("\n\t{ref ID: "));
}

}  // namespace kavio::test
