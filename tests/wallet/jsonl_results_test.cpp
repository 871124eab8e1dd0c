#include "wallet_process.h"

#include <gmock/gmock.h>

namespace kavio::test {
namespace {

using namespace ::testing;

// What a service answers, be it healthy, broken or hostile, and the one report that follows.
struct Answer {
    sandbox::Fault fault;
    std::string type;
    std::string message;  // for a lost connection, how it begins
    std::string cause;
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

TEST_F(WalletResults, AreOneForEachAnswer) {
    logIn();
    const auto token = drive({"storeGet key=session_token"}).events().at(0).at("value").dump();
    const auto all = answers();
    std::vector<std::string> lines;
    for (const auto& answer : all) {
        sandbox.fault("/machines/byValue", answer.fault);
        lines.push_back(R"({"op":"storeSet","key":"session_token","value":)" + token + "}");
        lines.emplace_back("getMachines");
    }
    const auto events = drive(lines).events();
    ASSERT_THAT(events, SizeIs(all.size()));
    for (std::size_t i = 0; i < all.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "answer " << i << ": " << all[i].type);
        const auto& result = events[i].at("result");
        const auto& message = result.at("message");
        EXPECT_EQ(result.at("type"), all[i].type);
        EXPECT_EQ(message.is_null(), all[i].message.empty());
        EXPECT_THAT(message.is_null() ? "" : message.get<std::string>(), StartsWith(all[i].message));
        EXPECT_EQ(result.at("cause"), all[i].cause);
        EXPECT_THAT(result.value("debug", ""), StartsWith("\n\t{type: "));
        EXPECT_EQ(events[i].at("onMainThread"), true);
    }
}

const std::string purchase =
    R"({"op":"placeOrder","kavioId":42100107,"amount":150,"paymentMethod":{"id":"0","number":"","type":"KAVIO"}})";

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
        const auto lost = drive({purchase, "isBusy", "isLoggedIn"});
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
