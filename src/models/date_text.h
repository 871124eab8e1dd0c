#pragma once

#include <kavio/date.h>

#include <optional>
#include <string>
#include <string_view>

namespace kavio {

/// Dates as the service writes and reads them.
///
/// The platform's date formatter decides what every text means; the texts that the service sends in practice are read
/// and written without it, with the same result.
class DateText {
public:
    DateText() = delete;

    /// "2024-03-05T14:07:09.250", UTC.
    static std::optional<Date> parse(std::string_view text);
    /// The same form; a text that is not ordinary is read according to the device's current locale.
    static std::optional<Date> parseLocalized(std::string_view text);
    /// "2024-03-05T14:07:09", UTC.
    static std::optional<Date> parseSeconds(std::string_view text);
    /// "2024-03-05T14:07:09.250+0100"; a text that is not ordinary is read according to the device's current locale.
    static std::optional<Date> parseWithOffset(std::string_view text);

    /// "2024-03-05T14:07:09.250", UTC.
    static std::string format(Date date);
    /// "20240305140709", UTC.
    static std::string stamp(Date date);
    /// "2024-03-05 14:07:09 +0000".
    static std::string debug(Date date);

    /// The device's time, which stands in for some dates that cannot be read.
    static Date now();
};

}  // namespace kavio
