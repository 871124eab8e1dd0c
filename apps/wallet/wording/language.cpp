#include "language.h"

#include <libintl.h>
#include <unicode/locid.h>

#include <clocale>
#include <filesystem>
#include <string_view>
#include <utility>

namespace kavio::wallet {

namespace {

constexpr auto programName = "kavio-wallet";

Customs& ownCustoms() {
    static Customs own;
    return own;
}

/// Beside the program, wherever it has been unpacked.
std::filesystem::path translations() {
    std::error_code unknown;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", unknown);
    return program.parent_path() / KAVIO_LOCALE_FROM_PROGRAM;
}

/// The locale that the environment chooses for the category, such as "de_DE" for "de_DE.UTF-8". It is not left set: by
/// it the C library would write the numbers of files and of the service, too.
std::string chosenLocale(int category) {
    const auto* const found = std::setlocale(category, "");
    const std::string name = found != nullptr ? found : "C";
    std::setlocale(category, "C");
    const auto locale = name.substr(0, name.find_first_of(".@"));
    return locale == "C" || locale == "POSIX" ? Customs{}.amounts : locale;
}

}  // namespace

void speakOwnLanguage() {
    for (const int category : {LC_CTYPE, LC_MESSAGES}) std::setlocale(category, "");
    bindtextdomain(programName, translations().c_str());
    bind_textdomain_codeset(programName, "UTF-8");  // like everything else that is written
    textdomain(programName);
    setCustoms({.amounts = chosenLocale(LC_MONETARY), .dates = chosenLocale(LC_TIME)});
}

std::string ownCountry() {
    const auto locale = icu::Locale::getDefault();
    return std::string_view{locale.getVariant()} == "POSIX" ? "" : locale.getCountry();
}

const Customs& customs() { return ownCustoms(); }

void setCustoms(Customs customs) { ownCustoms() = std::move(customs); }

}  // namespace kavio::wallet
