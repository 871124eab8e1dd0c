#include "models/order_model.h"

#include "models/date_text.h"
#include "models/json/document.h"
#include "models/json/shared_object.h"

#include <kavio/platform/platform.h>

namespace kavio {
namespace {

/// A country that cannot be read leaves the order without one.
void readCountry(OrderModel& model, const KeyedContainer& order) {
    const auto country = order.nestedIfObject("country");
    if (!country) return;
    model.countryCode = country->textIfText("code");
    if (model.countryCode) model.country = Platform::current().locale->regionName(*model.countryCode);
}

/// `text` is JSON within the JSON; if it is not valid, the order fails.
std::optional<FeedbackType> readFeedback(const std::string& text) {
    constexpr std::int64_t firstAlertType = 5000;
    const auto feedback = decodeDocument<JsonValue>(text);
    if (!feedback || !feedback->is_object()) return std::nullopt;
    const auto alertType = integerAt(feedback->get_ref<const JsonObject&>(), "AlertType");
    return alertType && *alertType >= firstAlertType ? feedbackType(*alertType - firstAlertType) : std::nullopt;
}

void readDataFields(OrderModel& model, const JsonObject& fields) {
    if (const auto feedback = textAt(fields, "feedback")) model.feedbackType = readFeedback(*feedback);
    model.machineType = integerAt(fields, "machineType");
    model.prepaidCardReference = textAt(fields, "prepaidCardReference");
    model.prepaidCardIssuer = textAt(fields, "prepaidCardIssuer");
    model.prepaidCardId = textAt(fields, "prepaidCardId");
    model.totalPunches = integerAt(fields, "totalPunches");
    model.punchesOnPunch = integerAt(fields, "punchesOnPunch");
}

}  // namespace

OrderModel OrderModel::decode(const KeyedContainer& in) { return decodeOrder(in.nested("order")); }

OrderModel OrderModel::decodeOrder(const KeyedContainer& order) {
    OrderModel model{};
    model.address = order.optional("address");
    model.orderId = order.required("id");
    model.orderType = orderTypeStrings(std::string(order.required("orderType")));
    model.status = orderStatus(order.required("orderStatus"));
    model.amount = order.optional("amount");
    model.city = order.optional("city");
    readCountry(model, order);
    model.currency = order.optional("currency");
    model.userAmount = order.optional("userAmount");
    model.items = order.optional("orderItems");
    model.machineName = order.optional("externalReference");
    if (!model.machineName) {
        if (const std::optional<std::int64_t> id = order.optional("externalId"))
            model.machineName = std::to_string(*id);
    }
    model.paymentLabel = order.optional("paymentSourceLabel", "");
    model.paymentProcessorType = paymentSource(order.optional("paymentSource", ""));
    if (model.paymentProcessorType == PaymentProcessorType::creditCard) {
        model.issuer = order.optional("issuer");
    }
    model.externalPaymentReference = order.optional("externalPaymentReference");
    model.prepaidDepositCardId = order.optional("externalId");
    model.revalueAmount = order.optional("revalue", 0);
    model.orderItemsCount = order.optional("orderItemsCount", 0);
    model.externalCampaignID = order.optional("externalCampaignID", "0");
    model.chargedAmount = order.optional("chargedAmount", 0);
    const std::string created = order.optional("createdUTC", "");
    model.dateCreated = DateText::parseSeconds(created).value_or(DateText::now());
    model.endingBalance = order.optional("endingBalance", -1);
    model.lookAndFeel = order.orEmpty("lookAndFeel");
    model.machineReview = order.optional("machineReview");
    if (const std::optional<JsonObject> fields = order.optional("dataFields")) readDataFields(model, *fields);
    if (!model.prepaidCardId && model.paymentProcessorType == PaymentProcessorType::prepaidCard) {
        model.prepaidCardId = model.externalPaymentReference;
    }
    return model;
}

std::shared_ptr<const Order> publicObject(OrderModel model) {
    return sharedObject([&] {
        return Order{
            .id = std::move(model.orderId),
            .type = std::string(wireText(model.orderType)),
            .status = publicStatus(model.status),
            .paymentSource = std::string(wireText(model.paymentProcessorType)),
            .amount = model.amount.value_or(-1),
            .date = model.dateCreated,
            .currency = std::move(model.currency),
            .itemsCount = model.orderItemsCount,
            .endingBalance = model.endingBalance,
        };
    });
}

}  // namespace kavio
