#include "platform/linux/icu.h"
#include "platform/linux/icu_text.h"

#include <unicode/locid.h>

namespace kavio {
namespace {

/// ICU takes its default from `setlocale` if the host has called that, otherwise from LC_ALL, LC_MESSAGES and LANG; "C"
/// is English.
class IcuLocale final : public Locale {
public:
    std::optional<std::string> languageCode() const override {
        const std::string language = icu::Locale::getDefault().getLanguage();
        if (language.empty()) return std::nullopt;
        return language;
    }

    std::optional<std::string> regionName(std::string_view code) const override {
        if (code.size() != 2) return std::nullopt;
        const icu::Locale region("", std::string(code).c_str());
        // For an unknown code, ICU returns the code itself as the name; only regions have a three-letter code.
        if (std::string_view(region.getISO3Country()).empty()) return std::nullopt;
        icu::UnicodeString name;
        return fromIcu(region.getDisplayCountry(icu::Locale::getDefault(), name));
    }
};

}  // namespace

std::shared_ptr<Locale> makeIcuLocale() { return std::make_shared<IcuLocale>(); }

}  // namespace kavio
