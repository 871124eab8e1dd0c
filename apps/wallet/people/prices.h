#pragma once

#include <kavio/product.h>

#include <optional>
#include <string>

namespace kavio::wallet {

/// What paying for it without cash costs, in whole units of the machine's currency; absent when no price is known.
std::optional<double> priceOf(const Product& product);

/// Empty when no price is known. A product does not tell its currency.
std::string priceText(const Product& product);

}  // namespace kavio::wallet
