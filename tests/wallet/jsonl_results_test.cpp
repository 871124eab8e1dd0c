#include "wallet_process.h"

#include <gmock/gmock.h>

namespace kavio::test {
namespace {

using namespace ::testing;

// An operation, and the request that decides its outcome.
struct Operation {
    const char* callback;
    const char* line;
    const char* path;
    bool changesSomething = true;
};

const std::vector<Operation> operations{
    {"onLogin", R"({"op":"login","countryCode":"49","phoneNumber":"151234567"})", "/account/challenge/"},
    {"onVerify", R"({"op":"verify","otp":"123456","country":"DE","countryCode":"49","phoneNumber":"151234567"})",
     "/account/verify/"},
    {"onCheckIsUserLogin", R"({"op":"isLoggedIn"})", "/account", false},
    {"onGetPaymentMethods", R"({"op":"getPaymentMethods"})", "/account", false},
    {"onAddCreditCard",
     R"({"op":"addCreditCard","card":{"pan":"4111111111111111","month":"12","year":"2039","cvv":"123","email":"a@b.example"}})",
     "/account/locators"},
    {"onRemoveCard", R"({"op":"removeCard","id":"L1"})", "/account/locators/L1"},
    {"onDeposit",
     R"({"op":"deposit","depositCard":{"id":"0","number":"","type":"KAVIO","balance":0,"currency":"EUR","currencyDecimalDigits":2},"amount":1,"chargedCardId":"L1"})",
     "/deposits/"},
    {"onGetMachines", R"({"op":"getMachines"})", "/machines/byValue", false},
    {"onGetMachineProducts", R"({"op":"getMachineProducts","machineId":7})", "/machines/7/products", false},
    {"onGetTransactions", R"({"op":"getTransactions"})", "/orders/activities", false},
    {"onGetOrder", R"({"op":"getOrder","orderId":"5"})", "/orders/5", false},
    {"onPlaceOrder",
     R"({"op":"placeOrder","kavioId":42100107,"amount":150,"paymentMethod":{"id":"0","number":"","type":"KAVIO"}})",
     "/machines/*/orders"},
    {"onLogout", R"({"op":"logout"})", "/account/logout"},
};

// What a service answers, be it healthy, broken or hostile, and the one report that follows.
struct Answer {
    sandbox::Fault fault;
    std::string type;
    std::string message;  // for a lost connection, how it begins
    std::string cause;

