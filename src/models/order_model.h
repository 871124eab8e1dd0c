#pragma once

#include "models/campaign_model.h"
#include "models/json/json_value.h"
#include "models/order_vocabulary.h"
#include "models/replies.h"

#include <kavio/date.h>
#include <kavio/order.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kavio {

/// Reply to placing an order or asking for one: the order wrapped as "order".
struct OrderModel {
    std::optional<std::string> address;
    std::optional<std::int64_t> amount;
    std::optional<std::string> city;
    std::optional<std::string> country;  // name of the region in the user's language
    std::optional<std::string> countryCode;
    std::optional<std::string> currency;
    std::string orderId;
    OrderStatus status;
    std::optional<std::int64_t> userAmount;
    std::optional<std::int64_t> revalueAmount;
    std::optional<std::string> machineName;
    std::optional<std::int64_t> machineType;
    PaymentProcessorType paymentProcessorType;
    std::optional<std::string> paymentLabel;
    OrderTypeStrings orderType;
    std::optional<std::vector<JsonObject>> items;
    std::optional<std::string> prepaidCardId;
    std::optional<std::string> prepaidCardIssuer;
    std::optional<std::string> prepaidCardReference;
    std::optional<std::string> externalPaymentReference;
    std::optional<std::int64_t> prepaidDepositCardId;
    std::optional<std::string> issuer;
    std::optional<FeedbackType> feedbackType;
    std::int64_t orderItemsCount;
    std::int64_t chargedAmount;
    std::optional<std::string> externalCampaignID;
    std::optional<std::int64_t> punchesOnPunch;
    std::optional<std::int64_t> totalPunches;
    Date dateCreated;
    std::int64_t endingBalance;
    std::shared_ptr<const LookAndFeelModel> lookAndFeel;
    std::optional<OrderMachineReviewModel> machineReview;
    std::vector<JsonObject> orderItems() const { return items.value_or(std::vector<JsonObject>()); }
    static OrderModel decode(const KeyedContainer& in);
    /// From the inner object.
    static OrderModel decodeOrder(const KeyedContainer& order);
};

std::shared_ptr<const Order> publicObject(OrderModel model);

}  // namespace kavio
