#include "models/payment_model.h"

#include "models/ascii_text.h"
#include "models/date_text.h"
#include "models/enum_table.h"
#include "models/json/json_value.h"
#include "models/json/keyed_container.h"
#include "models/saturating.h"

namespace kavio {
namespace {

constexpr EnumRow<PaymentProcessorType> processorTypes[] = {
    {PaymentProcessorType::balance, "balance"},     {PaymentProcessorType::creditCard, "ecommerce"},
    {PaymentProcessorType::prepaidCard, "prepaid"}, {PaymentProcessorType::paypal, "paypal"},
    {PaymentProcessorType::gpay, "gpay"},           {PaymentProcessorType::unspecified, "Unspecified"},
    {PaymentProcessorType::unknown, "unknown"},     {PaymentProcessorType::cashback, "cashback"},
};

// A stored card has a vocabulary of its own.
constexpr EnumRow<PaymentProcessorType> storedCardProcessorTypes[] = {
    {PaymentProcessorType::paypal, "paypal"},
    {PaymentProcessorType::creditCard, "paymentcard"},
};

constexpr EnumRow<CardStatus> cardStatuses[] = {
    {CardStatus::unknown, "unknown"},
    {CardStatus::activeStatus, "activeStatus"},
    {CardStatus::nonActivateStatus, "nonActivateStatus"},
    {CardStatus::blackListStatus, "blackListStatus"},
    {CardStatus::replacedCardStatus, "replacedCardStatus"},
    {CardStatus::penddingStatus, "penddingStatus"},
};

constexpr double virtualCardCode = 30000601;

std::string integerText(const KeyedContainer& in, Key key) { return std::to_string(in.required<std::int64_t>(key)); }

PaymentProcessorType storedCardProcessorType(const KeyedContainer& in) {
    const auto text = lowercased(in.required<std::string>("processorType"));
    return withText(storedCardProcessorTypes, text).value_or(PaymentProcessorType::unknown);
}

}  // namespace

std::string_view wireText(PaymentProcessorType type) { return textOf(processorTypes, type); }

std::optional<PaymentProcessorType> paymentProcessorType(std::string_view text) {
    return withText(processorTypes, text);
}

PaymentCardModel PaymentCardModel::decode(const KeyedContainer& in) {
    return {
        .locator = in.required<std::string>("locator"),
        .securityCode = integerText(in, "securityCode"),
        .label = in.required<std::string>("label"),
        .issuer = in.optional<std::string>("issuer"),
        .month = integerText(in, "month"),
        .year = integerText(in, "year"),
        .processorType = storedCardProcessorType(in),
        .cardId = in.required<std::int64_t>("id"),
    };
}

JsonObject PaymentCardModel::encode() const {
    JsonObject object{
        {"locator", locator},
        {"securityCode", decimalInteger(securityCode).value_or(0)},
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
    // The same card as in a list of stored ones, but read in another order, and sure of other members.
    const auto card = in.nested("locator");
    PaymentCardModel model;
    model.locator = card.required<std::string>("locator");
    model.label = card.required<std::string>("label");
    model.month = integerText(card, "month");
    model.year = integerText(card, "year");
    model.securityCode = integerText(card, "securityCode");
    model.issuer = card.required<std::string>("issuer");
    model.cardId = card.optional<std::int64_t>("id", 0);
    model.processorType = storedCardProcessorType(card);
    return {.creditCard = std::move(model)};
}

PrepaidCardModel PrepaidCardModel::decode(const KeyedContainer& in) {
    PrepaidCardModel model;
    model.cardId = std::to_string(in.required<std::uint64_t>("cardId"));
    model.cardNumber = in.optional<std::string>("cardNumber", "");
    model.revalue = in.required<bool>("revalue");
    model.balance = in.required<std::int64_t>("balance");
    model.cardLimit = in.required<std::int64_t>("cardLimit");
    model.cardHolderName = in.optional<std::string>("cardHolderName", "");
    model.cardIssuerName = in.optional<std::string>("cardIssuerName", "");
    const auto statusCode = saturatingInteger(in.required<double>("cardStatus"));
    model.cardStatus = withCode(cardStatuses, statusCode).value_or(CardStatus::unknown);
    model.created = DateText::parse(in.required<std::string>("createdTime")).value_or(DateText::now());
    const bool isVirtual = in.required<double>("cardType") == virtualCardCode;
    model.cardType = isVirtual ? CardType::virtualCard : CardType::physicalCard;
    const auto currency = in.nested("currency");
    model.currencyCode = currency.required<std::string>("code");
    model.currencyDecimalDigits = currency.required<std::int64_t>("decimalDigits");
    model.fullOperatorTree = in.required<std::vector<double>>("fullTreeOperatorsField");
    model.isMoney = in.required<bool>("isMoney");
    return model;
}

PrepaidsList PrepaidsList::decode(const KeyedContainer& in) {
    return {.prepaids = in.required<std::vector<PrepaidCardModel>>("prepaidCards")};
}

DepositModel DepositModel::decode(const KeyedContainer& in) {
    const auto deposit = in.nested("deposit");
    return {.balance = deposit.required<std::int64_t>("balance")};
}

std::shared_ptr<const CreditCard> publicObject(PaymentCardModel&& model) {
    return std::make_shared<CreditCard>(std::move(model.locator), std::move(model.label),
                                        PaymentMethod::PaymentType::CREDIT_CARD,
                                        std::move(model.issuer).value_or(std::string()));
}

std::shared_ptr<const PrepaidCard> publicObject(PrepaidCardModel&& model) {
    const auto available = model.cardLimit < 0 ? model.balance : saturatingSum(model.balance, model.cardLimit);
    return std::make_shared<PrepaidCard>(std::move(model.cardId), std::move(model.cardNumber),
                                         PaymentMethod::PaymentType::PREPAID, available,
                                         model.cardStatus == CardStatus::activeStatus, model.created,
                                         std::move(model.currencyCode), model.currencyDecimalDigits, model.isMoney);
}

}  // namespace kavio
