#pragma once

#include <kavio/unsettled_payment.h>

#include <optional>
#include <string_view>

namespace kavio {

/// Absent for a text that names no kind.
std::optional<UnsettledPayment::Kind> paymentKind(std::string_view name);

}  // namespace kavio
