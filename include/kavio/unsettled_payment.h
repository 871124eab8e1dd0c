#pragma once

#include <kavio/date.h>
#include <kavio/export.h>
#include <kavio/order.h>
#include <kavio/payment_method.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kavio {

/// A purchase or a top-up that was started and is not known to be over: it may have been paid, or may still be. Written
/// to the device's store before its first byte leaves, so that it outlasts the program.
struct UnsettledPayment {
    /// What was started: a purchase, or a top-up.
    enum class Kind { ORDER, DEPOSIT };

    /// The library's own identifier, for `settlePayment` and `forgetPayment`; not the order's.
    std::string id = {};
    Kind kind = Kind::ORDER;  ///< what was started
    /// By the service's clock.
    Date startedAt = {};
    /// The machine of a purchase.
    std::optional<std::int64_t> kavioId = std::nullopt;
    /// In the currency's smallest unit.
    std::int64_t amount = 0;
    /// Where it is known: for a deposit, and for an order once the service has named it.
    std::optional<std::string> currency = std::nullopt;
    /// What pays for a purchase, or what a deposit adds to.
    std::string paymentMethodId = {};
    PaymentMethod::PaymentType paymentType = PaymentMethod::PaymentType::UNKNOWN;  ///< the type of that
    /// The stored card that pays for a deposit.
    std::optional<std::string> chargedCardId = std::nullopt;
    /// Known once the service has answered the purchase.
    std::optional<std::string> orderId = std::nullopt;
    /// The last status that the service reported.
    std::optional<Order::Status> status = std::nullopt;
};

/// The enumerator's own name, such as "DEPOSIT".
KAVIO_API std::string_view name(UnsettledPayment::Kind kind);

}  // namespace kavio
