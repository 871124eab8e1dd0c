#pragma once

#include <kavio/date.h>
#include <kavio/export.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kavio {

/// Marks what can be paid with.
class KAVIO_API PaymentMethodProtocol {
public:
    virtual ~PaymentMethodProtocol();

protected:
    PaymentMethodProtocol() = default;
    PaymentMethodProtocol(const PaymentMethodProtocol&) = default;
};

/// What the user can pay with: the wallet (a `DepositCard`), a stored `CreditCard`, or a `PrepaidCard`. Immutable.
class KAVIO_API PaymentMethod : public PaymentMethodProtocol {
public:
    /// What kind it is, by the service's codes.
    enum class PaymentType {
        UNKNOWN = 0,
        KAVIO = 1,  ///< the wallet's balance
        CREDIT_CARD = 2,
        PAYPAL = 3,
        PREPAID = 99,
    };
    /// Absent for a code that names no type.
    static std::optional<PaymentType> paymentType(std::int64_t rawValue);

    /// Sets the members of the same names.
    PaymentMethod(std::string id, std::string number, PaymentType type);

    /// "0" for the wallet, the service's token for a stored credit card, the card's identifier for a prepaid card.
    const std::string id;
    /// What to show: a phone number for the wallet, a masked number for a card.
    const std::string number;
    const PaymentType type;  ///< decides how a purchase is paid, whatever the class

    /// One line per member, for logs and tests.
    virtual std::string debugDescription() const;
};

/// A credit card that the service has stored.
class KAVIO_API CreditCard : public PaymentMethod {
public:
    /// Sets the members of the same names.
    CreditCard(std::string id, std::string number, PaymentType type, std::string brand = {});

    /// Empty when the service does not know it.
    const std::string brand;

    std::string debugDescription() const override;
};

/// What money can be added to: the wallet, or a prepaid card.
class KAVIO_API DepositCard : public PaymentMethod {
public:
    /// Sets the members of the same names.
    DepositCard(std::string id, std::string number, PaymentType type, std::int64_t balance = 0,
                std::string currency = {}, std::int64_t currencyDecimalDigits = 0);

    /// In the currency's smallest unit.
    const std::int64_t balance;
    /// ISO code.
    const std::string currency;
    /// How many decimal digits the currency has.
    const std::int64_t currencyDecimalDigits;

    std::string debugDescription() const override;
};

/// Its `balance` includes the limit up to which the card may be overdrawn.
class KAVIO_API PrepaidCard : public DepositCard {
public:
    /// Sets the members of the same names.
    PrepaidCard(std::string id, std::string number, PaymentType type, std::int64_t balance, bool isActive, Date created,
                std::string currency, std::int64_t currencyDecimalDigits, bool isMoney);
    /// Inactive, created at the start of 1970, not money.
    PrepaidCard(std::string id, std::string number, PaymentType type, std::int64_t balance, std::string currency,
                std::int64_t currencyDecimalDigits);

    const bool isActive;  ///< whether it can pay
    const Date created;   ///< of its creation; now, if what the service sent cannot be read
    const bool isMoney;   ///< as the service sends it

    std::string debugDescription() const override;
};

/// The enumerator's own name, such as "CREDIT_CARD".
KAVIO_API std::string_view name(PaymentMethod::PaymentType type);

}  // namespace kavio