    /// Of an operation that changes something.
    std::string effect() const {
        if (type == "SUCCESS") return "DONE";
        return fault.status >= 400 && fault.status <= 499 ? "NONE" : "UNKNOWN";
    }
};

std::vector<Answer> answers() {
    const auto answer = [](int status, std::string body) {
        return sandbox::Fault{.status = status, .body = std::move(body)};
    };
    const sandbox::Fault lost{.drop = true, .times = -1};
    const std::string expired = "Your session token is expaired";
    return {
        {answer(400, R"({"message":"not so"})"), "BAD_INPUT", "not so", "REFUSED_BY_SERVICE"},
        {answer(401, "{}"), "ACCESS_DENIED", expired, "SESSION_REFUSED"},
        {answer(402, R"({"message":"declined"})"), "FAILURE", "declined", "REFUSED_BY_SERVICE"},
        {answer(406, "{}"), "FAILURE", expired, "SESSION_REFUSED"},
        {answer(417, "{}"), "FAILURE", "invalid_signature", "SIGNATURE_REFUSED"},
        {answer(426, "{}"), "FAILURE", "Upgrade version is required", "UPDATE_REQUIRED"},
        {answer(499, "plain text"), "FAILURE", "plain text", "REFUSED_BY_SERVICE"},
        {answer(500, R"({"message":"closed for today"})"), "SERVER_ERROR", "closed for today", "SERVICE_FAILED"},
        {answer(599, ""), "SERVER_ERROR", "", "SERVICE_FAILED"},
        {answer(302, ""), "FAILURE", "", "SERVICE_FAILED"},
        {answer(200, ""), "BAD_INPUT", "", "UNREADABLE_REPLY"},
        {answer(200, "<html>"), "BAD_INPUT", "", "UNREADABLE_REPLY"},
        {answer(200, "{\"a\":\"\xff\"}"), "BAD_INPUT", "", "UNREADABLE_REPLY"},
        {answer(200, std::string(1'000'000, '[')), "BAD_INPUT", "", "UNREADABLE_REPLY"},
        {answer(200, "[1,2"), "BAD_INPUT", "", "UNREADABLE_REPLY"},
        {answer(200, "null"), "SUCCESS", "", "NONE"},
        {lost, "NETWORK_FAILED", "failed to send request, error: The connection was lost", "CONNECTION_LOST"},
    };
}

using WalletResults = WalletTest;

TEST_F(WalletResults, AreOneForEachAnswerToEachRequest) {
    logIn();
    const auto token = drive({R"({"op":"storeGet","key":"session_token"})"}).events().at(0).at("value").dump();
    for (const auto& operation : operations) {
        SCOPED_TRACE(operation.line);
        const auto all = answers();
        std::vector<std::string> lines;
        for (const auto& answer : all) {
            sandbox.fault(operation.path, answer.fault);
            lines.push_back(R"({"op":"storeSet","key":"session_token","value":)" + token + "}");
            if (operation.callback == std::string("onVerify")) lines.emplace_back(operations.front().line);
            lines.emplace_back(operation.line);
            // Without an order to follow, this facade is busy until its first poll, but another one is not.
            if (answer.fault.body == "null")
                lines.insert(lines.end(), {"destroy", "create apiKey=demo-key environment=TEST"});
        }
        auto events = drive(lines).events();
        std::erase_if(events, [&](const Json& event) { return event.value("callback", "") != operation.callback; });
        sandbox.clearFaults();

        ASSERT_THAT(events, SizeIs(all.size()));
        for (std::size_t i = 0; i < all.size(); ++i) {
            SCOPED_TRACE(testing::Message() << "answer " << i << ": " << all[i].type);
            const auto& message = events[i].at("result").at("message");
            EXPECT_EQ(events[i].at("result").at("type"), all[i].type);
            EXPECT_EQ(message.is_null(), all[i].message.empty());
            const auto text = message.is_null() ? "" : message.get<std::string>();
            EXPECT_EQ(all[i].fault.drop ? text.substr(0, all[i].message.size()) : text, all[i].message);
            EXPECT_EQ(events[i].at("result").at("effect"),
                      operation.changesSomething ? all[i].effect() : std::string("NONE"));
            EXPECT_EQ(events[i].at("result").at("cause"), all[i].cause);
            EXPECT_EQ(events[i].at("onMainThread"), true);
            EXPECT_THAT(events[i].at("result").value("debug", ""), StartsWith("\n\t{type: "));
        }
    }
}

// Whatever happens to the connection, the service sees at most one purchase, the application gets one outcome, and what
// it learns later, in another run of the program, agrees with the service.
TEST_F(WalletResults, OfAPurchaseWhoseReplyIsLostAreOneAndItIsSettledLater) {
    logIn();
    const auto unsettled = [&] { return drive({"unsettledPayments"}).events().at(0).at("value"); };
    std::size_t purchases = 0;
    for (const auto& [fault, type] : std::vector<std::pair<sandbox::Fault, std::string>>{
             {{.drop = true}, "NETWORK_FAILED"},
             {{.drop = true, .handled = true}, "NETWORK_FAILED"},
             {{.cutAfter = 0}, "FAILURE"},
             {{.cutAfter = 9}, "FAILURE"},
         }) {
        sandbox.fault("/machines/*/orders", fault);
        const auto lost = drive({operations[11].line, "isBusy", "isLoggedIn"});
        EXPECT_THAT(lost.summary(),
                    ElementsAre("main onPlaceOrder " + type, "main return isBusy", "main onCheckIsUserLogin SUCCESS"));
        EXPECT_EQ(lost.events().at(0).at("result").at("effect"), "UNKNOWN");
        EXPECT_EQ(lost.events().at(1).at("value"), false);
        EXPECT_THAT(sandbox.state().at("purchases"), SizeIs(purchases)) << "none by the first";

        const auto payments = unsettled();
        ASSERT_THAT(payments, SizeIs(1));
        EXPECT_EQ(payments[0].at("kavioId"), 42100107);
        EXPECT_EQ(payments[0].at("orderId"), nullptr);
        const auto id = payments[0].at("id").get<std::string>();
        const auto settled = drive({"settlePayment id=" + id}).events().at(0);
        EXPECT_EQ(settled.at("callback"), "onPlaceOrder");
        if (purchases++ == 0) {
            EXPECT_EQ(settled.at("result").at("cause"), "NOT_CERTAIN") << "it may still arrive";
            const auto forgotten = drive({"forgetPayment id=" + id, "forgetPayment id=" + id}).events();
            EXPECT_EQ(forgotten.at(0).at("value"), true);
            EXPECT_EQ(forgotten.at(1).at("value"), false);
            continue;
        }
        const auto order = sandbox.state().at("purchases").back().at("order").dump();
        EXPECT_EQ(settled.at("order").at("id"), order);
        while (!unsettled().empty()) run("order " + order);  // until it ends
    }
}

}  // namespace
}  // namespace kavio::test
