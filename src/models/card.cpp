#include "models/debug_text.h"

#include <kavio/card.h>

#include <utility>

namespace kavio {

Card::Card(std::string pan_, std::string month_, std::string year_, std::string cvv_, std::string email_)
    : pan(std::move(pan_)),
      month(std::move(month_)),
      year(std::move(year_)),
      cvv(std::move(cvv_)),
      email(std::move(email_)) {}

std::string Card::debugDescription() const {
    return DebugText()
        .line("{PAN: ", pan)
        .line("month: ", month)
        .line("year: ", year)
        .line("CVV: ", cvv)
        .line("email: ", email, "}");
}

}  // namespace kavio
