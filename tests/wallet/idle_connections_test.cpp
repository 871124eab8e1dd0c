#include "wallet/driven_wallet.h"

#include <chrono>
#include <memory>

namespace kavio::test {
namespace {

// Whether the service closes a connection just before, while or just after the next request takes it: nothing is lost,
// and nothing is sent twice.
TEST(IdleConnections, LoseNothingWhenTheyAreClosed) {
    constexpr int wallets = 8;
    const sandbox::Sandbox sandbox{{.orderStep = std::chrono::milliseconds(1), .idleLimit = std::chrono::seconds(1)}};
    const Words operations{
        R"({"op":"placeOrder","kavioId":42100107,"amount":150,"await":2,)"
        R"("paymentMethod":{"id":"0","number":"","type":"KAVIO"}})",
        R"({"op":"addCreditCard","card":{"pan":"4111111111111111","month":"12","year":"2039",)"
        R"("cvv":"123","email":"a@b.example"}})",
        "getMachines",
        "getTransactions",
        "logout",
    };
    std::vector<std::unique_ptr<TemporaryFolder>> folders;
    std::vector<std::unique_ptr<DrivenWallet>> driven;
    for (int i = 0; i < wallets; ++i) {
        folders.push_back(std::make_unique<TemporaryFolder>());
        driven.push_back(
            std::make_unique<DrivenWallet>(Words{"--store-dir", folders.back()->path(), "--connect-to",
                                                 sandbox.address(), "--ca-file", sandbox.authorityFile()}));
        const auto who = "countryCode=\"49\" phoneNumber=\"1512345" + std::to_string(10 + i) + '"';
        driven.back()->tell("login " + who);
        driven.back()->tell("verify otp=\"123456\" country=DE " + who);
        for (const auto& operation : operations) {
            driven.back()->tell("sleep milliseconds=" + std::to_string(960 + 12 * i));
            driven.back()->tell(operation);
        }
    }
    for (const auto& wallet : driven) {
        Json event;
        for (std::size_t left = 2 + operations.size() + 1; left > 0; --left) {
            event = wallet->hear();
            EXPECT_EQ(event.at("result").at("type"), "SUCCESS") << event;
        }
        EXPECT_EQ(event.at("callback"), "onLogout");
    }
    const auto state = sandbox.state();
    EXPECT_EQ(state.at("purchases").size(), wallets);
    for (const auto& account : state.at("accounts")) EXPECT_EQ(account.at("cards").size(), 3U) << account;
}

}  // namespace
}  // namespace kavio::test
