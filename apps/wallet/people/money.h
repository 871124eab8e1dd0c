#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kavio::wallet {

struct Currency {
    std::string code;
    /// How many decimal digits its smallest unit stands for.
    std::int64_t digits;
};

/// By its ISO code, with the digits of ISO 4217; one that is not known has two.
Currency currencyNamed(const std::string& code);
/// Of a country by its ISO code; absent for one that is not known.
std::optional<Currency> currencyOfCountry(const std::string& country);

/// An amount of smallest units, such as "12.50 EUR".
std::string moneyText(std::int64_t amount, const Currency& currency);

/// Smallest units of an amount as people write it, such as "12.50" or "12"; absent for any other text, for more
/// decimals than the currency has, and for zero or less.
std::optional<std::int64_t> smallestUnits(std::string_view text, std::int64_t digits);

/// The number of whole units that `Kavio::deposit` turns into exactly `amount` smallest units; absent for some amounts
/// of quadrillions, for which there is none.
std::optional<double> wholeUnits(std::int64_t amount, std::int64_t digits);

}  // namespace kavio::wallet
