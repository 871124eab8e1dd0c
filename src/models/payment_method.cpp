#include "models/enum_table.h"

#include <kavio/payment_method.h>

#include <utility>

namespace kavio {
namespace {

constexpr auto paymentTypes =
    KAVIO_ENUMERATORS(PaymentMethod::PaymentType, UNKNOWN, KAVIO, CREDIT_CARD, PAYPAL, PREPAID);

}  // namespace

std::string_view name(PaymentMethod::PaymentType type) { return textOf(paymentTypes, type); }

PaymentMethodProtocol::~PaymentMethodProtocol() = default;

std::optional<PaymentMethod::PaymentType> PaymentMethod::paymentType(std::int64_t rawValue) {
    return withCode(paymentTypes, rawValue);
}

PaymentMethod::PaymentMethod(std::string id_, std::string number_, PaymentType type_)
    : id(std::move(id_)), number(std::move(number_)), type(type_) {}

CreditCard::CreditCard(std::string id_, std::string number_, PaymentType type_, std::string brand_)
    : PaymentMethod(std::move(id_), std::move(number_), type_), brand(std::move(brand_)) {}

DepositCard::DepositCard(std::string id_, std::string number_, PaymentType type_, std::int64_t balance_,
                         std::string currency_, std::int64_t currencyDecimalDigits_)
    : PaymentMethod(std::move(id_), std::move(number_), type_),
      balance(balance_),
      currency(std::move(currency_)),
      currencyDecimalDigits(currencyDecimalDigits_) {}

PrepaidCard::PrepaidCard(std::string id_, std::string number_, PaymentType type_, std::int64_t balance_, bool isActive_,
                         Date created_, std::string currency_, std::int64_t currencyDecimalDigits_, bool isMoney_)
    : DepositCard(std::move(id_), std::move(number_), type_, balance_, std::move(currency_), currencyDecimalDigits_),
      isActive(isActive_),
      created(created_),
      isMoney(isMoney_) {}

PrepaidCard::PrepaidCard(std::string id_, std::string number_, PaymentType type_, std::int64_t balance_,
                         std::string currency_, std::int64_t currencyDecimalDigits_)
    : PrepaidCard(std::move(id_), std::move(number_), type_, balance_, false, {}, std::move(currency_),
                  currencyDecimalDigits_, false) {}

}  // namespace kavio
