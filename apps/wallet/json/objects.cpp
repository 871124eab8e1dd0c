#include "objects.h"

namespace kavio {

using wallet::Json;

void to_json(Json& json, const KavioResult& result) {
    json = {{"type", result.type},
            {"message", result.message},
            {"debug", result.debugDescription()},
            {"effect", result.effect},
            {"cause", result.cause}};
}

void to_json(Json& json, const Machine& machine) {
    json = {
        {"id", machine.id},
        {"kavioId", machine.kavioId},
        {"operatorName", machine.operatorName},
        {"isWalletAllowed", machine.isWalletAllowed},
        {"latitude", machine.latitude},
        {"longitude", machine.longitude},
        {"type", machine.type},
        {"campaigns", machine.campaigns},
        {"name", machine.name},
        {"country", machine.country},
        {"city", machine.city},
        {"hwSerial", machine.hwSerial},
        {"supportRemoteVend", machine.supportRemoteVend},
        {"multiVendCount", machine.multiVendCount},
        {"machineStatus", machine.machineStatus},
        {"debug", machine.debugDescription()},
    };
}

void to_json(Json& json, const Campaign& campaign) {
    json = {
        {"id", campaign.id},
        {"name", campaign.name},
        {"title", campaign.title},
        {"description", campaign.description},
        {"punched", campaign.punched},
        {"totalPunches", campaign.totalPunches},
        {"created", campaign.created},
        {"updated", campaign.updated},
        {"expiration", campaign.expiration},
        {"imageUrl", campaign.imageUrl},
        {"punchCardId", campaign.punchCardId},
        {"lookAndFeel", campaign.lookAndFeel},
        {"debug", campaign.debugDescription()},
    };
}

void to_json(Json& json, const LookAndFeel& lookAndFeel) {
    json = {
        {"imageUrl", lookAndFeel.imageUrl},           {"backgroudColor", lookAndFeel.backgroudColor},
        {"textColor", lookAndFeel.textColor},         {"receiptText", lookAndFeel.receiptText},
        {"punchCardText", lookAndFeel.punchCardText}, {"images", lookAndFeel.images},
        {"debug", lookAndFeel.debugDescription()},
    };
}

void to_json(Json& json, const Image& image) {
    json = {
        {"file", image.file},
        {"width", image.width},
        {"height", image.height},
        {"wasUploaded", image.wasUploaded},
        {"dpi", image.dpi},
        {"iOS", image.iOS},
        {"debug", image.debugDescription()},
    };
}

void to_json(Json& json, const Product& product) {
    json = {
        {"machineProductId", product.machineProductId},
        {"id", product.id},
        {"name", product.name},
        {"department", product.department},
        {"cashPrice", product.cashPrice},
        {"cardPrice", product.cardPrice},
        {"exPrepaidPrice", product.exPrepaidPrice},
        {"machinePrice", product.machinePrice},
        {"preapidPrice", product.preapidPrice},
        {"commissionValue", product.commissionValue},
        {"paCode", product.paCode},
        {"opButtonCode", product.opButtonCode},
        {"opRowCode", product.opRowCode},
        {"opColCode", product.opColCode},
        {"imageUrl", product.imageUrl},
        {"ageVerification", product.ageVerification},
        {"memberType", product.memberType},
        {"image", product.image},
        {"codeInMap", product.codeInMap},
        {"missingProduct", product.missingProduct},
        {"vendOut", product.vendOut},
        {"retailPrice", product.retailPrice},
        {"par", product.par},
        {"missingStockByMdb", product.missingStockByMdb},
        {"mdbMissingStockLastUpdated", product.mdbMissingStockLastUpdated},
        {"dexMissingStockLastUpdated", product.dexMissingStockLastUpdated},
        {"lastSaleDt", product.lastSaleDt},
        {"lastSaleMdbDt", product.lastSaleMdbDt},
        {"slowMover", product.slowMover},
        {"debug", product.debugDescription()},
    };
}

void to_json(Json& json, const Order& order) {
    json = {
        {"id", order.id},
        {"type", order.type},
        {"status", order.status},
        {"paymentSource", order.paymentSource},
        {"amount", order.amount},
        {"date", order.date},
        {"currency", order.currency},
        {"itemsCount", order.itemsCount},
        {"endingBalance", order.endingBalance},
        {"debug", order.debugDescription()},
    };
}

void to_json(Json& json, const UnsettledPayment& payment) {
    json = {
        {"id", payment.id},
        {"kind", payment.kind},
        {"startedAt", payment.startedAt},
        {"kavioId", payment.kavioId},
        {"amount", payment.amount},
        {"paymentMethodId", payment.paymentMethodId},
        {"paymentType", payment.paymentType},
        {"orderId", payment.orderId},
        {"status", payment.status},
    };
}

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
