#include "models/account_model.h"
#include "models/json/decoding_error.h"
#include "models/json/document.h"
#include "models/json/json_value.h"
#include "models/machine_model.h"
#include "models/order_activity_model.h"
#include "models/order_model.h"
#include "samples.h"

#include <kavio/delegate.h>
#include <kavio/testing/device.h>

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <sstream>

namespace kavio::test {
namespace {

class Conversions : public testing::Test {
protected:
    const Device device;

    /// A sample after some of its members have been replaced.
    static std::string patched(const std::string& sample, const JsonValue& patch) {
        auto body = JsonValue::parse(sample);
        if (patch.is_object()) body.merge_patch(patch);
        return body.dump();
    }
    template <class Model>
    static Model changed(const std::string& sample, const JsonValue& patch) {
        return *decodeDocument<Model>(patched(sample, patch));
    }
};

TEST_F(Conversions, CodesThatNameNothingGiveNothing) {
    EXPECT_EQ(Machine::machineType(43), Machine::MachineType::MICRO_MARKETS);
    for (const int code : {-1, 35, 38, 44}) EXPECT_EQ(Machine::machineType(code), std::nullopt) << code;
    for (const int code : {-1, 8}) EXPECT_EQ(Order::orderStatus(code), std::nullopt) << code;
    EXPECT_EQ(PaymentMethod::paymentType(99), PaymentMethod::PaymentType::PREPAID);
    for (const int code : {-1, 4, 98}) EXPECT_EQ(PaymentMethod::paymentType(code), std::nullopt) << code;
    EXPECT_EQ(name(static_cast<Order::Status>(8)), "");
}

TEST_F(Conversions, OrdersForgiveWhatIsNotEssential) {
    const auto order = [](const JsonValue& members) {
        return changed<OrderModel>(samples::order, {{"order", members}});
    };
    EXPECT_EQ(order({{"country", {{"code", "QQ"}}}}).country, std::nullopt);
    EXPECT_EQ(order({{"createdUTC", "yesterday"}}).dateCreated, device.time().now());
    const auto feedback = [&](const JsonValue& text) {
        return order({{"dataFields", {{"feedback", text}}}}).feedbackType;
    };
    for (const auto* text : {R"({"AlertType":-9223372036854775808})", "[]", "null"})
        EXPECT_EQ(feedback(text), std::nullopt) << text;
    EXPECT_THROW(feedback("{"), DecodingError);
    EXPECT_THROW(order({{"orderItems", {1}}}), DecodingError);
}

TEST_F(Conversions, ActivitiesBecomeOrders) {
    const auto activity = [](const JsonValue& members) {
        return decodeDocument<Orders>("[" + patched(samples::activity, members) + "]")->front();
    };
    const Order expected{"88",
                         "balanceDeposit",
                         Order::Status::TIMEOUT,
                         "prepaid",
                         250,
                         Date(std::chrono::milliseconds(1620284889100)),
                         "EUR",
                         3,
                         2};
    EXPECT_EQ(activity({})->debugDescription(), expected.debugDescription());
    EXPECT_EQ(activity({{"created", "yesterday"}})->date, device.time().now());
    for (const auto& [code, text, type] : std::vector<std::tuple<int, JsonValue, std::string>>{
             {0, nullptr, "vending"},
             {7, nullptr, "vending"},
             {2, nullptr, "prePaidDeposit"},
             {3, nullptr, "balanceDeposit"},
             {3, "prePaidDeposit", "prePaidDeposit"},
             {3, "other", "vending"},
         }) {
        EXPECT_EQ(activity({{"orderType", code}, {"orderTypeName", text}})->type, type) << code;
    }
    for (const auto* items : {"", "[", "{}", "null", "[]"})
        EXPECT_EQ(activity({{"orderItems", items}})->itemsCount, 0) << items;
}

TEST_F(Conversions, NumbersStayInRange) {
    using Limits = std::numeric_limits<std::int64_t>;
    const auto card = [](const JsonValue& members) {
        return publicObject(changed<PrepaidCardModel>(samples::prepaidCard, members));
    };
    EXPECT_EQ(card({{"cardLimit", -1}})->balance, 500);
    EXPECT_EQ(card({{"cardLimit", Limits::max()}})->balance, Limits::max());
    EXPECT_EQ(card({{"balance", Limits::min()}})->balance, Limits::min() + 200);
    EXPECT_EQ(card({{"createdTime", ""}})->created, device.time().now());
    for (const auto& status : {0.0, 2.0, 1e300, -1e300}) EXPECT_FALSE(card({{"cardStatus", status}})->isActive);

    const auto machine = [](const JsonValue& members) {
        return decodeDocument<Machines>("[" + patched(samples::machine, members) + "]")->front();
    };
    EXPECT_EQ(machine({{"kavioID", 18446744073709551615U}})->kavioId, Limits::max());
    EXPECT_FALSE(machine({{"machineStatusId", 2}})->machineStatus);
}

TEST_F(Conversions, AccountsAreStoredAsTheyAreRead) {
    const auto account = *decodeDocument<AccountModel>(samples::account);
    const auto again = *decodeDocument<AccountModel>(*serialise(account.encode()));
    EXPECT_EQ(serialise(again.encode()), serialise(account.encode()));
    EXPECT_EQ(account.tokenLocators.at(0).securityCode, "7");
    EXPECT_EQ(again.tokenLocators.at(0).securityCode, "0") << "which is never stored";
    for (const auto* text : {"{", "[]", "null", R"({"machinesOrder":1})"})
        EXPECT_FALSE(changed<AccountModel>(samples::account, {{"account", {{"appData", text}}}}).appData) << text;
}

TEST_F(Conversions, OrderStatusesBecomeWhatTheApplicationSees) {
    using enum Order::Status;
    for (const auto& [status, texts] : std::map<Order::Status, std::string>{
             {CANCELED,
              "failed duplicated limitcheckfailed cooldowntokenlocator LIMITEXCEEDED currencymismatch "
              "invalidtokenlocator refused cancelled cardnotallowed"},
             {TIMEOUT, "timedOut"},
             {INCOMPLETE, "failedrefund deleted expired"},
             {AUTHORIZED, "authorized"},
             {COMPLETED, "Completed"},
             {CREATED, "created createdpreselection started startedpreselection"},
             {FREE_TRANSACTION, "freetransaction"},
             {UNKNOWN, "unknown proccessing processing -"}}) {
        std::istringstream words(texts);
        for (std::string text; words >> text;) {
            const JsonValue changes{{"order", {{"orderStatus", text}}}};
            EXPECT_EQ(publicObject(changed<OrderModel>(samples::order, changes))->status, status) << text;
        }
    }
}

}  // namespace
}  // namespace kavio::test
