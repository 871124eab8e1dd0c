#include "models/account_model.h"

#include "models/json/decoding_error.h"
#include "models/json/document.h"
#include "models/json/json_value.h"
#include "models/json/keyed_container.h"
#include "models/public_objects.h"
#include "models/saturating.h"

namespace kavio {

Challenge Challenge::decode(const KeyedContainer& in) {
    const auto inner = in.nested("challenge");
    return {
        .challenge = inner.required<std::string>("challenge"),
        .phone = inner.required<std::string>("phone"),
        .retryTimeoutSeconds = std::to_string(inner.required<std::int64_t>("retryTimeoutSeconds")),
    };
}

Token Token::decode(const KeyedContainer& in) {
    const auto inner = in.nested("token");
    return {.token = inner.required<std::string>("token")};
}

LogOutResponse LogOutResponse::decode(const KeyedContainer& in) { return {.okResponse = in.required<bool>("ok")}; }

namespace {

// Codes that this version does not know get a default of their own, FAVORITE here and RECENT below.
OrderMachines orderMachines(std::int64_t code) {
    if (code == 0) return OrderMachines::RECENT;
    return code == 2 ? OrderMachines::NEARBY : OrderMachines::FAVORITE;
}

OrderPaymentMethods orderPaymentMethods(std::int64_t code) {
    return code == 1 ? OrderPaymentMethods::FAVORITE : OrderPaymentMethods::RECENT;
}

/// A text that holds something else never fails the account.
std::optional<AppData> readAppData(const std::optional<std::string>& text) {
    if (!text) return std::nullopt;
    try {
        return decodeDocument<AppData>(*text);
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

std::optional<CurrencyModel> readCurrency(const std::string& name, const JsonValue& entry) {
    if (!entry.is_object()) return std::nullopt;
    const auto& members = entry.get_ref<const JsonObject&>();
    const auto decimalDigits = integerAt(members, "decimalDigits");
    const auto minimumAmount = integerAt(members, "minimumAmount");
    const auto maximumAmount = integerAt(members, "maximumAmount");
    if (!decimalDigits || !minimumAmount || !maximumAmount) return std::nullopt;
    return CurrencyModel{
        .currencyName = name,
        .decimalDigits = *decimalDigits,
        .minimumAmount = *minimumAmount,
        .maximumAmount = *maximumAmount,
        .balanceFallsJumps = integerAt(members, "balanceFallsJumps").value_or(100),
        .currencySign = textAt(members, "currencySign"),
    };
}

}  // namespace

AppData AppData::decode(const KeyedContainer& in) {
    return {
        .machinesOrder = orderMachines(in.required<std::int64_t>("machinesOrder")),
        .paymentMethodsOrder = orderPaymentMethods(in.required<std::int64_t>("paymentMethodsOrder")),
        .lastEarnedCashback = in.required<std::int64_t>("lastEarnedCashback"),
    };
}

JsonObject AppData::encode() const {
    return {
        {"machinesOrder", static_cast<int>(machinesOrder)},
        {"paymentMethodsOrder", static_cast<int>(paymentMethodsOrder)},
        {"lastEarnedCashback", lastEarnedCashback},
    };
}

AccountModel AccountModel::decode(const KeyedContainer& in) {
    AccountModel model;
    model.configurationMaxUpdatedDT = in.optional<std::string>("configurationMaxUpdatedDT");
    const auto token = in.nested("token");
    model.token = token.required<std::string>("token");
    const auto account = in.nested("account");
    model.phone = account.required<std::string>("phone");
    model.email = account.optional<std::string>("email", "");
    model.country = account.required<std::string>("country");
    model.currency = account.required<std::string>("currency");
    model.firstName = account.optional<std::string>("firstName", "");
    model.lastName = account.optional<std::string>("lastName", "");
    model.balance = account.required<double>("balance");
    model.currencyDecimalDigits = account.required<std::int64_t>("currencyDecimalDigits");
    model.paypalClientId = account.required<std::string>("paypalClientId");
    model.marketingConfirmation = account.optional<bool>("marketingConfirmation");
    model.preventPayPalDirectPayment = account.optional<bool>("preventPayPalDirectPayment", false);
    model.preventCreditCardDirectPayment = account.optional<bool>("preventCreditCardDirectPayment", false);
    model.preventBalanceCardDirectPayment = account.optional<bool>("preventBalanceCardDirectPayment", false);
    model.preventPayPalTopUpDeposit = account.optional<bool>("preventPayPalTopUpDeposit", false);
    model.preventCreditCardTopUpDeposit = account.optional<bool>("preventCreditCardTopUpDeposit", false);
    model.preventGPayTopUpDeposit = account.optional<bool>("preventGPayTopUpDeposit", false);
    model.tokenLocators = account.optional<std::vector<PaymentCardModel>>("tokenLocators", {});
    model.gamificationTotalGamePlayed = account.optional<std::int64_t>("gameficationTotalGamePlayed");
    model.gamificationHighScore = account.optional<std::int64_t>("gameficationHighScore");
    model.gamificationTotalAmountOfCashback = account.optional<std::int64_t>("gameficationTotalAmountOfCashback");
    model.appData = readAppData(account.optional<std::string>("appData"));
    return model;
}

JsonObject AccountModel::encode() const {
    auto cards = JsonValue::array();
    for (const auto& card : tokenLocators) cards.push_back(card.encode());
    JsonObject account{
        {"phone", phone},
        {"email", email},
        {"country", country},
        {"currency", currency},
        {"firstName", firstName},
        {"lastName", lastName},
        {"balance", balance},
        {"currencyDecimalDigits", currencyDecimalDigits},
        {"paypalClientId", paypalClientId},
        {"preventPayPalDirectPayment", preventPayPalDirectPayment},
        {"preventCreditCardDirectPayment", preventCreditCardDirectPayment},
        {"preventBalanceCardDirectPayment", preventBalanceCardDirectPayment},
        {"preventPayPalTopUpDeposit", preventPayPalTopUpDeposit},
        {"preventCreditCardTopUpDeposit", preventCreditCardTopUpDeposit},
        {"preventGPayTopUpDeposit", preventGPayTopUpDeposit},
        {"tokenLocators", std::move(cards)},
    };
    setIfPresent(account, "marketingConfirmation", marketingConfirmation);
    setIfPresent(account, "gameficationTotalGamePlayed", gamificationTotalGamePlayed);
    setIfPresent(account, "gameficationHighScore", gamificationHighScore);
    setIfPresent(account, "gameficationTotalAmountOfCashback", gamificationTotalAmountOfCashback);
    if (appData) setIfPresent(account, "appData", serialise(appData->encode()));

    JsonObject object{{"token", JsonObject{{"token", token}}}, {"account", std::move(account)}};
    setIfPresent(object, "configurationMaxUpdatedDT", configurationMaxUpdatedDT);
    return object;
}

Configuration Configuration::decode(const KeyedContainer& in) {
    Configuration configuration;
    for (const auto& [name, entry] : in.required<JsonObject>("currencies")) {
        if (auto currency = readCurrency(name, entry)) configuration.currencies.emplace(name, *std::move(currency));
    }
    return configuration;
}

KavioCardModel KavioCardModel::decode(const KeyedContainer& in) {
    return {
        .amount = in.required<std::int64_t>("amount"),
        .decimalDigits = in.required<std::int64_t>("decimalDigits"),
        .currency = in.required<std::string>("currency"),
    };
}

JsonObject KavioCardModel::encode() const {
    return {{"amount", amount}, {"decimalDigits", decimalDigits}, {"currency", currency}};
}

std::vector<std::shared_ptr<const PaymentMethod>> paymentMethods(AccountModel&& account) {
    std::vector<std::shared_ptr<const PaymentMethod>> methods;
    methods.push_back(std::make_shared<DepositCard>("0", std::move(account.phone), PaymentMethod::PaymentType::KAVIO,
                                                    saturatingInteger(account.balance), std::move(account.currency),
                                                    account.currencyDecimalDigits));
    for (auto& card : publicObjects(std::move(account.tokenLocators))) methods.push_back(std::move(card));
    return methods;
}

}  // namespace kavio
