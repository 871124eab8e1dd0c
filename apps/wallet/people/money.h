#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kavio::wallet {

/// How many decimal digits the smallest unit of an ISO currency stands for.
std::int64_t digitsOf(std::string_view currency);

/// An amount of smallest units with the currency's code, such as "12.50 EUR".
std::string moneyText(std::int64_t amount, std::int64_t digits, std::string_view currency);

/// Smallest units of an amount as people write it, such as "12.50" or "12"; absent for any other text, for more
/// decimals than the currency has, and for zero or less.
std::optional<std::int64_t> smallestUnits(std::string_view text, std::int64_t digits);

/// The number of whole units that `Kavio::deposit` turns into exactly `amount` smallest units.
double wholeUnits(std::int64_t amount, std::int64_t digits);

}  // namespace kavio::wallet
