// Payments whose program is killed at any instant between the call and the last poll, and settled by a later run of the
// program. In the suite a few are enough; for the whole of it, about ten minutes long with a release build:
//   KAVIO_KILLS=1000 build/release/bin/wallet_tests --gtest_filter='KilledPayments*'

#include "wallet/driven_wallet.h"

#include <fmt/format.h>

#include <atomic>
#include <map>
#include <random>
#include <set>
#include <thread>

namespace kavio::test {
namespace {

using namespace std::chrono_literals;

constexpr int killsPerRun = 20;

struct Kind {
    const char* type;  // of the service's order
    int unit;          // of the amount in the line, in the smallest unit
    std::string line;  // with a place for the amount
    std::chrono::microseconds longest;
};

const Kind purchase{
    "vending", 1,
    R"({{"op":"placeOrder","kavioId":42100107,"amount":{},"paymentMethod":{{"id":"0","number":"","type":"KAVIO"}}}})",
    1300ms};
const Kind deposit{"balanceDeposit", 100,
                   R"({{"op":"deposit","depositCard":{{"id":"0","number":"","type":"KAVIO","balance":0,)"
                   R"("currency":"EUR","currencyDecimalDigits":2}},"amount":{},"chargedCardId":"{}"}})",
                   100ms};

bool isOver(const std::string& status) { return status != "created" && status != "started" && status != "authorized"; }

class KilledPayments : public ::testing::TestWithParam<Kind> {
protected:
    /// The service's orders of this kind by their amounts, in the unit of the line.
    std::multimap<std::int64_t, Json> orders() const {
        std::multimap<std::int64_t, Json> found;
        const auto state = sandbox.state();
        for (const auto& order : state.at("accounts").at(0).at("orders")) {
            if (order.at("type") == GetParam().type && !mSeeded.contains(order.at("id")))
                found.emplace(order.at("amount").get<std::int64_t>() / GetParam().unit, order);
        }
        return found;
    }
    void killWhilePaying(int amount, const std::string& card) {
        DrivenWallet wallet{options};
        wallet.ask("isBusy");  // it has started
        wallet.tell(fmt::format(fmt::runtime(GetParam().line), amount, card));
        // At any instant, and at a soon one in every other case: that is when most happens.
        const auto longest = mRandom() % 2 == 0 ? GetParam().longest : GetParam().longest / 20;
        std::uniform_int_distribution<std::int64_t> until{0, longest.count()};
        std::this_thread::sleep_for(
            std::chrono::microseconds(until(mRandom)));  // waits for nothing: any instant will do
    }
    /// How each payment in doubt was settled, by its amount.
    std::map<std::int64_t, Json> settled() {
        mElapsed += 200;  // nothing arrives any more
        DrivenWallet wallet{options};
        wallet.tell(R"({"op":"storeSet","key":"server_expired_time","value":null})");
        std::map<std::int64_t, Json> found;
        const auto unsettled = wallet.ask("unsettledPayments").at("value");
        for (const auto& payment : unsettled)
            found[payment.at("amount").get<std::int64_t>() / GetParam().unit] =
                wallet.ask("settlePayment id=" + payment.at("id").get<std::string>());
        EXPECT_EQ(wallet.ask("unsettledPayments").at("value"), Json::array());
        return found;
    }

    std::atomic<int> mElapsed = 0;
    sandbox::Sandbox sandbox{{.orderStep = 100ms, .tokenLifetime = std::chrono::hours{24 * 365}, .clock = [this] {
                                  return std::chrono::system_clock::now() + std::chrono::seconds(mElapsed);
                              }}};
    TemporaryFolder folder;
    const Words options{"--store-dir", folder.path() / "store", "--connect-to", sandbox.address(),
                        "--ca-file",   sandbox.authorityFile()};
    std::set<Json> mSeeded;  // the orders that the account came with
    std::mt19937 mRandom{20261125};
};

TEST_P(KilledPayments, AreSettledAsTheServiceHasThem) {
    std::string card;
    {
        DrivenWallet wallet{options};
        wallet.ask(R"(login countryCode="49" phoneNumber="151234567")");
        wallet.ask(R"(verify otp="123456" country=DE countryCode="49" phoneNumber="151234567")");
        const auto methods = wallet.ask("getPaymentMethods").at("paymentMethods");
        for (const auto& method : methods)
            if (method.at("type") == "CREDIT_CARD") card = method.at("id");
    }
    for (const auto& [amount, order] : orders()) mSeeded.insert(order.at("id"));
    std::map<std::string, int> courses;
    const int kills = fromEnvironment("KAVIO_KILLS", killsPerRun);
    for (int first = 1; first <= kills; first += killsPerRun) {
        std::map<std::int64_t, bool> wasFinal;
        for (int amount = first; amount < first + killsPerRun; ++amount) {
            killWhilePaying(amount, card);
            const auto made = orders();
            const auto order = made.find(amount);
            wasFinal[amount] = order != made.end() && isOver(order->second.at("status"));
        }
        const auto reports = settled();
        const auto made = orders();
        for (int amount = first; amount < first + killsPerRun; ++amount) {
            SCOPED_TRACE(amount);
            const auto count = made.count(amount);
            ASSERT_LE(count, 1U) << "paid twice";
            const auto report = reports.find(amount);
            if (report == reports.end()) {
                EXPECT_TRUE(count == 0 || wasFinal[amount]) << "gone although it was not certain";
                ++courses[count == 0 ? "never written down" : "known to be over"];
                continue;
            }
            const auto& result = report->second.at("result");
            EXPECT_EQ(result.at("type"), count == 1 ? "SUCCESS" : "FAILURE") << result;
            EXPECT_EQ(result.at("effect"), count == 1 ? "DONE" : "NONE") << result;
            if (count == 1 && report->second.contains("order")) {
                EXPECT_EQ(report->second.at("order").at("id"), made.find(amount)->second.at("id").dump());
            }
            ++courses[count == 1 ? "made" : "not made"];
        }
    }
    EXPECT_GT(courses["made"] + courses["known to be over"], 0) << "or else nothing was tried";
    for (const auto& [course, count] : courses) fmt::print("{} {}: {}\n", GetParam().type, course, count);
}

INSTANTIATE_TEST_SUITE_P(Of, KilledPayments, ::testing::Values(purchase, deposit),
                         [](const auto& kind) { return std::string(kind.param.type); });

}  // namespace
}  // namespace kavio::test
