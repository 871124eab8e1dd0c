#include "people/table.h"

#include "command_line/columns.h"

#include <gmock/gmock.h>

#include <sstream>

namespace kavio::wallet {

using namespace ::testing;
using enum Column::Kind;

TEST(WalletTable, FitsATerminalOfAnyWidth) {
    Table table{{{"CODE", NUMBER}, {"NAME"}, {"NOTE", EXACT, 1}, {"WHO", PROSE, 2}}};
    table.add({"7", "Espresso", "sold out", "City Bean"});
    table.add({"12", "Tea", "", ""});
    for (const auto& [width, text] : std::vector<std::pair<std::optional<std::size_t>, std::string>>{
             {std::nullopt, "CODE  NAME      NOTE      WHO\n   7  Espresso  sold out  City Bean\n  12  Tea\n"},
             {35, "CODE  NAME      NOTE      WHO\n   7  Espresso  sold out  City Bean\n  12  Tea\n"},
             {34, "CODE  NAME      NOTE\n   7  Espresso  sold out\n  12  Tea\n"},
             {23, "CODE  NAME\n   7  Espresso\n  12  Tea\n"},
             {13, "7\n  NAME  Espresso\n  NOTE  sold out\n  WHO   City Bean\n\n12\n  NAME  Tea\n"},
         })
        EXPECT_EQ(table.text(width), text);
}

TEST(WalletTable, CutsProseOnlyWhenNoColumnCanBeLeftOut) {
    Table table{{{"CODE", EXACT}, {"NAME"}, {"PLACE"}}};
    table.add({"42100107", "Espresso corner, Alexanderplatz", "Berlin"});
    EXPECT_EQ(table.text(40), "CODE      NAME                    PLACE\n42100107  Espresso corner, Alex…  Berlin\n");
}

// Wide characters take two columns, and what is drawn over another takes none.
TEST(WalletTable, AlignsAnyScript) {
    Table table{{{"NAME"}, {"PRICE", NUMBER}}};
    const std::vector<std::string> names{"緑茶", "Cafe\u0301", "قهوة", "\u1112\u1161\u11ab", "Tee ☕", "ﾎｯﾄ"};
    for (const auto& name : names) table.add({name, "1"});
    std::istringstream lines{table.text(std::nullopt)};
    for (std::string line; std::getline(lines, line);) EXPECT_EQ(command_line::columnsOf(line), 13U) << line;
    EXPECT_EQ(command_line::cutTo(4, "緑茶です"), "緑…");
    EXPECT_EQ(command_line::cutTo(3, "e\u0301e\u0301e\u0301e\u0301"), "e\u0301e\u0301…");
}

TEST(WalletText, IsBrokenBetweenWords) {
    for (const auto& [text, lines] : std::map<std::string, std::string>{
             {"one two three", "one two\n  three"},
             {"a-very-long-word b", "a-very-long-word\n  b"},
             {"  one two three\nfour", "  one\n  two\n  three\nfour"},
             {"機械を探します。", "機械を探\n  しま\n  す。"},
             {"", ""},
         })
        EXPECT_EQ(command_line::wrapped(text, 8, 2), lines);
    EXPECT_EQ(command_line::wrapped("one two three", std::nullopt, 2), "one two three");
}

}  // namespace kavio::wallet
