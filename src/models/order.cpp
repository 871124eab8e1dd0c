#include "models/debug_text.h"
#include "models/enum_table.h"

#include <kavio/order.h>

#include <utility>

namespace kavio {
namespace {

constexpr EnumRow<Order::Status> statuses[] = {
    {Order::Status::UNKNOWN, "UNKNOWN"},   {Order::Status::COMPLETED, "COMPLETED"},
    {Order::Status::CREATED, "CREATED"},   {Order::Status::AUTHORIZED, "AUTHORIZED"},
    {Order::Status::CANCELED, "CANCELED"}, {Order::Status::FREE_TRANSACTION, "FREE_TRANSACTION"},
    {Order::Status::TIMEOUT, "TIMEOUT"},   {Order::Status::INCOMPLETE, "INCOMPLETE"},
};

}  // namespace

std::string_view name(Order::Status status) { return textOf(statuses, status); }

std::optional<Order::Status> Order::orderStatus(std::int64_t rawValue) { return withCode(statuses, rawValue); }

Order::Order(std::string id_, std::string type_, Status status_, std::string paymentSource_, std::int64_t amount_,
             Date date_, std::optional<std::string> currency_, std::int64_t itemsCount_, std::int64_t endingBalance_)
    : id(std::move(id_)),
      type(std::move(type_)),
      status(status_),
      paymentSource(std::move(paymentSource_)),
      amount(amount_),
      date(date_),
      currency(std::move(currency_)),
      itemsCount(itemsCount_),
      endingBalance(endingBalance_) {}

std::string Order::debugDescription() const {
    return DebugText()
        .line("{ID: ", id)
        .line("type: ", type)
        .line("status: ", status)
        .line("source: ", paymentSource)
        .line("amount: ", amount)
        .line("date: ", date)
        .line("currency: ", currency)
        .line("items count: ", itemsCount)
        .line("ending balance: ", endingBalance, "}");
}

}  // namespace kavio
