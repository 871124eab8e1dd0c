#include "models/order_vocabulary.h"

#include "models/ascii_text.h"
#include "models/enum_table.h"

#include <utility>

namespace kavio {
namespace {

constexpr auto orderStatuses = std::to_array<EnumRow<OrderStatus>>({
    {OrderStatus::failed, "failed"},
    {OrderStatus::timedOut, "timedout"},
    {OrderStatus::failedRefund, "failedrefund"},
    {OrderStatus::duplicated, "duplicated"},
    {OrderStatus::limitCheckFailed, "limitcheckfailed"},
    {OrderStatus::cooldownTokenLocator, "cooldowntokenlocator"},
    {OrderStatus::limitExceeded, "limitexceeded"},
    {OrderStatus::currencyMismatch, "currencymismatch"},
    {OrderStatus::invalidTokenLocator, "invalidtokenlocator"},
    {OrderStatus::refused, "refused"},
    {OrderStatus::created, "created"},
    {OrderStatus::createdPreselection, "createdpreselection"},
    {OrderStatus::started, "started"},
    {OrderStatus::startedPreselection, "startedpreselection"},
    {OrderStatus::deleted, "deleted"},
    {OrderStatus::cancelled, "cancelled"},
    {OrderStatus::expired, "expired"},
    {OrderStatus::authorized, "authorized"},
    {OrderStatus::completed, "completed"},
    {OrderStatus::freeTransaction, "freetransaction"},
    {OrderStatus::cardNotAllowed, "cardnotallowed"},
    {OrderStatus::unknown, "unknown"},
    {OrderStatus::proccessing, "proccessing"},
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
    switch (status) {
        case OrderStatus::failed:
        case OrderStatus::duplicated:
        case OrderStatus::limitCheckFailed:
        case OrderStatus::cooldownTokenLocator:
        case OrderStatus::limitExceeded:
        case OrderStatus::currencyMismatch:
        case OrderStatus::invalidTokenLocator:
        case OrderStatus::refused:
        case OrderStatus::cancelled:
        case OrderStatus::cardNotAllowed:
            return Order::Status::CANCELED;
        case OrderStatus::timedOut:
            return Order::Status::TIMEOUT;
        case OrderStatus::failedRefund:
        case OrderStatus::deleted:
        case OrderStatus::expired:
            return Order::Status::INCOMPLETE;
        case OrderStatus::created:
        case OrderStatus::createdPreselection:
        case OrderStatus::started:
        case OrderStatus::startedPreselection:
            return Order::Status::CREATED;
        case OrderStatus::authorized:
            return Order::Status::AUTHORIZED;
        case OrderStatus::completed:
            return Order::Status::COMPLETED;
        case OrderStatus::freeTransaction:
            return Order::Status::FREE_TRANSACTION;
        case OrderStatus::unknown:
        case OrderStatus::proccessing:
            return Order::Status::UNKNOWN;
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
