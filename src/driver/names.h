#pragma once

#include <kavio/kavio.h>

#include <optional>
#include <string_view>

namespace kavio::driver {

// Enumerators by their names; absent for any other text.

std::optional<Kavio::EnvironmentType> environmentNamed(std::string_view name);
std::optional<PaymentMethod::PaymentType> paymentTypeNamed(std::string_view text);

}  // namespace kavio::driver
