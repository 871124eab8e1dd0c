#include "driver/names.h"

namespace kavio::driver {

std::optional<Kavio::EnvironmentType> environmentNamed(std::string_view name) {
    using enum Kavio::EnvironmentType;
    if (name == "TEST") return TEST;
    if (name == "TESTS") return TESTS;
    if (name == "PROD") return PROD;
    return std::nullopt;
}

std::optional<PaymentMethod::PaymentType> paymentTypeNamed(std::string_view text) {
    using enum PaymentMethod::PaymentType;
    for (const auto type : {UNKNOWN, KAVIO, CREDIT_CARD, PAYPAL, PREPAID}) {
        if (name(type) == text) return type;
    }
    return std::nullopt;
}

}  // namespace kavio::driver
