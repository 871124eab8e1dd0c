#pragma once

#include "people/money.h"

#include <kavio/product.h>

#include <optional>
#include <string>

namespace kavio::wallet {

/// The price without cash, in whole units of the machine's currency; absent if no price is known.
std::optional<double> priceOf(const Product& product);

/// Such as "1.50 EUR"; empty if no price is known. The currency is that of the machine's country.
std::string priceText(const Product& product, const std::optional<Currency>& currency);

}  // namespace kavio::wallet
