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
    std::int64_t amount;
    OrderStatus orderStatus;
    PaymentProcessorType paymentSource;
    OrderType orderType;
    std::optional<OrderTypeStrings> orderTypeName;
    std::optional<std::string> machineType;
    std::optional<std::string> machineName;
    std::optional<std::string> externalReference;
    std::optional<std::string> prepaidCardID;
    std::optional<std::string> tokenLocatorID;
    std::optional<std::string> label;
    std::int64_t startingBalance;
    std::int64_t endingBalance;
    std::optional<std::string> issuer;
    std::optional<std::string> externalCampaignID;
    std::optional<std::string> currency;
    std::optional<std::string> locator;
    std::optional<std::string> orderItems;  // JSON within the JSON
    std::int64_t bonus;
    std::optional<std::string> city;
    std::optional<std::string> country;
    std::int64_t gameWin;
    bool autoTopup;
    std::optional<std::string> operatorName;
    std::shared_ptr<const LookAndFeelModel> lookAndFeel;
    std::optional<std::int64_t> punchesOnPunch;  // both arrive as texts
    std::optional<std::int64_t> totalPunches;
    Date createdDate;
    static OrderActivityModel decode(const KeyedContainer& in);
};

/// An order of a list, made from an `OrderActivityModel`.
template <>
struct Decoder<Order> {
    static Order decode(const KeyedContainer& in);
};

}  // namespace kavio
