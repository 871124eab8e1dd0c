#include "card_fields.h"

#include "command_line/numbers.h"
#include "command_line/translation.h"
#include "wording/text.h"

#include <algorithm>

namespace kavio::wallet {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Whether the text consists of so many digits.
bool hasDigits(const std::string& text, std::size_t least, std::size_t most) {
    return text.size() >= least && text.size() <= most && std::ranges::all_of(text, isDigit);
}

/// Whether the last digit is the check digit of those before it.
bool isChecked(const std::string& number) {
    int sum = 0;
    bool isDoubled = false;
    for (auto digit = number.rbegin(); digit != number.rend(); ++digit, isDoubled = !isDoubled) {
        const int value = (*digit - '0') * (isDoubled ? 2 : 1);
        sum += value > 9 ? value - 9 : value;
    }
    return sum % 10 == 0;
}

bool isAddress(const std::string& text) {
    const auto at = text.find('@');
    if (at == 0 || at == std::string::npos || text.find_first_of(" \t@", at + 1) != std::string::npos) return false;
    const auto host = text.substr(at + 1);
    const auto dot = host.find('.');
    return dot != 0 && dot != std::string::npos && !host.ends_with('.') && host.find("..") == std::string::npos &&
           text.find_first_of(" \t") == std::string::npos;
}

}  // namespace

std::string tidied(CardField field, const std::string& text) {
    const auto begin = std::min(text.find_first_not_of(" \t"), text.size());
    auto result = text.substr(begin, text.find_last_not_of(" \t") + 1 - begin);
    if (field == CardField::NAME || field == CardField::ADDRESS) return result;
    result = withAsciiDigits(result);
    if (field == CardField::NUMBER) std::erase_if(result, [](char c) { return c == ' ' || c == '-'; });
    if (field == CardField::MONTH && hasDigits(result, 1, 1)) result.insert(0, "0");
    if (field == CardField::YEAR && hasDigits(result, 2, 2)) result.insert(0, "20");
    return result;
}

std::string CardJudge::problemWith(CardField field, const std::string& text) {
    const auto number = command_line::numberFrom<unsigned>(text).value_or(0);
    switch (field) {
        case CardField::NUMBER:
            if (!hasDigits(text, 12, 19)) return tr("A card number has 12 to 19 digits.");
            return isChecked(text) ? "" : tr("This is not a card's number: a digit is wrong, or two are swapped.");
        case CardField::MONTH:
            if (number < 1 || number > 12) return tr("The month is a number from 1 to 12.");
            mMonth = std::chrono::month{number};
            return {};
        case CardField::YEAR: {
            if (!hasDigits(text, 4, 4)) return tr("The year has four digits, such as 2031.");
            const std::chrono::year year{static_cast<int>(number)};
            if (year < mToday.year()) return tr("The card has expired: that year is over.");
            return year / mMonth < mToday ? tr("The card has expired: that month of the year is over.") : "";
        }
        case CardField::SECURITY_CODE:
            return hasDigits(text, 3, 4) ? "" : tr("The security code has three or four digits.");
        case CardField::NAME:
            return text.empty() ? tr("The name is missing.") : "";
        case CardField::ADDRESS:
            return isAddress(text) ? "" : tr("An e-mail address looks like robin@kavio.example.");
    }
    return {};
}

}  // namespace kavio::wallet
