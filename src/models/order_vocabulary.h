#pragma once

#include "models/payment_model.h"

#include <kavio/order.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kavio {

/// The service's order states.
enum class OrderStatus {
    failed,
    timedOut,
    failedRefund,
    duplicated,
    limitCheckFailed,
    cooldownTokenLocator,
    limitExceeded,
    currencyMismatch,
    invalidTokenLocator,
    refused,
    created,
    createdPreselection,
    started,
    startedPreselection,
    deleted,
    cancelled,
    expired,
    authorized,
    completed,
    freeTransaction,
    cardNotAllowed,
    unknown,
    proccessing,
};
/// In upper or lower case; `unknown` for a text that is not a status.
OrderStatus orderStatus(std::string text);
/// The state as the application sees it.
Order::Status publicStatus(OrderStatus status);

/// What an order is, as text.
enum class OrderTypeStrings { vending, prePaidDeposit, balanceDeposit };
std::string_view wireText(OrderTypeStrings type);
/// `vending` for a text that is not a type.
OrderTypeStrings orderTypeStrings(std::string_view text);

/// What an order is, as a code.
enum class OrderType { UNKNOWN = -1, VENDING = 1, PREPAID_DEPOSIT = 2, BALANCE_DEPOSIT = 3, CASHBACK = 100 };
/// `UNKNOWN` for a code that is not a type.
OrderType orderType(std::int64_t code);

/// What paid, as an order names it, in upper or lower case; `unknown` for a text that is not a payment source.
PaymentProcessorType paymentSource(std::string text);

struct KavioConstants {
    /// What the user complained about.
    enum class FeedbackType {
        machineProblem = 0,
        missingProduct = 1,
        swallowedMoney = 2,
        other = 3,
        notReceived = 4,
        expiredProduct = 5,
        wrongCurrency = 6,
        noFeedback = 7,
    };
};
using FeedbackType = KavioConstants::FeedbackType;
std::optional<FeedbackType> feedbackType(std::int64_t code);

}  // namespace kavio
