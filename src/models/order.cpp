#include "models/enum_table.h"

#include <kavio/order.h>

namespace kavio {
namespace {

constexpr auto statuses = KAVIO_ENUMERATORS(Order::Status, UNKNOWN, COMPLETED, CREATED, AUTHORIZED, CANCELED,
                                            FREE_TRANSACTION, TIMEOUT, INCOMPLETE);

}  // namespace

std::string_view name(Order::Status status) { return textOf(statuses, status); }

bool isFinal(Order::Status status) {
    switch (status) {
        case Order::Status::COMPLETED:
        case Order::Status::CANCELED:
        case Order::Status::FREE_TRANSACTION:
        case Order::Status::TIMEOUT:
        case Order::Status::INCOMPLETE:
            return true;
        case Order::Status::UNKNOWN:
        case Order::Status::CREATED:
        case Order::Status::AUTHORIZED:
            return false;
    }
    return false;
}

std::optional<Order::Status> Order::orderStatus(std::int64_t rawValue) { return withCode(statuses, rawValue); }

}  // namespace kavio
