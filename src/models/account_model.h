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
    bool okResponse;
    static LogOutResponse decode(const KeyedContainer& in);
};

enum class OrderMachines { RECENT = 0, FAVORITE = 1, NEARBY = 2 };
enum class OrderPaymentMethods { RECENT = 0, FAVORITE = 1 };

/// The application's preferences, which the service keeps as a text without looking into it.
struct AppData {
    OrderMachines machinesOrder;
    OrderPaymentMethods paymentMethodsOrder;
    std::int64_t lastEarnedCashback;
    static AppData decode(const KeyedContainer& in);
    JsonObject encode() const;
};

/// The signed-in user. The members are in the order in which they are read.
struct AccountModel {
    std::optional<std::string> configurationMaxUpdatedDT;
    std::string token;
    std::string phone;
    std::string email;
    std::string country;
    std::string currency;
    std::string firstName;
    std::string lastName;
    double balance;
    std::int64_t currencyDecimalDigits;
    std::string paypalClientId;
    std::optional<bool> marketingConfirmation;
    bool preventPayPalDirectPayment;
    bool preventCreditCardDirectPayment;
    bool preventBalanceCardDirectPayment;
    bool preventPayPalTopUpDeposit;
    bool preventCreditCardTopUpDeposit;
    bool preventGPayTopUpDeposit;
    std::vector<PaymentCardModel> tokenLocators;
    std::optional<std::int64_t> gamificationTotalGamePlayed;
    std::optional<std::int64_t> gamificationHighScore;
    std::optional<std::int64_t> gamificationTotalAmountOfCashback;
    std::optional<AppData> appData;
    static AccountModel decode(const KeyedContainer& in);
    NestedObject encode() const;
};

/// What the account pays with: the wallet, then the stored cards in their order.
std::vector<std::shared_ptr<const PaymentMethod>> paymentMethods(AccountModel&& account);

}  // namespace kavio
