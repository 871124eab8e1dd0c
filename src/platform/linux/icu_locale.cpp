#include "platform/linux/icu.h"
#include "platform/linux/icu_text.h"

#include <unicode/localebuilder.h>
#include <unicode/locid.h>

#include <array>
#include <string_view>
#include <utility>

namespace kavio {
namespace {

// "sr_RS@latin" is Serbian in Latin letters. ICU takes that for a variant of the language.
constexpr std::array<std::pair<std::string_view, const char*>, 3> scripts{
    {{"LATIN", "Latn"}, {"CYRILLIC", "Cyrl"}, {"DEVANAGARI", "Deva"}}};

/// ICU takes its default from `setlocale` if the host has called that, otherwise from LC_ALL, LC_MESSAGES and LANG; "C"
/// is English.
class IcuLocale final : public Locale {
public:
    std::optional<std::string> languageCode() const override {
        const std::string language = icu::Locale::getDefault().getLanguage();
        if (language.empty()) return std::nullopt;
        return language;
    }

    std::vector<std::string> languages() const override {
        if (!languageCode()) return {};
        auto locale = icu::Locale::getDefault();
        UErrorCode status = U_ZERO_ERROR;
        for (const auto& [modifier, script] : scripts) {
            if (locale.getVariant() != modifier) continue;
            locale = icu::LocaleBuilder().setLocale(locale).setVariant("").setScript(script).build(status);
        }
        return {locale.toLanguageTag<std::string>(status)};
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
