#include "models/unsettled_payment.h"

#include "models/enum_table.h"

namespace kavio {
namespace {

constexpr auto kinds = KAVIO_ENUMERATORS(UnsettledPayment::Kind, ORDER, DEPOSIT);

}  // namespace

std::string_view name(UnsettledPayment::Kind kind) { return textOf(kinds, kind); }

std::optional<UnsettledPayment::Kind> paymentKind(std::string_view name) { return withText(kinds, name); }

}  // namespace kavio
