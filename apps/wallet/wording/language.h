#pragma once

#include <string>

namespace kavio::wallet {

/// By which locales, as ICU names them, amounts and dates are written.
struct Customs {
    std::string amounts = "en_US_POSIX";
    std::string dates = "en_US_POSIX";
};

/// Has the program speak the language that the environment asks for, and write as people do there. Without it, the
/// program speaks English.
void speakOwnLanguage();

/// The region of the person's locale, such as "DE"; empty if it has none, like "C" or "POSIX", which ICU treats as
/// American.
std::string ownCountry();

const Customs& customs();
void setCustoms(Customs customs);

}  // namespace kavio::wallet
