#include "models/order_model.h"

#include "models/date_text.h"
#include "models/json/document.h"
#include "models/json/keyed_container.h"

#include <kavio/platform/platform.h>

namespace kavio {
namespace {

/// What could not be read of a country leaves the order without one.
void readCountry(OrderModel& model, const KeyedContainer& order) {
    const auto country = order.nestedIfObject("country");
    if (!country) return;
    model.countryCode = country->textIfText("code");
    if (model.countryCode) model.country = Platform::current().locale->regionName(*model.countryCode);
}

/// `text` is JSON in itself; one that is not fails the order.
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
    OrderModel model;
    model.address = order.optional<std::string>("address");
    model.orderId = order.required<std::string>("id");
    model.orderType = orderTypeStrings(order.required<std::string>("orderType"));
    model.status = orderStatus(order.required<std::string>("orderStatus"));
    model.amount = order.optional<std::int64_t>("amount");
    model.city = order.optional<std::string>("city");
    readCountry(model, order);
    model.currency = order.optional<std::string>("currency");
    model.userAmount = order.optional<std::int64_t>("userAmount");
    model.items = order.optional<std::vector<JsonObject>>("orderItems");
    model.machineName = order.optional<std::string>("externalReference");
    if (!model.machineName) {
        if (const auto id = order.optional<std::int64_t>("externalId")) model.machineName = std::to_string(*id);
    }
    model.paymentLabel = order.optional<std::string>("paymentSourceLabel", "");
    model.paymentProcessorType = paymentSource(order.optional<std::string>("paymentSource", ""));
    if (model.paymentProcessorType == PaymentProcessorType::creditCard) {
        model.issuer = order.optional<std::string>("issuer");
    }
    model.externalPaymentReference = order.optional<std::string>("externalPaymentReference");
    model.prepaidDepositCardId = order.optional<std::int64_t>("externalId");
    model.revalueAmount = order.optional<std::int64_t>("revalue", 0);
    model.orderItemsCount = order.optional<std::int64_t>("orderItemsCount", 0);
    model.externalCampaignID = order.optional<std::string>("externalCampaignID", "0");
    model.chargedAmount = order.optional<std::int64_t>("chargedAmount", 0);
    const auto created = order.optional<std::string>("createdUTC", "");
    model.dateCreated = DateText::parseSeconds(created).value_or(DateText::now());
    model.endingBalance = order.optional<std::int64_t>("endingBalance", -1);
    model.lookAndFeel = order.optional<LookAndFeelModel>("lookAndFeel");
    model.machineReview = order.optional<OrderMachineReviewModel>("machineReview");
    if (const auto fields = order.optional<JsonObject>("dataFields")) readDataFields(model, *fields);
    if (!model.prepaidCardId && model.paymentProcessorType == PaymentProcessorType::prepaidCard) {
        model.prepaidCardId = model.externalPaymentReference;
    }
    return model;
}

OrderModelResponse OrderModelResponse::decode(const KeyedContainer& in) {
    return {
        .orderModel = OrderModel::decodeOrder(in.nested("order")),
        .qr = in.optional<std::string>("qr"),
    };
}

std::shared_ptr<const Order> publicObject(OrderModel model) {
    return std::make_shared<Order>(std::move(model.orderId), std::string(wireText(model.orderType)),
                                   publicStatus(model.status), std::string(wireText(model.paymentProcessorType)),
                                   model.amount.value_or(-1), model.dateCreated, std::move(model.currency),
                                   model.orderItemsCount, model.endingBalance);
}

}  // namespace kavio
