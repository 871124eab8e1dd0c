#include "models/enum_table.h"

#include <kavio/order.h>

namespace kavio {
namespace {

constexpr auto statuses = KAVIO_ENUMERATORS(Order::Status, UNKNOWN, COMPLETED, CREATED, AUTHORIZED, CANCELED,
                                            FREE_TRANSACTION, TIMEOUT, INCOMPLETE);

}  // namespace

std::string_view name(Order::Status status) { return textOf(statuses, status); }

bool isFinal(Order::Status status) {
    using enum Order::Status;
    return status == COMPLETED || status == CANCELED || status == FREE_TRANSACTION || status == TIMEOUT ||
           status == INCOMPLETE;
}

std::optional<Order::Status> Order::orderStatus(std::int64_t rawValue) { return withCode(statuses, rawValue); }

}  // namespace kavio
