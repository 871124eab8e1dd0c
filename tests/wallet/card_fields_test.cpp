#include "wording/card_fields.h"

#include <gmock/gmock.h>

namespace kavio::wallet {

using namespace ::testing;
using enum CardField;

TEST(WalletCardFields, AreJudgedOneByOne) {
    using namespace std::chrono_literals;
    struct Row {
        CardField field;
        const char* text;
        const char* problem;
    };
    CardJudge judge{2026y / std::chrono::November};
    for (const auto& [field, text, problem] : std::vector<Row>{
             {NUMBER, "4111 1111-1111 1111 ", ""},
             {NUMBER, "４１１１１１１１１１１１１１１１", ""},
             {NUMBER, "4111111111111112", "a digit is wrong"},
             {NUMBER, "1411111111111111", "a digit is wrong"},
             {NUMBER, "41111111111", "12 to 19 digits"},
             {NUMBER, "4111x11111111111", "12 to 19 digits"},
             {MONTH, "0", "from 1 to 12"},
             {MONTH, "13", "from 1 to 12"},
             {MONTH, "May", "from 1 to 12"},
             {MONTH, "4294967297", "from 1 to 12"},
             {MONTH, " 9", ""},
             {YEAR, "2025", "that year is over"},
             {YEAR, "26", "that month of the year is over"},
             {YEAR, "27", ""},
             {MONTH, "١١", ""},
             {YEAR, "2026", ""},
             {YEAR, "20266", "four digits"},
             {SECURITY_CODE, "012", ""},
             {SECURITY_CODE, "12", "three or four digits"},
             {NAME, "  ", "missing"},
             {ADDRESS, "robin.o@mail.kavio.example", ""},
             {ADDRESS, "robin@kavio", "looks like"},
             {ADDRESS, "@kavio.example", "looks like"},
             {ADDRESS, "robin@kavio..example", "looks like"},
             {ADDRESS, "ro bin@kavio.example", "looks like"},
             {ADDRESS, "robin@@kavio.example", "looks like"},
         }) {
        const auto found = judge.problemWith(field, tidied(field, text));
        if (*problem == '\0')
            EXPECT_EQ(found, "") << text;
        else
            EXPECT_THAT(found, HasSubstr(problem)) << text;
    }
    EXPECT_EQ(tidied(NUMBER, " 4111 1111"), "41111111");
    EXPECT_EQ(tidied(MONTH, "9"), "09");
}

}  // namespace kavio::wallet
