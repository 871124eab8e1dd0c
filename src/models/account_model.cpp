#include "models/account_model.h"

#include "models/json/decoding_error.h"
#include "models/json/document.h"
#include "models/json/json_value.h"
#include "models/json/keyed_container.h"
#include "models/saturating.h"

namespace kavio {

Challenge Challenge::decode(const KeyedContainer& in) {
    const auto inner = in.nested("challenge");
    return {
        .challenge = inner.required("challenge"),
        .phone = inner.required("phone"),
        .retryTimeoutSeconds = std::to_string(std::int64_t{inner.required("retryTimeoutSeconds")}),
    };
}

Token Token::decode(const KeyedContainer& in) {
    const auto inner = in.nested("token");
    return {.token = inner.required("token")};
}

LogOutResponse LogOutResponse::decode(const KeyedContainer& in) { return {.okResponse = in.required("ok")}; }

namespace {

// Codes that this version does not know get a default: FAVORITE here, RECENT below.
OrderMachines orderMachines(std::int64_t code) {
    if (code == 0) return OrderMachines::RECENT;
    return code == 2 ? OrderMachines::NEARBY : OrderMachines::FAVORITE;
}

OrderPaymentMethods orderPaymentMethods(std::int64_t code) {
    return code == 1 ? OrderPaymentMethods::FAVORITE : OrderPaymentMethods::RECENT;
}

/// A text that holds anything else must not fail the account.
std::optional<AppData> readAppData(const std::optional<std::string>& text) {
    if (!text) return std::nullopt;
    try {
        return decodeDocument<AppData>(*text);
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

}  // namespace

AppData AppData::decode(const KeyedContainer& in) {
    return {
        .machinesOrder = orderMachines(in.required("machinesOrder")),
        .paymentMethodsOrder = orderPaymentMethods(in.required("paymentMethodsOrder")),
        .lastEarnedCashback = in.required("lastEarnedCashback"),
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
    std::optional<std::string> configurationMaxUpdatedDT = in.optional("configurationMaxUpdatedDT");
    auto token = Token::decode(in).token;
    const auto account = in.nested("account");
    return {
        .configurationMaxUpdatedDT = std::move(configurationMaxUpdatedDT),
        .token = std::move(token),
        .phone = account.required("phone"),
        .email = account.optional("email", ""),
        .country = account.required("country"),
        .currency = account.required("currency"),
        .firstName = account.optional("firstName", ""),
        .lastName = account.optional("lastName", ""),
        .balance = account.required("balance"),
        .currencyDecimalDigits = account.required("currencyDecimalDigits"),
        .paypalClientId = account.required("paypalClientId"),
        .marketingConfirmation = account.optional("marketingConfirmation"),
        .preventPayPalDirectPayment = account.optional("preventPayPalDirectPayment", false),
        .preventCreditCardDirectPayment = account.optional("preventCreditCardDirectPayment", false),
        .preventBalanceCardDirectPayment = account.optional("preventBalanceCardDirectPayment", false),
        .preventPayPalTopUpDeposit = account.optional("preventPayPalTopUpDeposit", false),
        .preventCreditCardTopUpDeposit = account.optional("preventCreditCardTopUpDeposit", false),
        .preventGPayTopUpDeposit = account.optional("preventGPayTopUpDeposit", false),
        .tokenLocators = account.orEmpty("tokenLocators"),
        .gamificationTotalGamePlayed = account.optional("gameficationTotalGamePlayed"),
        .gamificationHighScore = account.optional("gameficationHighScore"),
        .gamificationTotalAmountOfCashback = account.optional("gameficationTotalAmountOfCashback"),
        .appData = readAppData(account.optional("appData")),
    };
}

NestedObject AccountModel::encode() const {
    NestedObject account(JsonObject{
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
    });
    auto& cards = account["tokenLocators"] = JsonValue::array();
    for (const auto& card : tokenLocators) cards.push_back(card.encode());
    setIfPresent(account, "marketingConfirmation", marketingConfirmation);
    setIfPresent(account, "gameficationTotalGamePlayed", gamificationTotalGamePlayed);
    setIfPresent(account, "gameficationHighScore", gamificationHighScore);
    setIfPresent(account, "gameficationTotalAmountOfCashback", gamificationTotalAmountOfCashback);
    if (appData) setIfPresent(account, "appData", serialise(appData->encode()));

    NestedObject object;
    object.add("token", JsonObject{{"token", token}});
    object.add("account", std::move(account));
    setIfPresent(object, "configurationMaxUpdatedDT", configurationMaxUpdatedDT);
    return object;
}

std::vector<std::shared_ptr<const PaymentMethod>> paymentMethods(AccountModel&& account) {
    std::vector<std::shared_ptr<const PaymentMethod>> methods;
    methods.push_back(std::make_shared<DepositCard>("0", std::move(account.phone), PaymentMethod::PaymentType::KAVIO,
                                                    saturatingInteger(account.balance), std::move(account.currency),
                                                    account.currencyDecimalDigits));
    for (auto& card : account.tokenLocators) methods.push_back(publicObject(std::move(card)));
    return methods;
}

}  // namespace kavio
