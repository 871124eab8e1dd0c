#pragma once

#include <kavio/machine.h>
#include <kavio/payment_method.h>
#include <kavio/product.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kavio::wallet {

struct Currency {
    std::string code;
    /// How many decimals an amount has.
    std::int64_t digits;
};

/// Looks up an ISO code, with its decimals by ISO 4217; an unknown currency gets two.
Currency currencyNamed(const std::string& code);
/// The currency of a country, given by its ISO code; absent if it is unknown.
std::optional<Currency> currencyOfCountry(const std::string& country);

/// What is paid in at a machine: the currency of its country, whatever the method, with the decimals that the service
/// gives for the wallet's own. Absent for a credit card where the machine's country is unknown.
std::optional<Currency> currencyFor(const PaymentMethod& method, const Machine& machine, const Currency& wallet);

/// Writes an amount of smallest units, such as "12.50 EUR", or "12,50 EUR" where that is the custom.
std::string moneyText(std::int64_t amount, const Currency& currency);

/// The same for an amount whose currency may not be known: then its decimals are not known either.
std::string moneyText(std::int64_t amount, const std::optional<std::string>& currency);

Currency currencyOf(const DepositCard& card);
/// Its balance, such as "12.50 EUR".
std::string balanceText(const DepositCard& card);

/// Reads an amount as people write it, such as "12.50" or "12", or "12,50" where that is the custom, in smallest units;
/// absent for any other text, for more decimals than the currency has, and for zero or less.
std::optional<std::int64_t> smallestUnits(std::string_view amount, std::int64_t digits);

/// A sum of prices, in whole units, as smallest units; absent if it is not an amount that can be paid.
std::optional<std::int64_t> smallestUnitsOf(double cost, std::int64_t digits);

/// The number of whole units that `Kavio::deposit` turns into exactly `amount` smallest units; absent for some amounts
/// in the quadrillions, for which there is none.
std::optional<double> wholeUnits(std::int64_t amount, std::int64_t digits);

/// The price without cash, in whole units of the machine's currency; absent if no price is known.
std::optional<double> priceOf(const Product& product);

/// Such as "1.50 EUR"; empty if no price is known. The currency is that of the machine's country.
std::string priceText(const Product& product, const std::optional<Currency>& currency);

}  // namespace kavio::wallet
