#pragma once

#include "models/campaign_model.h"
#include "models/order_vocabulary.h"

#include <kavio/date.h>
#include <kavio/order.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace kavio {

/// One order of the transactions reply.
struct OrderActivityModel {
    std::string orderId;  // arrives as an integer
    std::string createdDateStr;
    Date createdDate;
    std::int64_t amount = 0;
    OrderStatus orderStatus = OrderStatus::unknown;
    PaymentProcessorType paymentSource = PaymentProcessorType::unknown;
    OrderType orderType = OrderType::UNKNOWN;
    std::optional<OrderTypeStrings> orderTypeName;
    std::optional<std::string> machineType;
    std::optional<std::string> machineName;
    std::optional<std::string> externalReference;
    std::optional<std::string> prepaidCardID;
    std::optional<std::string> tokenLocatorID;
    std::optional<std::string> label;
    std::int64_t startingBalance = 0;
    std::int64_t endingBalance = 0;
    std::optional<std::string> issuer;
    std::optional<std::string> externalCampaignID;
    std::optional<std::string> currency;
    std::optional<std::string> locator;
    std::optional<std::string> orderItems;  // JSON in itself
    std::int64_t bonus = 0;
    std::optional<std::string> city;
    std::optional<std::string> country;
    std::int64_t gameWin = 0;
    bool autoTopup = false;
    std::optional<std::string> operatorName;
    std::optional<LookAndFeelModel> lookAndFeel;
    std::optional<std::int64_t> punchesOnPunch;  // both arrive as texts
    std::optional<std::int64_t> totalPunches;
    static OrderActivityModel decode(const KeyedContainer& in);
};

std::shared_ptr<const Order> publicObject(OrderActivityModel&& model);

}  // namespace kavio
