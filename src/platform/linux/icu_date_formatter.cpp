#include "platform/linux/icu.h"
#include "platform/linux/icu_text.h"

#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>
#include <unicode/uchar.h>

#include <cmath>
#include <map>
#include <mutex>
#include <tuple>

namespace kavio {
namespace {

// None of our patterns takes a longer text, and ICU needs seconds for a number of a million digits.
constexpr std::size_t longestText = 256;

// ICU reads a fraction of a second as a 32-bit integer and divides it by a 32-bit power of ten: ten digits give a wrong
// time, and 35 give a division by zero.
constexpr int mostFractionDigits = 9;

bool hasFraction(std::string_view pattern) { return pattern.find('S') != std::string_view::npos; }

bool hasLongNumber(const icu::UnicodeString& text) {
    int digits = 0;
    for (std::int32_t at = 0; at < text.length(); at = text.moveIndex32(at, 1)) {
        digits = u_isdigit(text.char32At(at)) ? digits + 1 : 0;
        if (digits > mostFractionDigits) return true;
    }
    return false;
}

std::unique_ptr<icu::SimpleDateFormat> makeFormat(const DateFormat& format) {
    UErrorCode status = U_ZERO_ERROR;
    const auto locale = format.locale ? icu::Locale(format.locale->c_str()) : icu::Locale::getDefault();
    auto made = owned(new icu::SimpleDateFormat(toIcu(format.pattern), locale, status), status);
    if (U_FAILURE(status)) return nullptr;

    auto zone = owned(format.timeZone ? icu::TimeZone::createTimeZone(toIcu(*format.timeZone))
                                      : icu::TimeZone::createDefault());
    // Whatever calendar the locale prefers: the service's dates are Gregorian.
    auto calendar = owned(new icu::GregorianCalendar(zone.release(), locale, status), status);
    if (U_FAILURE(status)) return nullptr;
    made->adoptCalendar(calendar.release());
    made->setLenient(false);
    return made;
}

class IcuDateFormatter final : public DateFormatter {
public:
    std::optional<Date> parse(const DateFormat& format, std::string_view text) const override {
        if (text.size() > longestText) return std::nullopt;
        const auto input = toIcu(text);
        if (hasFraction(format.pattern) && hasLongNumber(input)) return std::nullopt;
        icu::ParsePosition position;
        const std::lock_guard lock(mMutex);
        const auto* icuFormat = cached(format);
        if (icuFormat == nullptr) return std::nullopt;

        const UDate milliseconds = icuFormat->parse(input, position);
        if (position.getErrorIndex() >= 0 || position.getIndex() != input.length()) return std::nullopt;
        return Date(std::chrono::duration<double>(milliseconds / 1000));
    }

    std::string format(const DateFormat& format, Date date) const override {
        const UDate milliseconds = date.time_since_epoch().count() * 1000;
        if (!std::isfinite(milliseconds)) return {};
        const std::lock_guard lock(mMutex);
        const auto* icuFormat = cached(format);
        if (icuFormat == nullptr) return {};

        UErrorCode status = U_ZERO_ERROR;
        const auto calendar = owned(icuFormat->getCalendar()->clone());
        calendar->setTime(milliseconds, status);  // refuses what is out of range, where a lenient one would clamp it
        if (U_FAILURE(status)) return {};
        icu::UnicodeString text;
        icu::FieldPosition unused;
        return fromIcu(icuFormat->format(*calendar, text, unused));
    }

private:
    /// Patterns come from the library's own code, so there are few. Null for one that ICU refuses.
    const icu::SimpleDateFormat* cached(const DateFormat& format) const {
        const auto found = mFormats.find(std::tie(format.pattern, format.locale, format.timeZone));
        if (found != mFormats.end()) return found->second.get();
        return mFormats.emplace(Key(format.pattern, format.locale, format.timeZone), makeFormat(format))
            .first->second.get();
    }

    using Key = std::tuple<std::string, std::optional<std::string>, std::optional<std::string>>;

    mutable std::mutex mMutex;  // ICU's formats are not safe to share, even for parsing
    mutable std::map<Key, std::unique_ptr<icu::SimpleDateFormat>, std::less<>> mFormats;
};

}  // namespace

std::shared_ptr<DateFormatter> makeIcuDateFormatter() { return std::make_shared<IcuDateFormatter>(); }

}  // namespace kavio
