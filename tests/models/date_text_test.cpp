#include "models/date_text.h"

#include <kavio/testing/device.h>

#include <gtest/gtest.h>

#include <iterator>
#include <limits>
#include <random>
#include <sstream>

namespace kavio::test {
namespace {

using namespace std::chrono_literals;
using std::chrono::sys_days;

const DateFormat posix{"yyyy-MM-dd'T'HH:mm:ss.SSS", "en_US_POSIX", "UTC"};
const DateFormat local{"yyyy-MM-dd'T'HH:mm:ss.SSS", std::nullopt, "UTC"};
const DateFormat whole{"yyyy-MM-dd'T'HH:mm:ss", "en_US_POSIX", "UTC"};
const DateFormat offset{"yyyy-MM-dd'T'HH:mm:ss.SSSZ", std::nullopt, std::nullopt};

class DateTexts : public testing::Test {
protected:
    const Device device;
    const std::shared_ptr<DateFormatter> formatter = Platform::current().dateFormatter;
};

TEST_F(DateTexts, MeanWhatThePlatformSaysTheyMean) {
    std::vector<std::string> texts{"", " ", " 2024-03-05T14:07:09.250", "2024-03-05T14:07:09.250 "};
    texts.emplace_back("2024-03-05T14:07:09\0 250", 23);
    std::istringstream words(R"(x 2024-03-05 2024-03-05T14:07:09 2024-03-05T14:07:09.25 2024-03-05T14:07:09.2500
        2024-02-29T00:00:00.000 2023-02-29T00:00:00.000 2100-02-29T00:00:00.000 2024-13-01T00:00:00.000
        2024-01-00T00:00:00.000 2024-01-01T24:00:00.000 2024-01-01T00:00:60.000 1582-10-10T00:00:00.000
        0001-01-01T00:00:00.000 0000-01-01T00:00:00.000 -001-01-01T00:00:00.000 9999-12-31T23:59:59.999
        12024-03-05T14:07:09.250 24-03-05T14:07:09.250 2024-3-5T4:7:9.250 2024-03-05t14:07:09.250
        2024-03-05T14:07:09.250Z 2024-03-05T14:07:09.250+0000 2024-03-05T14:07:09.250-1159
        2024-03-05T14:07:09.250+1400 2024-03-05T14:07:09.250+9999 2024-03-05T14:07:09.250+0060
        2024-03-05T14:07:09.250+01:00 2024-03-05T14:07:09.250GMT ٢٠٢٤-03-05T14:07:09.250)");
    texts.insert(texts.end(), std::istream_iterator<std::string>(words), {});
    // Ordinary ones with a character or two changed.
    std::mt19937 random(7);
    const auto below = [&](std::size_t limit) { return random() % limit; };
    for (int i = 0; i < 20000; ++i) {
        std::string text = i % 3 == 0   ? "2024-03-05T14:07:09"
                           : i % 3 == 1 ? "1999-12-31T23:59:58.250"
                                        : "2024-02-28T10:20:30.125+0130";
        for (std::size_t changes = 1 + below(3); changes > 0; --changes)
            text[below(text.size())] = "0123456789-:T.+ Z"[below(17)];
        texts.push_back(text);
    }
    for (const auto& text : texts) {
        SCOPED_TRACE(text);
        EXPECT_EQ(DateText::parse(text), formatter->parse(posix, text));
        EXPECT_EQ(DateText::parseLocalized(text), formatter->parse(local, text));
        EXPECT_EQ(DateText::parseSeconds(text), formatter->parse(whole, text));
        EXPECT_EQ(DateText::parseWithOffset(text), formatter->parse(offset, text));
    }
}

TEST_F(DateTexts, AreWrittenAsThePlatformWritesThem) {
    std::mt19937_64 random(7);
    std::uniform_int_distribution<std::int64_t> quarters(-60'000'000'000 * 4, 260'000'000'000 * 4);
    std::vector<Date> dates{Date(sys_days(1583y / 1 / 1)), Date(sys_days(1582y / 12 / 31)),
                            Date(sys_days(9999y / 12 / 31)), Date(sys_days(10000y / 1 / 1)),
                            Date(Date::duration(1e18))};
    // Quarters of a second are exact in a double.
    for (int i = 0; i < 5000; ++i) dates.emplace_back(Date::duration(static_cast<double>(quarters(random)) / 4));
    for (const auto date : dates) {
        SCOPED_TRACE(date.time_since_epoch().count());
        EXPECT_EQ(DateText::format(date), formatter->format(posix, date));
        EXPECT_EQ(DateText::stamp(date), formatter->format({"yyyyMMddHHmmss", "en_US_POSIX", "UTC"}, date));
        EXPECT_EQ(DateText::debug(date), formatter->format({"yyyy-MM-dd HH:mm:ss xx", "en_US_POSIX", "UTC"}, date));
    }
    EXPECT_EQ(DateText::format(Date(Date::duration(std::numeric_limits<double>::quiet_NaN()))), "");
}

TEST_F(DateTexts, KeepEveryMillisecond) {
    for (int millisecond = 0; millisecond < 1000; ++millisecond) {
        const auto digits = std::to_string(1000 + millisecond).substr(1);
        const auto text = "2024-03-05T14:07:09." + digits;
        EXPECT_EQ(DateText::format(*DateText::parse(text)), text);
    }
}

}  // namespace
}  // namespace kavio::test
