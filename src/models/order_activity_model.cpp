#include "models/order_activity_model.h"

#include "models/ascii_text.h"
#include "models/date_text.h"
#include "models/json/decoding_error.h"
#include "models/json/document.h"
#include "models/json/keyed_container.h"

namespace kavio {
namespace {

std::optional<std::int64_t> integerInText(const KeyedContainer& in, Key key) {
    const auto text = in.optional<std::string>(key);
    return text ? decimalInteger(*text) : std::nullopt;
}

OrderTypeStrings typeByCode(OrderType type) {
    switch (type) {
        case OrderType::PREPAID_DEPOSIT:
            return OrderTypeStrings::prePaidDeposit;
        case OrderType::BALANCE_DEPOSIT:
            return OrderTypeStrings::balanceDeposit;
        case OrderType::UNKNOWN:
        case OrderType::VENDING:
        case OrderType::CASHBACK:
            return OrderTypeStrings::vending;
    }
    return OrderTypeStrings::vending;
}

/// Number of elements of the array that `json` holds; 0 for any other text.
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
    OrderActivityModel model;
    model.orderId = std::to_string(in.required<std::uint64_t>("orderId"));
    model.createdDateStr = in.required<std::string>("created");
    model.createdDate = DateText::parse(model.createdDateStr).value_or(DateText::now());
    model.amount = in.required<std::int64_t>("amount");
    model.orderStatus = kavio::orderStatus(in.required<std::string>("orderStatusName"));
    model.paymentSource = kavio::paymentSource(in.required<std::string>("paymentSourceName"));
    model.orderType = kavio::orderType(in.required<std::int64_t>("orderType"));
    if (const auto type = in.optional<std::string>("orderTypeName")) model.orderTypeName = orderTypeStrings(*type);
    model.machineType = in.optional<std::string>("machineType");
    model.machineName = in.optional<std::string>("machineName");
    model.externalReference = in.optional<std::string>("externalReference");
    model.prepaidCardID = in.optional<std::string>("prepaidCardID");
    model.tokenLocatorID = in.optional<std::string>("tokenLocatorID");
    model.label = in.optional<std::string>("label");
    model.startingBalance = in.required<std::int64_t>("startingBalance");
    model.endingBalance = in.required<std::int64_t>("endingBalance");
    model.issuer = in.optional<std::string>("issuerName");
    model.externalCampaignID = in.optional<std::string>("externalCampaignID");
    model.currency = in.optional<std::string>("currency");
    model.locator = in.optional<std::string>("locator");
    model.orderItems = in.optional<std::string>("orderItems");
    model.bonus = in.required<std::int64_t>("bonus");
    model.city = in.optional<std::string>("city");
    model.country = in.optional<std::string>("country");
    model.gameWin = in.required<std::int64_t>("gameWin");
    model.autoTopup = in.required<bool>("autoTopup");
    model.operatorName = in.optional<std::string>("operatorName");
    model.lookAndFeel = in.optional<LookAndFeelModel>("lookAndFeel");
    model.punchesOnPunch = integerInText(in, "punchesOnPunch");
    model.totalPunches = integerInText(in, "totalPunches");
    return model;
}

std::shared_ptr<const Order> publicObject(OrderActivityModel&& model) {
    const auto type = model.orderTypeName.value_or(typeByCode(model.orderType));
    return std::make_shared<Order>(std::move(model.orderId), std::string(wireText(type)),
                                   publicStatus(model.orderStatus), std::string(wireText(model.paymentSource)),
                                   model.amount, model.createdDate, std::move(model.currency),
                                   model.orderItems ? elementCount(*model.orderItems) : 0, model.endingBalance);
}

}  // namespace kavio
