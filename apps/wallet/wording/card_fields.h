#pragma once

#include <chrono>
#include <string>

namespace kavio::wallet {

/// What a person enters about a card.
enum class CardField { NUMBER, MONTH, YEAR, SECURITY_CODE, NAME, ADDRESS };

/// The text as programs take it: digits without the blanks that stand between them on a card, months and years in full.
std::string tidied(CardField field, const std::string& text);

/// Judges the fields of one card in the order in which they are entered.
class CardJudge {
public:
    explicit CardJudge(std::chrono::year_month today) : mToday(today) {}

    /// What is wrong with the tidied text, as a sentence that does not quote it; empty if nothing is.
    std::string problemWith(CardField field, const std::string& text);

private:
    const std::chrono::year_month mToday;
    std::chrono::month mMonth{12};
};

}  // namespace kavio::wallet
