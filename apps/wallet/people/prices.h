#pragma once

#include "people/money.h"

#include <kavio/product.h>

#include <optional>
#include <string>

namespace kavio::wallet {

/// What paying for it without cash costs, in whole units of the machine's currency; absent when no price is known.
std::optional<double> priceOf(const Product& product);

/// Such as "1.50 EUR"; empty when no price is known. A product does not tell its currency, its machine's country does.
std::string priceText(const Product& product, const std::optional<Currency>& currency);

}  // namespace kavio::wallet
