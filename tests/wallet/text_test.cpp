#include "people/text.h"

#include "people/money.h"

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
}

}  // namespace kavio::wallet
