#pragma once

#include "models/json/json_types.h"
#include "models/payment_model.h"

#include <kavio/payment_method.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kavio {

/// Reply to a login: the challenge that the one-time code answers.
struct Challenge {
    std::string challenge;
    std::string phone;
    std::string retryTimeoutSeconds;  // arrives as an integer
    static Challenge decode(const KeyedContainer& in);
};

/// Reply to a verification: the session token.
struct Token {
    std::string token;
    static Token decode(const KeyedContainer& in);
};

/// Reply to a logout.
struct LogOutResponse {
    bool okResponse = false;
    static LogOutResponse decode(const KeyedContainer& in);
};

enum class OrderMachines { RECENT = 0, FAVORITE = 1, NEARBY = 2 };
enum class OrderPaymentMethods { RECENT = 0, FAVORITE = 1 };

/// Preferences of the application, which the service keeps as a text that it does not look into.
struct AppData {
    OrderMachines machinesOrder = OrderMachines::RECENT;
    OrderPaymentMethods paymentMethodsOrder = OrderPaymentMethods::RECENT;
    std::int64_t lastEarnedCashback = 0;
    static AppData decode(const KeyedContainer& in);
    JsonObject encode() const;
};

/// The signed-in user.
struct AccountModel {
    std::string firstName;
    std::string lastName;
    std::string phone;
    std::string email;
    std::string country;
    std::string currency;
    double balance = 0;
    std::int64_t currencyDecimalDigits = 0;
    std::string paypalClientId;
    std::vector<PaymentCardModel> tokenLocators;
    std::string token;
    std::optional<bool> marketingConfirmation;
    std::optional<std::string> configurationMaxUpdatedDT;
    bool preventPayPalDirectPayment = false;
    bool preventCreditCardDirectPayment = false;
    bool preventBalanceCardDirectPayment = false;
    bool preventPayPalTopUpDeposit = false;
    bool preventCreditCardTopUpDeposit = false;
    bool preventGPayTopUpDeposit = false;
    std::optional<std::int64_t> gamificationTotalGamePlayed;
    std::optional<std::int64_t> gamificationHighScore;
    std::optional<std::int64_t> gamificationTotalAmountOfCashback;
    std::optional<AppData> appData;
    static AccountModel decode(const KeyedContainer& in);
    JsonObject encode() const;
};

struct CurrencyModel {
    std::string currencyName;
    std::int64_t decimalDigits = 0;
    std::int64_t minimumAmount = 0;
    std::int64_t maximumAmount = 0;
    std::int64_t balanceFallsJumps = 0;
    std::optional<std::string> currencySign;
};

/// What the service allows, by currency code. An entry that is no currency is left out.
struct Configuration {
    std::map<std::string, CurrencyModel> currencies;
    static Configuration decode(const KeyedContainer& in);
};

/// The wallet's balance.
struct KavioCardModel {
    std::int64_t amount = 0;
    std::int64_t decimalDigits = 0;
    std::string currency;
    static KavioCardModel decode(const KeyedContainer& in);
    JsonObject encode() const;
};

/// What the account pays with: the wallet, then the stored cards in their order.
std::vector<std::shared_ptr<const PaymentMethod>> paymentMethods(AccountModel&& account);

}  // namespace kavio
