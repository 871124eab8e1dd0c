#include "prices.h"

#include <fmt/format.h>

namespace kavio::wallet {

std::optional<double> priceOf(const Product& product) {
    for (const auto& price : {product.cardPrice, product.machinePrice, product.cashPrice, product.retailPrice}) {
        if (price) return price;
    }
    return std::nullopt;
}

std::string priceText(const Product& product, const std::optional<Currency>& currency) {
    const auto price = priceOf(product);
    if (!price) return {};
    return currency ? fmt::format("{:.{}f} {}", *price, static_cast<int>(currency->digits), currency->code)
                    : fmt::format("{:.2f}", *price);
}

}  // namespace kavio::wallet
