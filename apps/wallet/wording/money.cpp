#include "money.h"

#include "command_line/translation.h"
#include "wording/language.h"
#include "wording/text.h"

#include <fmt/format.h>
#include <unicode/dcfmtsym.h>
#include <unicode/numberformatter.h>
#include <unicode/ucurr.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <map>

namespace kavio::wallet {

namespace {

/// What the service sends must not decide how long a text gets.
std::size_t sensible(std::int64_t digits) {
    return static_cast<std::size_t>(std::clamp<std::int64_t>(digits, 0, std::numeric_limits<std::int64_t>::digits10));
}

icu::Locale locale() { return icu::Locale(customs().amounts.c_str()); }

/// A decimal number such as "-12.50", as people write it.
std::string numberText(const std::string& number) {
    const auto decimals = number.size() - 1 - std::min(number.find('.'), number.size() - 1);
    auto problem = U_ZERO_ERROR;
    const auto text = icu::number::NumberFormatter::withLocale(locale())
                          .precision(icu::number::Precision::fixedFraction(static_cast<std::int32_t>(decimals)))
                          .formatDecimal(number, problem)
                          .toString(problem);
    return U_SUCCESS(problem) ? withoutMarks(text) : number;
}

/// What separates the decimals, or groups of digits, in the person's own notation.
std::string separator(icu::DecimalFormatSymbols::ENumberFormatSymbol symbol) {
    auto problem = U_ZERO_ERROR;
    const icu::DecimalFormatSymbols symbols{locale(), problem};
    std::string text;
    return U_SUCCESS(problem) ? symbols.getSymbol(symbol).toUTF8String(text) : ".";
}

/// An amount with a point before its decimals, as programs write it; empty if the text could mean something else.
std::string withPoint(std::string_view amount) {
    auto text = withAsciiDigits(amount);
    const auto own = separator(icu::DecimalFormatSymbols::kDecimalSeparatorSymbol);
    const auto at = text.find(own);
    const auto point = text.find('.');
    if (own == "." || at == std::string::npos) {
        // Where points stand between thousands, 1.500 would be read in two ways.
        const bool isThousand = own != "." && point != std::string::npos && text.size() - point == 4 &&
                                separator(icu::DecimalFormatSymbols::kGroupingSeparatorSymbol) == ".";
        return isThousand ? std::string{} : text;
    }
    if (point != std::string::npos) return {};
    return text.replace(at, own.size(), ".");
}

}  // namespace

Currency currencyNamed(const std::string& code) {
    // ICU leaves out decimals that people no longer use, but services count in the units of ISO 4217.
    static const std::map<std::string, std::int64_t> others{
        {"AFN", 2}, {"ALL", 2}, {"IQD", 3}, {"IRR", 2}, {"KPW", 2}, {"LAK", 2}, {"LBP", 2},
        {"MGA", 2}, {"MMK", 2}, {"RSD", 2}, {"SOS", 2}, {"SYP", 2}, {"YER", 2},
    };
    if (const auto other = others.find(code); other != others.end()) return {code, other->second};
    auto problem = U_ZERO_ERROR;
    auto wide = icu::UnicodeString::fromUTF8(code);
    const auto digits = code.size() == 3 ? ucurr_getDefaultFractionDigits(wide.getTerminatedBuffer(), &problem) : 2;
    return {code, U_SUCCESS(problem) ? digits : 2};
}

std::optional<Currency> currencyOfCountry(const std::string& country) {
    auto problem = U_ZERO_ERROR;
    std::array<char16_t, 4> code{};
    const auto length = ucurr_forLocale(("und_" + country).c_str(), code.data(), std::ssize(code), &problem);
    if (U_FAILURE(problem) || length != 3) return std::nullopt;
    std::string text;
    return currencyNamed(icu::UnicodeString(code.data(), length).toUTF8String(text));
}

std::optional<Currency> currencyFor(const PaymentMethod& method, const Machine& machine, const Currency& wallet) {
    auto currency = currencyOfCountry(machine.country.value_or(""));
    if (currency && currency->code != wallet.code) return currency;
    const bool isCertain = currency || method.type != PaymentMethod::PaymentType::CREDIT_CARD;
    return isCertain ? std::optional{wallet} : std::nullopt;
}

std::string moneyText(std::int64_t amount, const Currency& currency) {
    const auto decimals = sensible(currency.digits);
    const bool isNegative = amount < 0;
    auto text =
        fmt::format("{:0{}}", isNegative ? 0 - static_cast<std::uint64_t>(amount) : static_cast<std::uint64_t>(amount),
                    decimals + 1);
    if (decimals > 0) text.insert(text.size() - decimals, ".");
    return fmt::format("{} {}", numberText((isNegative ? "-" : "") + text), printable(currency.code));
}

std::string moneyText(std::int64_t amount, const std::optional<std::string>& currency) {
    const bool isKnown = currency && !currency->empty();
    return isKnown ? moneyText(amount, currencyNamed(*currency)) : tr("{} smallest units", amount);
}

Currency currencyOf(const DepositCard& card) { return {card.currency, card.currencyDecimalDigits}; }

std::string balanceText(const DepositCard& card) { return moneyText(card.balance, currencyOf(card)); }

std::optional<std::int64_t> smallestUnits(std::string_view amount, std::int64_t digits) {
    const auto text = withPoint(amount);
    const auto decimals = sensible(digits);
    const auto point = std::min(text.find('.'), text.size());
    auto number = text.substr(0, point);
    const auto fraction = text.substr(std::min(point + 1, text.size()));
    if (number.empty() || fraction.size() > decimals || text.ends_with('.')) return std::nullopt;
    number.append(fraction).append(decimals - fraction.size(), '0');

    if (!std::ranges::all_of(number, [](char c) { return c >= '0' && c <= '9'; })) return std::nullopt;
    std::int64_t units = 0;
    const auto read = std::from_chars(number.data(), number.data() + number.size(), units);
    return read.ec == std::errc{} && units > 0 ? std::optional{units} : std::nullopt;
}

std::optional<std::int64_t> smallestUnitsOf(double cost, std::int64_t digits) {
    const auto units = std::round(cost * std::pow(10.0, static_cast<double>(sensible(digits))));
    const bool isAmount = units > 0 && units < 0x1p63;  // false for one that is not a number
    return isAmount ? std::optional{static_cast<std::int64_t>(units)} : std::nullopt;
}

std::optional<double> wholeUnits(std::int64_t amount, std::int64_t digits) {
    // `deposit` multiplies by ten for each decimal and truncates: 19.99 would become 1998.
    const auto deposited = [digits](double units) {
        for (std::size_t i = 0; i < sensible(digits); ++i) units *= 10.0;
        return std::trunc(units);
    };
    auto units = static_cast<double>(amount) / std::pow(10.0, static_cast<double>(sensible(digits)));
    while (deposited(units) < static_cast<double>(amount)) units = std::nextafter(units, HUGE_VAL);
    const bool isExact = deposited(units) < 0x1p63 && static_cast<std::int64_t>(deposited(units)) == amount;
    return isExact ? std::optional(units) : std::nullopt;
}

std::optional<double> priceOf(const Product& product) {
    for (const auto& price : {product.cardPrice, product.machinePrice, product.cashPrice, product.retailPrice}) {
        if (price) return price;
    }
    return std::nullopt;
}

std::string priceText(const Product& product, const std::optional<Currency>& currency) {
    const auto price = priceOf(product);
    if (!price) return {};
    const auto digits = currency ? static_cast<int>(currency->digits) : 2;
    const auto number = numberText(fmt::format("{:.{}f}", *price, digits));
    return currency ? fmt::format("{} {}", number, currency->code) : number;
}

}  // namespace kavio::wallet
