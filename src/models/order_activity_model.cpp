#include "models/order_activity_model.h"

#include "models/ascii_text.h"
#include "models/date_text.h"
#include "models/json/decoding_error.h"
#include "models/json/document.h"

namespace kavio {
namespace {

std::optional<std::int64_t> integer(const std::optional<std::string>& text) {
    return text ? decimalInteger(*text) : std::nullopt;
}

std::optional<OrderTypeStrings> typeNamed(const std::optional<std::string>& text) {
    return text ? std::optional(orderTypeStrings(*text)) : std::nullopt;
}

OrderTypeStrings typeByCode(OrderType type) {
    if (type == OrderType::PREPAID_DEPOSIT) return OrderTypeStrings::prePaidDeposit;
    return type == OrderType::BALANCE_DEPOSIT ? OrderTypeStrings::balanceDeposit : OrderTypeStrings::vending;
}

/// The number of elements in the array that `json` holds; 0 for any other text.
std::int64_t elementCount(const std::string& json) {
    try {
        const Document document(json);
        if (document.root().kind() != DecodedValue::Kind::array) return 0;
        std::int64_t count = 0;
        for (ArrayReader reader(document.root()); !reader.atEnd(); reader.next()) ++count;
        return count;
    } catch (const DecodingError&) {
        return 0;
    }
}

}  // namespace

OrderActivityModel OrderActivityModel::decode(const KeyedContainer& in) {
    OrderActivityModel model{
        .orderId = std::to_string(std::uint64_t{in.required("orderId")}),
        .createdDateStr = in.required("created"),
        .amount = in.required("amount"),
        .orderStatus = kavio::orderStatus(in.required("orderStatusName")),
        .paymentSource = kavio::paymentSource(in.required("paymentSourceName")),
        .orderType = kavio::orderType(in.required("orderType")),
        .orderTypeName = typeNamed(in.optional("orderTypeName")),
        .machineType = in.optional("machineType"),
        .machineName = in.optional("machineName"),
        .externalReference = in.optional("externalReference"),
        .prepaidCardID = in.optional("prepaidCardID"),
        .tokenLocatorID = in.optional("tokenLocatorID"),
        .label = in.optional("label"),
        .startingBalance = in.required("startingBalance"),
        .endingBalance = in.required("endingBalance"),
        .issuer = in.optional("issuerName"),
        .externalCampaignID = in.optional("externalCampaignID"),
        .currency = in.optional("currency"),
        .locator = in.optional("locator"),
        .orderItems = in.optional("orderItems"),
        .bonus = in.required("bonus"),
        .city = in.optional("city"),
        .country = in.optional("country"),
        .gameWin = in.required("gameWin"),
        .autoTopup = in.required("autoTopup"),
        .operatorName = in.optional("operatorName"),
        .lookAndFeel = in.orEmpty("lookAndFeel"),
        .punchesOnPunch = integer(in.optional("punchesOnPunch")),
        .totalPunches = integer(in.optional("totalPunches")),
        .createdDate = {},
    };
    model.createdDate = DateText::parse(model.createdDateStr).value_or(DateText::now());
    return model;
}

Order Decoder<Order>::decode(const KeyedContainer& in) {
    auto model = OrderActivityModel::decode(in);
    return {
        .id = std::move(model.orderId),
        .type = std::string(wireText(model.orderTypeName.value_or(typeByCode(model.orderType)))),
        .status = publicStatus(model.orderStatus),
        .paymentSource = std::string(wireText(model.paymentSource)),
        .amount = model.amount,
        .date = model.createdDate,
        .currency = std::move(model.currency),
        .itemsCount = model.orderItems ? elementCount(*model.orderItems) : 0,
        .endingBalance = model.endingBalance,
    };
}

}  // namespace kavio
