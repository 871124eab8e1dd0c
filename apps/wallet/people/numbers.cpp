#include "numbers.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>

namespace kavio::wallet {

namespace {

template <class T>
std::optional<T> numberFrom(const std::string& text) {
    T number{};
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc{} && read.ptr == end ? std::optional{number} : std::nullopt;
}

}  // namespace

CLI::Validator wholeNumber() {
    return {[](std::string& text) {
                const auto number = numberFrom<std::int64_t>(text);
                if (!number) return fmt::format("'{}' is no whole number of 64 bits", text);
                text = fmt::to_string(*number);  // in a form that is read as it is meant
                return std::string{};
            },
            ""};
}

CLI::Validator coordinate() {
    return {[](const std::string& text) {
                // As maps write it: "52.5219, +13.4132".
                const auto begin = std::min(text.find_first_not_of(' '), text.size());
                const auto number =
                    numberFrom<double>(text.substr(text.substr(begin).starts_with('+') ? begin + 1 : begin));
                return number && std::isfinite(*number) ? std::string{} : fmt::format("'{}' is no coordinate", text);
            },
            ""};
}

}  // namespace kavio::wallet
