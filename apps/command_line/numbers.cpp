#include "numbers.h"

#include "translation.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace kavio::command_line {

CLI::Validator wholeNumber(std::int64_t least, std::int64_t most) {
    return {[least, most](std::string& text) {
                const auto number = numberFrom<std::int64_t>(text);
                if (!number || *number < least || *number > most)
                    return tr("'{}' is not a whole number from {} to {}", text, least, most);
                text = fmt::to_string(*number);  // in a form that cannot be misread
                return std::string{};
            },
            ""};
}

CLI::Validator listLength() { return wholeNumber(1, 500); }

CLI::Validator coordinate() {
    return {[](const std::string& text) {
                // As maps write coordinates: "52.5219, +13.4132".
                const auto begin = std::min(text.find_first_not_of(' '), text.size());
                const auto number =
                    numberFrom<double>(text.substr(text.substr(begin).starts_with('+') ? begin + 1 : begin));
                return number && std::isfinite(*number) ? std::string{} : tr("'{}' is not a coordinate", text);
            },
            ""};
}

}  // namespace kavio::command_line
