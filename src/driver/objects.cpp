#include "driver/objects.h"

namespace kavio {

using driver::Json;

namespace {

template <class Object>
void addDebug(Json& json, const Object& object) {
    if constexpr (requires { object.debugDescription(); }) json["debug"] = object.debugDescription();
}

}  // namespace

/// Writes the members of a `Type`, in that order. The JSON library's own macros, which know these two names.
#define KAVIO_TO_JSON(Type, ...)                                                 \
    void to_json(Json& nlohmann_json_j, const Type& nlohmann_json_t) {           \
        NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(NLOHMANN_JSON_TO, __VA_ARGS__)) \
        addDebug(nlohmann_json_j, nlohmann_json_t);                              \
    }

void to_json(Json& json, const KavioResult& result) {
    json = {{"type", result.type},
            {"message", result.message},
            {"debug", result.debugDescription()},
            {"effect", result.effect},
            {"cause", result.cause}};
}

KAVIO_TO_JSON(Machine, id, kavioId, operatorName, isWalletAllowed, latitude, longitude, type, campaigns, name, country,
              city, hwSerial, supportRemoteVend, multiVendCount, machineStatus)

KAVIO_TO_JSON(Campaign, id, name, title, description, punched, totalPunches, created, updated, expiration, imageUrl,
              punchCardId, lookAndFeel)

KAVIO_TO_JSON(LookAndFeel, imageUrl, backgroudColor, textColor, receiptText, punchCardText, images)

KAVIO_TO_JSON(Image, file, width, height, wasUploaded, dpi, iOS)

KAVIO_TO_JSON(Product, machineProductId, id, name, department, cashPrice, cardPrice, exPrepaidPrice, machinePrice,
              preapidPrice, commissionValue, paCode, opButtonCode, opRowCode, opColCode, imageUrl, ageVerification,
              memberType, image, codeInMap, missingProduct, vendOut, retailPrice, par, missingStockByMdb,
              mdbMissingStockLastUpdated, dexMissingStockLastUpdated, lastSaleDt, lastSaleMdbDt, slowMover)

KAVIO_TO_JSON(Order, id, type, status, paymentSource, amount, date, currency, itemsCount, endingBalance)

KAVIO_TO_JSON(UnsettledPayment, id, kind, startedAt, kavioId, amount, paymentMethodId, paymentType, orderId, status)

namespace {

void append(Json& json, const CreditCard& card) { json["brand"] = card.brand; }

void append(Json& json, const DepositCard& card) {
    json["balance"] = card.balance;
    json["currency"] = card.currency;
    json["currencyDecimalDigits"] = card.currencyDecimalDigits;
}

void append(Json& json, const PrepaidCard& card) {
    append(json, static_cast<const DepositCard&>(card));
    json["isActive"] = card.isActive;
    json["created"] = card.created;
    json["isMoney"] = card.isMoney;
}

/// Whether `method` is a `Kind`; then its own members are written too.
template <class Kind>
bool append(Json& json, const PaymentMethod& method, const char* kind) {
    const auto* const card = dynamic_cast<const Kind*>(&method);
    if (card == nullptr) return false;
    json["class"] = kind;
    append(json, *card);
    return true;
}

}  // namespace

void to_json(Json& json, const PaymentMethod& method) {
    json = {{"class", "PaymentMethod"}, {"id", method.id}, {"number", method.number}, {"type", method.type}};
    // The most derived kind first: a prepaid card is a deposit card too.
    append<PrepaidCard>(json, method, "PrepaidCard") || append<DepositCard>(json, method, "DepositCard") ||
        append<CreditCard>(json, method, "CreditCard");
    json["debug"] = method.debugDescription();
}

}  // namespace kavio
