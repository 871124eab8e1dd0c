#include "wording/text.h"

#include "wording/distance.h"
#include "wording/language.h"
#include "wording/money.h"

#include <kavio/platform/linux.h>

#include <gmock/gmock.h>

#include <limits>

namespace kavio::wallet {

using namespace ::testing;

using Limits = std::numeric_limits<std::int64_t>;

TEST(WalletMoney, IsWrittenInTheDecimalsOfItsCurrency) {
    EXPECT_EQ(moneyText(5, {"EUR", 2}), "0.05 EUR");
    EXPECT_EQ(moneyText(-5, {"EUR", 2}), "-0.05 EUR");
    EXPECT_EQ(moneyText(1250, {"JPY", 0}), "1250 JPY");
    EXPECT_EQ(moneyText(24050, currencyNamed("RSD")), "240.50 RSD");  // ICU knows no decimals for it
    EXPECT_EQ(moneyText(240, currencyOfCountry("JP").value_or(Currency{})), "240 JPY");
    EXPECT_FALSE(currencyOfCountry("") || currencyOfCountry("Japan") || currencyOfCountry("UK"));
    EXPECT_EQ(moneyText(Limits::min(), {"X", 18}), "-9.223372036854775808 X");
    EXPECT_EQ(moneyText(1, {"X", -7}), "1 X");
    EXPECT_EQ(moneyText(1, {"X", 1'000'000'000}), "0.000000000000000001 X");
}

TEST(WalletMoney, IsReadExactlyOrNotAtAll) {
    for (const auto& [text, units] : std::initializer_list<std::pair<const char*, std::int64_t>>{
             {"12.5", 1250}, {"12", 1200}, {"92233720368547758.07", Limits::max()}})
        EXPECT_EQ(smallestUnits(text, 2), units) << text;
    EXPECT_EQ(smallestUnits("1.5", 0), std::nullopt);
    for (const auto* text : {"92233720368547758.08", "0.00", "12.505", "12.", ".5", "1.2.3", "1,50", "-1", "+1", ""})
        EXPECT_EQ(smallestUnits(text, 2), std::nullopt) << text;
}

TEST(WalletMoney, IsTheNearestUnitToASumOfPrices) {
    EXPECT_EQ(smallestUnitsOf(1.1 + 2.2, 2), 330);
    EXPECT_EQ(smallestUnitsOf(1.5, 3), 1500);
    for (const double cost : {0.0, 0.001, -1.0, 1e17, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(smallestUnitsOf(cost, 2), std::nullopt) << cost;
}

/// Writes by other customs while it exists.
class CustomsOf {
public:
    explicit CustomsOf(const char* locale) { setCustoms({.amounts = locale, .dates = locale}); }
    ~CustomsOf() { setCustoms({}); }
    CustomsOf(const CustomsOf&) = delete;
    CustomsOf& operator=(const CustomsOf&) = delete;
};

TEST(WalletMoney, IsWrittenAndReadByTheCustomsOfThePlace) {
    struct Row {
        const char* locale;
        const char* shown;
        const char* typed;
        std::optional<std::int64_t> units;
    };
    for (const auto& [locale, shown, typed, units] : std::vector<Row>{
             {"en_US", "-1,234.500 KWD", "1.500", 1500},
             {"en_US", "-1,234.500 KWD", "1,500", std::nullopt},
             {"de_DE", "-1.234,500 KWD", "1,5", 1500},
             {"de_DE", "-1.234,500 KWD", "1.5", 1500},
             {"de_DE", "-1.234,500 KWD", "1.500", std::nullopt},  // one and a half, or one and a half thousand?
             {"de_DE", "-1.234,500 KWD", "1.000,5", std::nullopt},
             {"ja_JP", "-1,234.500 KWD", "１.５", 1500},
             {"ar_EG", "-١٬٢٣٤٫٥٠٠ KWD", "١٫٥", 1500},
             {"ar_EG", "-١٬٢٣٤٫٥٠٠ KWD", "1.500", 1500},
             {"de_DE", "-1.234,500 KWD", ",5", std::nullopt},
         }) {
        const CustomsOf place{locale};
        EXPECT_EQ(moneyText(-1234500, {"KWD", 3}), shown);
        EXPECT_EQ(smallestUnits(typed, 3), units) << locale << ' ' << typed;
    }
}

TEST(WalletMoney, IsDepositedWithoutLosingTheLastUnit) {
    for (const std::int64_t digits : {0, 1, 2, 3}) {
        for (std::int64_t units = 1; units < 20'000; ++units) {
            double deposited = wholeUnits(units, digits).value_or(0);
            for (std::int64_t i = 0; i < digits; ++i) deposited *= 10.0;
            ASSERT_EQ(static_cast<std::int64_t>(deposited), units) << digits;
        }
    }
    EXPECT_FALSE(wholeUnits(4340185607671923, 2) || wholeUnits(Limits::max(), 0)) << "between two doubles";
}

TEST(WalletText, WritesDistancesByTheCustomsOfThePlace) {
    EXPECT_NEAR(metresBetween(52.5, 13.4, 52.51, 13.4), 1112, 1);
    EXPECT_NEAR(metresBetween(0, 179.99, 0, -179.99), 2224, 1);
    EXPECT_EQ(distanceText(274.0), "270 m");
    EXPECT_EQ(distanceText(996.0), "1 km");
    const CustomsOf place{"de_DE"};
    EXPECT_EQ(distanceText(1249.0), "1,2 km");
}

TEST(WalletText, ShowsNothingThatATerminalWouldObey) {
    EXPECT_EQ(printable("a\033[31mb\r\nc\tq"), "a [31mb  c q");
    EXPECT_EQ(printable("\u202eabc\u2028"), " abc ");
    EXPECT_EQ(printable("caf\xc3\xa9 \xff"), "café \uFFFD");
}

TEST(WalletText, TakesDatesAsItShowsThem) {
    Platform::install(makeLinuxPlatform());
    const Date date{std::chrono::seconds{1709647620}};
    EXPECT_EQ(dateFromLocalTime(localTime(date)), date);
    EXPECT_EQ(dateFromLocalTime("2024-03-05"), dateFromLocalTime("2024-03-05 00:00"));
    for (const auto* text : {"2024-3-5", "2024-03-05 7:9", "2024-02-30", "2024-03-05 ", ""})
        EXPECT_FALSE(dateFromLocalTime(text)) << text;
    for (const auto& [locale, day] : std::map<const char*, const char*>{
             {"de_DE", "05.03.2024"}, {"ja_JP", "2024/03/05"}, {"ar_EG", "٠٥/٠٣/٢٠٢٤"}, {"en_US", "03/05/2024"}}) {
        const CustomsOf place{locale};
        EXPECT_THAT(localTime(date), StartsWith(day));
        EXPECT_EQ(dateFromLocalTime(localTime(date)), date) << locale;
        EXPECT_EQ(dateFromLocalTime(day), dateFromLocalTime("2024-03-05")) << locale;
        EXPECT_TRUE(dateFromLocalTime("2024-03-05")) << locale;
    }
}

}  // namespace kavio::wallet
