#include "models/account_model.h"
#include "models/json/decoding_error.h"
#include "models/json/document.h"
#include "models/json/json_value.h"
#include "models/machine_model.h"
#include "models/order_activity_model.h"
#include "models/order_model.h"
#include "models/public_objects.h"
#include "models/request_models.h"
#include "samples.h"
#include "support/fakes/fake_device.h"

#include <gmock/gmock.h>

#include <limits>
#include <map>
#include <sstream>

namespace kavio::test {
namespace {

using testing::ElementsAre;

class Conversions : public testing::Test {
protected:
    const FakeDevice device;
    const InstalledPlatform installed{device.platform()};

    /// The record of a sample after some of its members have been replaced.
    template <class Model>
    static Model changed(const std::string& sample, const JsonValue& patch) {
        auto body = JsonValue::parse(sample);
        if (patch.is_object()) body.merge_patch(patch);
        return *decodeDocument<Model>(body.dump());
    }
};

TEST_F(Conversions, MachinesHaveDefaultsForWhatIsLeftOut) {
    const auto model = decodeDocument<MachineModel>(
        R"({"name":1,"machineId":2,"machineType":35,"isRevalueOnly":false,"reviewsCount":0,"reviewsCount1":0,"reviewsCount2":0,)"
        R"("reviewsCount3":0,"reviewsCount4":0,"reviewsCount5":0,"isPulse":false,"customLabe":"X","lastOrderDT":"2020-01-02T03:04:05"})");
    EXPECT_EQ(model->decimalPlace, 2);
    EXPECT_EQ(model->actorId, -1);
    EXPECT_EQ(model->distributorId, -1);
    EXPECT_EQ(model->customLabel, "X");
    EXPECT_EQ(model->createdDate, Date());
    EXPECT_EQ(model->reviewsAvg, 0.0F);
    EXPECT_EQ(model->smartStickerIdUrl, "");
    EXPECT_EQ(publicObject(MachineModel(*model))->debugDescription(),
              Machine(2, 0, {}, true, 0, 0, Machine::MachineType::OTHER, {}, {}, "", "", {}, false, 0, false)
                  .debugDescription());
}

TEST_F(Conversions, MachinesKeepWhatTheyWereGiven) {
    const auto model = *decodeDocument<MachineModel>(samples::machine);
    EXPECT_EQ(model.name, "12345");
    EXPECT_EQ(model.customLabel, "cl");
    EXPECT_EQ(model.createdDate, Date(std::chrono::milliseconds(1577934245678)));
    EXPECT_THAT(model.fullTreeOperatorsField, ElementsAre(1, 2.5));
    EXPECT_THAT((std::vector{model.reviewsCount, model.reviewsCount1, model.reviewsCount5, model.extraChargeType}),
                ElementsAre(1, 2, 6, 13));
    EXPECT_THAT((std::vector{model.evNozzle, model.evNozzleLeft, model.evNozzleRight}), ElementsAre(true, false, true));
    EXPECT_EQ(changed<MachineModel>(samples::machine, {{"coordinate", {{"latitude", 1.5}, {"longitude", nullptr}}}})
                  .longitude,
              0);
    EXPECT_EQ(publicObject(changed<MachineModel>(samples::machine, {{"kavioID", 18446744073709551615U}}))->kavioId,
              std::numeric_limits<std::int64_t>::max());
    EXPECT_FALSE(publicObject(changed<MachineModel>(samples::machine, {{"machineStatusId", 2}}))->machineStatus);
}

TEST_F(Conversions, CodesThatNameNothingGiveNothing) {
    EXPECT_EQ(Machine::machineType(43), Machine::MachineType::MICRO_MARKETS);
    for (const int code : {-1, 35, 36, 38, 42, 44}) EXPECT_EQ(Machine::machineType(code), std::nullopt) << code;
    EXPECT_EQ(Order::orderStatus(7), Order::Status::INCOMPLETE);
    for (const int code : {-1, 8}) EXPECT_EQ(Order::orderStatus(code), std::nullopt) << code;
    EXPECT_EQ(PaymentMethod::paymentType(99), PaymentMethod::PaymentType::PREPAID);
    for (const int code : {-1, 4, 98}) EXPECT_EQ(PaymentMethod::paymentType(code), std::nullopt) << code;
    EXPECT_EQ(name(static_cast<Order::Status>(8)), "");
}

TEST_F(Conversions, OrderStatusesBecomeWhatTheApplicationSees) {
    using enum Order::Status;
    const std::map<Order::Status, const char*> rows{
        {CANCELED,
         R"(failed duplicated limitcheckfailed cooldowntokenlocator LIMITEXCEEDED currencymismatch invalidtokenlocator
            refused cancelled cardnotallowed)"},
        {TIMEOUT, "timedOut"},
        {INCOMPLETE, "failedrefund deleted expired"},
        {CREATED, "created createdpreselection started startedpreselection"},
        {AUTHORIZED, "authorized"},
        {COMPLETED, "Completed"},
        {FREE_TRANSACTION, "freetransaction"},
        {UNKNOWN, "unknown proccessing processing -"},
    };
    for (const auto& [status, texts] : rows) {
        std::istringstream words(texts);
        for (std::string text; words >> text;) {
            const auto order = changed<OrderModel>(samples::order, {{"order", {{"orderStatus", text}}}});
            EXPECT_EQ(publicObject(order)->status, status) << text;
        }
    }
}

TEST_F(Conversions, OrdersHaveDefaultsForWhatIsLeftOut) {
    const auto model = decodeDocument<OrderModel>(
        R"({"order":{"id":"1","orderType":"VENDING","orderStatus":"created","externalId":77,"createdUTC":"2021-05-06T07:08:09.000"}})");
    EXPECT_EQ(model->machineName, "77");
    EXPECT_EQ(model->externalCampaignID, "0");
    EXPECT_EQ(model->revalueAmount, 0);
    EXPECT_THAT(model->orderItems, testing::IsEmpty());
    EXPECT_EQ(publicObject(*model)->debugDescription(),
              Order("1", "vending", Order::Status::CREATED, "unknown", -1, device.clock->now(), {}, 0, -1)
                  .debugDescription());
}

TEST_F(Conversions, OrdersKeepWhatTheyWereGiven) {
    const auto model = *decodeDocument<OrderModel>(samples::order);
    EXPECT_THAT((std::vector<std::optional<std::string>>{model.country, model.countryCode, model.machineName,
                                                         model.prepaidCardId, model.prepaidCardIssuer,
                                                         model.prepaidCardReference, model.issuer}),
                ElementsAre("Germany", "DE", "e", "pc", "pi", "pr", "visa"));
    EXPECT_THAT((std::vector<std::optional<std::int64_t>>{model.machineType, model.totalPunches, model.punchesOnPunch}),
                ElementsAre(6, 10, 2));
    EXPECT_EQ(model.feedbackType, FeedbackType::other);
    EXPECT_EQ(model.orderItems.at(0).at("a"), 1);
    EXPECT_EQ(model.machineReview->reviewsAvg, 4.5F);
    EXPECT_EQ(model.lookAndFeel->images.at(0).w, 120);
}

TEST_F(Conversions, OrdersForgiveWhatIsNotEssential) {
    const auto order = [](const JsonValue& members) {
        return changed<OrderModel>(samples::order, {{"order", members}});
    };
    EXPECT_EQ(order({{"country", {{"code", 5}}}}).countryCode, std::nullopt);
    EXPECT_EQ(order({{"country", "Germany"}}).country, std::nullopt);
    EXPECT_EQ(order({{"country", {{"code", "QQ"}}}}).country, std::nullopt);
    EXPECT_EQ(order({{"issuer", 5}, {"paymentSource", "balance"}}).issuer, std::nullopt);
    EXPECT_EQ(order({{"paymentSource", "Unspecified"}}).paymentProcessorType, PaymentProcessorType::unknown);
    EXPECT_EQ(order({{"paymentSource", "GPay"}}).paymentProcessorType, PaymentProcessorType::gpay);
    EXPECT_EQ(order({{"dataFields", nullptr}, {"paymentSource", "prepaid"}}).prepaidCardId, "ep");
    EXPECT_EQ(order({{"dataFields", nullptr}}).prepaidCardId, std::nullopt);
    EXPECT_EQ(order({{"dataFields", {{"machineType", "6"}}}}).machineType, std::nullopt);

    const auto feedback = [&](const JsonValue& text) {
        return order({{"dataFields", {{"feedback", text}}}}).feedbackType;
    };
    EXPECT_EQ(feedback(R"({"AlertType":5000})"), FeedbackType::machineProblem);
    EXPECT_EQ(feedback(R"({"AlertType":5007.0})"), FeedbackType::noFeedback);
    for (const auto* text : {R"({"AlertType":4999})", R"({"AlertType":5008})", R"({"AlertType":-9223372036854775808})",
                             R"({"AlertType":"5000"})", "{}", "[]", "null"}) {
        EXPECT_EQ(feedback(text), std::nullopt) << text;
    }
    for (const auto& noText : std::initializer_list<JsonValue>{nullptr, 7, {{"AlertType", 5000}}})
        EXPECT_EQ(feedback(noText), std::nullopt) << noText;
    EXPECT_THROW(feedback("{"), DecodingError);
    EXPECT_THROW(order({{"orderItems", {1}}}), DecodingError);
}

TEST_F(Conversions, ActivitiesBecomeOrders) {
    const auto activity = [](const JsonValue& members) {
        return changed<OrderActivityModel>(samples::activity, members);
    };
    EXPECT_EQ(publicObject(activity({}))->debugDescription(),
              Order("88", "balanceDeposit", Order::Status::TIMEOUT, "prepaid", 250,
                    Date(std::chrono::milliseconds(1620284889100)), "EUR", 3, 2)
                  .debugDescription());
    EXPECT_EQ(activity({}).punchesOnPunch, 5);
    EXPECT_EQ(activity({}).totalPunches, std::nullopt);
    EXPECT_EQ(activity({{"created", "yesterday"}}).createdDate, device.clock->now());
    EXPECT_EQ(activity({{"orderId", 18446744073709551615U}}).orderId, "18446744073709551615");

    const std::vector<std::tuple<int, JsonValue, OrderType, std::string>> types{
        {100, nullptr, OrderType::CASHBACK, "vending"},
        {0, nullptr, OrderType::UNKNOWN, "vending"},
        {7, nullptr, OrderType::UNKNOWN, "vending"},
        {1, nullptr, OrderType::VENDING, "vending"},
        {2, nullptr, OrderType::PREPAID_DEPOSIT, "prePaidDeposit"},
        {3, nullptr, OrderType::BALANCE_DEPOSIT, "balanceDeposit"},
        {3, "prePaidDeposit", OrderType::BALANCE_DEPOSIT, "prePaidDeposit"},
        {3, "other", OrderType::BALANCE_DEPOSIT, "vending"},
    };
    for (const auto& [code, text, type, publicType] : types) {
        const auto model = activity({{"orderType", code}, {"orderTypeName", text}});
        EXPECT_EQ(model.orderType, type) << code;
        EXPECT_EQ(publicObject(OrderActivityModel(model))->type, publicType) << code;
    }
    for (const auto* items : {"", "[", "{}", "5", "null", "[]"}) {
        EXPECT_EQ(publicObject(activity({{"orderItems", items}}))->itemsCount, 0) << items;
    }
}

TEST_F(Conversions, StoredCardsHaveAVocabularyOfTheirOwn) {
    using enum PaymentProcessorType;
    for (const auto& [text, type] : std::map<std::string, PaymentProcessorType>{
             {"PayPal", paypal}, {"PaymentCard", creditCard}, {"gpay", unknown}, {"ecommerce", unknown}}) {
        EXPECT_EQ(changed<PaymentCardModel>(samples::storedCard, {{"processorType", text}}).processorType, type)
            << text;
    }
    EXPECT_EQ(publicObject(changed<PaymentCardModel>(samples::storedCard, {{"issuer", nullptr}}))->brand, "");
}

TEST_F(Conversions, PrepaidCardsBecomePaymentMethods) {
    using Limits = std::numeric_limits<std::int64_t>;
    const auto model = [](const JsonValue& members) {
        return changed<PrepaidCardModel>(samples::prepaidCard, members);
    };
    const auto card = [&](const JsonValue& members) { return publicObject(model(members)); };
    EXPECT_EQ(card({{"cardLimit", -1}})->balance, 500);
    EXPECT_EQ(card({{"cardLimit", Limits::max()}})->balance, Limits::max());
    EXPECT_EQ(card({{"balance", Limits::min()}})->balance, Limits::min() + 200);
    EXPECT_EQ(card({{"createdTime", ""}})->created, device.clock->now());
    EXPECT_TRUE(card({{"cardStatus", 1.9}})->isActive);
    for (const auto& status : std::initializer_list<JsonValue>{0, 2, 3, 1.0e3, 1e300, -1e300})
        EXPECT_FALSE(card({{"cardStatus", status}})->isActive);

    EXPECT_EQ(model({{"cardStatus", 9.7}}).cardStatus, CardStatus::replacedCardStatus);
    EXPECT_EQ(model({}).cardType, CardType::virtualCard);
    EXPECT_EQ(model({{"cardType", 0}}).cardType, CardType::physicalCard);
    EXPECT_EQ(model({{"cardNumber", nullptr}}).cardNumber, "");
}

TEST_F(Conversions, AccountsForgiveBrokenApplicationData) {
    for (const auto* text : {"", "{", "[]", "null", R"({"machinesOrder":1})", "\xEF\xBB\xBF{}"}) {
        EXPECT_FALSE(changed<AccountModel>(samples::account, {{"account", {{"appData", text}}}}).appData) << text;
    }
}

TEST_F(Conversions, ConfigurationsSkipWhatIsNoCurrency) {
    const auto euro = JsonValue::parse(
        R"({"decimalDigits":2.0,"minimumAmount":1,"maximumAmount":9,"balanceFallsJumps":50,"currencySign":"E"})");
    const auto text = [](const JsonValue& entry) {
        std::ostringstream read;
        const JsonValue body{{"currencies", {{"EUR", entry}}}};
        const auto configuration = decodeDocument<Configuration>(body.dump());
        for (const auto& [code, currency] : configuration->currencies) {
            read << code << currency.currencyName << ' ' << currency.decimalDigits << currency.minimumAmount
                 << currency.maximumAmount << ' ' << currency.balanceFallsJumps << currency.currencySign.value_or("-");
        }
        return read.str();
    };
    EXPECT_EQ(text(euro), "EUREUR 219 50E");
    EXPECT_EQ(text(7), "");
    for (const auto& [key, otherwise] : std::map<std::string, std::string>{{"decimalDigits", ""},
                                                                           {"minimumAmount", ""},
                                                                           {"maximumAmount", ""},
                                                                           {"balanceFallsJumps", "EUREUR 219 100E"},
                                                                           {"currencySign", "EUREUR 219 50-"}}) {
        auto entry = euro;
        entry.erase(key);
        EXPECT_EQ(text(entry), otherwise) << key;
        for (const auto& wrong : std::initializer_list<JsonValue>{nullptr, true, 1.5, {{"a", 1}}}) {
            entry[key] = wrong;
            EXPECT_EQ(text(entry), otherwise) << entry;
        }
    }
}

TEST_F(Conversions, EncodedRecordsDecodeToThemselves) {
    const auto account = *decodeDocument<AccountModel>(samples::account);
    const auto again = *decodeDocument<AccountModel>(*serialise(account.encode()));
    EXPECT_EQ(serialise(again.encode()), serialise(account.encode()));
    EXPECT_EQ(again.tokenLocators.at(0).processorType, PaymentProcessorType::creditCard);
    EXPECT_EQ(again.appData->machinesOrder, OrderMachines::FAVORITE);
    EXPECT_EQ(again.appData->paymentMethodsOrder, OrderPaymentMethods::RECENT);
    EXPECT_EQ(serialise(AppData{OrderMachines::NEARBY, OrderPaymentMethods::FAVORITE, 5}.encode()),
              R"({"lastEarnedCashback":5,"machinesOrder":2,"paymentMethodsOrder":1})");

    const std::string card = R"({"amount":1,"currency":"EUR","decimalDigits":2})";
    EXPECT_EQ(serialise(decodeDocument<KavioCardModel>(card)->encode()), card);
    const std::string machine = R"({"kavioMachineId":18446744073709551615,"uni_qr_number":"n","uni_qr_scan":"s"})";
    EXPECT_EQ(serialise(decodeDocument<MachineByValueModel>(machine)->encode()), machine);
    const std::string order =
        R"({"accuracy":1.5,"address":"a","amount":1,"city":"c","country":"co","isQR":true,"latitude":2.5,"longitude":3.5,)"
        R"("payPalMetadataId":"p","prepaidCardId":2,"streetNumber":"s","tokenLocator":"t","zipcode":"z"})";
    EXPECT_EQ(serialise(decodeDocument<PlaceOrderModel>(order)->encode()), order);
    PlaceOrderModel two;
    two.amount = 1;
    two.tokenLocator = "t";
    EXPECT_EQ(serialise(two.encode()), R"({"amount":1,"tokenLocator":"t"})");
}

}  // namespace
}  // namespace kavio::test
