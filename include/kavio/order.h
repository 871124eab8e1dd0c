#pragma once

#include <kavio/date.h>
#include <kavio/export.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kavio {

/// One payment at a machine, one top-up, or one cashback. Immutable.
struct KAVIO_API Order {
    /// How far the order has come, by the service's codes; `isFinal` tells which of them end it.
    enum class Status {
        UNKNOWN = 0,
        COMPLETED = 1,
        CREATED = 2,
        AUTHORIZED = 3,
        CANCELED = 4,
        FREE_TRANSACTION = 5,
        TIMEOUT = 6,
        INCOMPLETE = 7,
    };
    /// Absent for a code that names no status.
    static std::optional<Status> orderStatus(std::int64_t rawValue);

    const std::string id;  ///< for `Kavio::getOrder`
    /// "vending", "prePaidDeposit" or "balanceDeposit".
    const std::string type;
    const Status status;  ///< `UNKNOWN` also for one that this version does not know
    /// "balance", "ecommerce" (a credit card), "prepaid", "paypal", "gpay", "cashback" or "unknown".
    const std::string paymentSource;
    /// In the currency's smallest unit; -1 when the service sent none.
    const std::int64_t amount;
    const Date date;                            ///< of its creation; now, if what the service sent cannot be read
    const std::optional<std::string> currency;  ///< ISO code
    const std::int64_t itemsCount;              ///< how many items it names
    /// In the currency's smallest unit; -1 when the service sent none.
    const std::int64_t endingBalance;

    /// One line per member, for logs and tests.
    std::string debugDescription() const;
};

/// Whether an order with this status is over, so that nothing about it will change. `UNKNOWN`, `CREATED` and
/// `AUTHORIZED` are not final.
KAVIO_API bool isFinal(Order::Status status);

/// The enumerator's own name, such as "COMPLETED".
KAVIO_API std::string_view name(Order::Status status);

}  // namespace kavio
