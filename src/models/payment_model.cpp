#include "models/payment_model.h"

#include "models/ascii_text.h"
#include "models/date_text.h"
#include "models/enum_table.h"
#include "models/json/json_value.h"
#include "models/json/keyed_container.h"
#include "models/saturating.h"

namespace kavio {
namespace {

constexpr auto processorTypes = std::to_array<EnumRow<PaymentProcessorType>>({
    {PaymentProcessorType::balance, "balance"},
    {PaymentProcessorType::creditCard, "ecommerce"},
    {PaymentProcessorType::prepaidCard, "prepaid"},
    {PaymentProcessorType::paypal, "paypal"},
    {PaymentProcessorType::gpay, "gpay"},
    {PaymentProcessorType::unspecified, "Unspecified"},
    {PaymentProcessorType::unknown, "unknown"},
    {PaymentProcessorType::cashback, "cashback"},
});

// A stored card has its own vocabulary.
constexpr auto storedCardProcessorTypes = std::to_array<EnumRow<PaymentProcessorType>>({
    {PaymentProcessorType::paypal, "paypal"},
    {PaymentProcessorType::creditCard, "paymentcard"},
});

constexpr auto cardStatuses = KAVIO_ENUMERATORS(CardStatus, unknown, activeStatus, nonActivateStatus, blackListStatus,
                                                replacedCardStatus, penddingStatus);

constexpr double virtualCardCode = 30000601;

std::string integerText(const KeyedContainer& in, Key key) { return std::to_string(std::int64_t{in.required(key)}); }

PaymentProcessorType storedCardProcessorType(const KeyedContainer& in) {
    const auto text = lowercased(in.required("processorType"));
    return withText(storedCardProcessorTypes, text).value_or(PaymentProcessorType::unknown);
}

}  // namespace

std::string_view wireText(PaymentProcessorType type) { return textOf(processorTypes, type); }

std::optional<PaymentProcessorType> paymentProcessorType(std::string_view text) {
    return withText(processorTypes, text);
}

PaymentCardModel PaymentCardModel::decode(const KeyedContainer& in) {
    return {
        .locator = in.required("locator"),
        .securityCode = integerText(in, "securityCode"),
        .label = in.required("label"),
        .issuer = in.optional("issuer"),
        .month = integerText(in, "month"),
        .year = integerText(in, "year"),
        .processorType = storedCardProcessorType(in),
        .cardId = in.required("id"),
    };
}

JsonObject PaymentCardModel::encode() const {
    JsonObject object{
        {"locator", locator},
        {"securityCode", 0},  // so that a stored card still decodes
        {"label", label},
        {"month", decimalInteger(month).value_or(0)},
        {"year", decimalInteger(year).value_or(0)},
        {"processorType", textOf(storedCardProcessorTypes, processorType)},
        {"id", cardId},
    };
    setIfPresent(object, "issuer", issuer);
    return object;
}

AddCreditCardResponse AddCreditCardResponse::decode(const KeyedContainer& in) {
    // The same card as in a list of stored ones, but read in a different order and with different required members.
    const auto card = in.nested("locator");
    PaymentCardModel model{};
    model.locator = card.required("locator");
    model.label = card.required("label");
    model.month = integerText(card, "month");
    model.year = integerText(card, "year");
    model.securityCode = integerText(card, "securityCode");
    model.issuer = card.required("issuer");
    model.cardId = card.optional("id", 0);
    model.processorType = storedCardProcessorType(card);
    return {.creditCard = std::move(model)};
}

PrepaidCardModel PrepaidCardModel::decode(const KeyedContainer& in) {
    PrepaidCardModel model{};
    model.cardId = std::to_string(std::uint64_t{in.required("cardId")});
    model.cardNumber = in.optional("cardNumber", "");
    model.revalue = in.required("revalue");
    model.balance = in.required("balance");
    model.cardLimit = in.required("cardLimit");
    model.cardHolderName = in.optional("cardHolderName", "");
    model.cardIssuerName = in.optional("cardIssuerName", "");
    const auto statusCode = saturatingInteger(in.required("cardStatus"));
    model.cardStatus = withCode(cardStatuses, statusCode).value_or(CardStatus::unknown);
    model.created = DateText::parse(std::string(in.required("createdTime"))).value_or(DateText::now());
    const double cardType = in.required("cardType");
    model.cardType = cardType == virtualCardCode ? CardType::virtualCard : CardType::physicalCard;
    const auto currency = in.nested("currency");
    model.currencyCode = currency.required("code");
    model.currencyDecimalDigits = currency.required("decimalDigits");
    model.fullOperatorTree = in.required("fullTreeOperatorsField");
    model.isMoney = in.required("isMoney");
    return model;
}

PrepaidsList PrepaidsList::decode(const KeyedContainer& in) { return {.prepaids = in.required("prepaidCards")}; }

DepositModel DepositModel::decode(const KeyedContainer& in) {
    const auto deposit = in.nested("deposit");
    const auto id = deposit.integerIfInteger("id");
    return {.balance = deposit.required("balance"), .id = id ? std::optional(std::to_string(*id)) : std::nullopt};
}

std::shared_ptr<const CreditCard> publicObject(PaymentCardModel model) {
    return std::make_shared<CreditCard>(std::move(model.locator), std::move(model.label),
                                        PaymentMethod::PaymentType::CREDIT_CARD,
                                        std::move(model.issuer).value_or(std::string()));
}

std::shared_ptr<const PrepaidCard> publicObject(PrepaidCardModel model) {
    const auto available = model.cardLimit < 0 ? model.balance : saturatingSum(model.balance, model.cardLimit);
    return std::make_shared<PrepaidCard>(std::move(model.cardId), std::move(model.cardNumber),
                                         PaymentMethod::PaymentType::PREPAID, available,
                                         model.cardStatus == CardStatus::activeStatus, model.created,
                                         std::move(model.currencyCode), model.currencyDecimalDigits, model.isMoney);
}

}  // namespace kavio
