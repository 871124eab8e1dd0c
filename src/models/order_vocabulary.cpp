#include "models/order_vocabulary.h"

#include "models/ascii_text.h"
#include "models/enum_table.h"

#include <utility>

namespace kavio {
namespace {

struct OrderStatusRow {
    OrderStatus value;
    std::string_view text;
    Order::Status publicStatus;
};

constexpr auto orderStatuses = std::to_array<OrderStatusRow>({
    {OrderStatus::failed, "failed", Order::Status::CANCELED},
    {OrderStatus::timedOut, "timedout", Order::Status::TIMEOUT},
    {OrderStatus::failedRefund, "failedrefund", Order::Status::INCOMPLETE},
    {OrderStatus::duplicated, "duplicated", Order::Status::CANCELED},
    {OrderStatus::limitCheckFailed, "limitcheckfailed", Order::Status::CANCELED},
    {OrderStatus::cooldownTokenLocator, "cooldowntokenlocator", Order::Status::CANCELED},
    {OrderStatus::limitExceeded, "limitexceeded", Order::Status::CANCELED},
    {OrderStatus::currencyMismatch, "currencymismatch", Order::Status::CANCELED},
    {OrderStatus::invalidTokenLocator, "invalidtokenlocator", Order::Status::CANCELED},
    {OrderStatus::refused, "refused", Order::Status::CANCELED},
    {OrderStatus::created, "created", Order::Status::CREATED},
    {OrderStatus::createdPreselection, "createdpreselection", Order::Status::CREATED},
    {OrderStatus::started, "started", Order::Status::CREATED},
    {OrderStatus::startedPreselection, "startedpreselection", Order::Status::CREATED},
    {OrderStatus::deleted, "deleted", Order::Status::INCOMPLETE},
    {OrderStatus::cancelled, "cancelled", Order::Status::CANCELED},
    {OrderStatus::expired, "expired", Order::Status::INCOMPLETE},
    {OrderStatus::authorized, "authorized", Order::Status::AUTHORIZED},
    {OrderStatus::completed, "completed", Order::Status::COMPLETED},
    {OrderStatus::freeTransaction, "freetransaction", Order::Status::FREE_TRANSACTION},
    {OrderStatus::cardNotAllowed, "cardnotallowed", Order::Status::CANCELED},
    {OrderStatus::unknown, "unknown", Order::Status::UNKNOWN},
    {OrderStatus::proccessing, "proccessing", Order::Status::UNKNOWN},
});

constexpr auto orderTypeTexts = KAVIO_ENUMERATORS(OrderTypeStrings, vending, prePaidDeposit, balanceDeposit);

constexpr auto orderTypes = KAVIO_ENUMERATORS(OrderType, UNKNOWN, VENDING, PREPAID_DEPOSIT, BALANCE_DEPOSIT, CASHBACK);

constexpr auto feedbackTypes =
    KAVIO_ENUMERATORS(KavioConstants::FeedbackType, machineProblem, missingProduct, swallowedMoney, other, notReceived,
                      expiredProduct, wrongCurrency, noFeedback);

}  // namespace

OrderStatus orderStatus(std::string text) {
    return withText(orderStatuses, lowercased(std::move(text))).value_or(OrderStatus::unknown);
}

Order::Status publicStatus(OrderStatus status) {
    for (const auto& row : orderStatuses) {
        if (row.value == status) return row.publicStatus;
    }
    return Order::Status::UNKNOWN;
}

std::string_view wireText(OrderTypeStrings type) { return textOf(orderTypeTexts, type); }

OrderTypeStrings orderTypeStrings(std::string_view text) {
    return withText(orderTypeTexts, text).value_or(OrderTypeStrings::vending);
}

OrderType orderType(std::int64_t code) { return withCode(orderTypes, code).value_or(OrderType::UNKNOWN); }

PaymentProcessorType paymentSource(std::string text) {
    return paymentProcessorType(lowercased(std::move(text))).value_or(PaymentProcessorType::unknown);
}

std::optional<FeedbackType> feedbackType(std::int64_t code) { return withCode(feedbackTypes, code); }

}  // namespace kavio
