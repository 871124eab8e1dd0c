#pragma once

#include "models/json/json_types.h"

#include <kavio/date.h>
#include <kavio/payment_method.h>
#include <kavio/secret.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kavio {

class KeyedContainer;

/// Who processes a payment.
enum class PaymentProcessorType { balance, creditCard, prepaidCard, paypal, gpay, unspecified, unknown, cashback };
/// The text that stands for it in a reply, and in `Order::paymentSource`.
std::string_view wireText(PaymentProcessorType type);
/// Absent unless `text` is exactly one of those texts.
std::optional<PaymentProcessorType> paymentProcessorType(std::string_view text);

/// A stored card.
struct PaymentCardModel {
    std::string locator;
    SecretText securityCode;  // this and the expiry arrive as integers
    std::string label;
    std::optional<std::string> issuer;
    std::string month;
    std::string year;
    PaymentProcessorType processorType;
    std::int64_t cardId;
    static PaymentCardModel decode(const KeyedContainer& in);
    /// To be stored: without the security code.
    JsonObject encode() const;
};

/// Reply to adding a card without 3-D Secure.
struct AddCreditCardResponse {
    PaymentCardModel creditCard;
    static AddCreditCardResponse decode(const KeyedContainer& in);
};

/// Reply to removing a card.
struct DeleteCreditResponse {};

enum class CardStatus {
    unknown = 0,
    activeStatus = 1,
    nonActivateStatus = 2,
    blackListStatus = 4,
    replacedCardStatus = 9,
    penddingStatus = 32,
};

enum class CardType { virtualCard, physicalCard };

/// A prepaid card. Which of the known operators it belongs to is not worked out, as nothing asks for it.
struct PrepaidCardModel {
    std::string cardId;  // arrives as an integer
    std::string cardNumber;
    bool revalue;
    std::int64_t balance;
    std::int64_t cardLimit;  // how far the card may be overdrawn; negative for not at all
    std::string cardHolderName;
    std::string cardIssuerName;
    CardStatus cardStatus;
    Date created;
    CardType cardType;
    std::string currencyCode;
    std::int64_t currencyDecimalDigits;
    std::vector<double> fullOperatorTree;
    bool isMoney;
    static PrepaidCardModel decode(const KeyedContainer& in);
};

/// Reply that lists the user's prepaid cards.
struct PrepaidsList {
    std::vector<PrepaidCardModel> prepaids;
    static PrepaidsList decode(const KeyedContainer& in);
};

/// Reply to a deposit.
struct DepositModel {
    std::optional<std::int64_t> balance;
    std::optional<std::string> id;  // of the order, where the reply says it
    static DepositModel decode(const KeyedContainer& in);
};

std::shared_ptr<const CreditCard> publicObject(PaymentCardModel model);
std::shared_ptr<const PrepaidCard> publicObject(PrepaidCardModel model);

}  // namespace kavio
