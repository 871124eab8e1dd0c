#include "prices.h"

#include <fmt/format.h>

namespace kavio::wallet {

std::optional<double> priceOf(const Product& product) {
    for (const auto& price : {product.cardPrice, product.machinePrice, product.cashPrice, product.retailPrice}) {
        if (price) return price;
    }
    return std::nullopt;
}

std::string priceText(const Product& product) {
    const auto price = priceOf(product);
    return price ? fmt::format("{:.2f}", *price) : std::string{};
}

}  // namespace kavio::wallet
