#include "repositories/machine_code.h"

#include "support/world.h"

#include <gmock/gmock.h>

namespace kavio::test {
namespace {

// What a code is looked up as, in short form.
std::string lookedUpAs(const std::string& text) {
    const auto query = machineQueryForCode(text);
    if (!query) return "nothing";
    std::string described;
    if (query->kavioMachineId) described += "kavio " + std::to_string(*query->kavioMachineId);
    if (query->machineId) described += "machine " + std::to_string(*query->machineId);
    if (query->qr_number) described += "number " + *query->qr_number;
    if (query->qr_scan) described += "scan " + *query->qr_scan;
    if (query->hwSerial) described += " serial " + *query->hwSerial;
    return described;
}

// Refuses whatever no port is promised to be asked for.
struct PromisedExpressions final : RegularExpression {
    explicit PromisedExpressions(std::shared_ptr<RegularExpression> all) : engine(std::move(all)) {}
    std::variant<std::vector<Match>, Invalid> matches(std::string_view pattern, std::string_view text) const override {
        for (const auto* promised : {R"(MMID=(\d+))", R"(NDS=(\d+))", R"(Kavio ID: (\d+))", R"(Serial Num: (\d+))"})
            if (pattern == promised) return engine->matches(pattern, text);
        return Invalid{"not promised"};
    }
    const std::shared_ptr<RegularExpression> engine;
};

TEST(MachineCode, StandsForALookUp) {
    World world;
    auto& expressions = Platform::current().regularExpression;
    expressions = std::make_shared<PromisedExpressions>(expressions);
    const std::string web = "https://go.kavio.example/";
    for (const auto& [text, lookedUp] : std::vector<std::pair<std::string, std::string>>{
             {"kavio://", "scan kavio://"},
             {"kavio://a\nb", "scan kavio://a\nb"},
             {"https://qr.kavio.example/x?MMID=12", "scan https://qr.kavio.example/x?MMID=12"},
             {"https://nfc.kavio.example/1", "scan https://nfc.kavio.example/1"},
             {web + "?MMID=12&NDS=99", "kavio 12 serial 99"},
             {web + "?NDS=0099&MMID=0012", "kavio 12 serial 0099"},
             {web + "?MMID=12", "kavio 12 serial "},
             {web + "?MMID=12&MMID=13&NDS=1&NDS=2", "kavio 12 serial 1"},
             {web + "?MMID=x&MMID=13", "kavio 13 serial "},
             {web + "?XMMID=12", "kavio 12 serial "},
             {web + "\n?MMID=12\nNDS=9", "kavio 12 serial 9"},
             {web + "?MMID=9223372036854775807", "kavio 9223372036854775807 serial "},
             {web + "?MMID=12&NDS=\u0661", "kavio 12 serial \u0661"},
             {"5724", "kavio 5724"},
             {"05724", "kavio 5724"},
             {"0", "kavio 0"},
             {"1", "machine 1"},
             {"5725", "machine 5725"},
             {"12345", "machine 12345"},
             {"000001", "number 000001"},
             {"1234567", "machine 1234567"},
             {"12345678", "number 12345678"},
             {"123456789", "machine 123456789"},
             {"-5724", "machine -5724"},
             {"+5724", "machine 5724"},
             {"+12345", "number +12345"},
             {"9223372036854775807", "machine 9223372036854775807"},
             {"-1234567", "number -1234567"},
             {"-0", "machine 0"},
             {"-9223372036854775808", "machine -9223372036854775808"},
             {"00000000000000000000000001", "machine 1"},
             {"VPOS TERMINAL\nSerial Num: 0123\nKavio ID: 0077", "kavio 77 serial 0123"},
             {"VPOS TERMINAL Kavio ID: 77", "kavio 77 serial "},
         })
        EXPECT_EQ(lookedUpAs(text), lookedUp) << "for \"" << text << "\"";
    for (const auto* link :
         {"?mmid=12", "?MMID=", "?MMID=-12", "?NDS=99", "", "?MMID=9223372036854775808", "?MMID=\u0661\u0662"})
        EXPECT_EQ(lookedUpAs(web + link), "nothing") << link;
    for (const auto* text : {"9223372036854775808",
                             "\u0661\u0662\u0663",
                             "\uFF11\uFF12",
                             "12 ",
                             "12\n",
                             "1.0",
                             "1e2",
                             "0x10",
                             "+",
                             "--1",
                             "",
                             "abc",
                             "\xff",
                             "Kavio://m",
                             " kavio://m",
                             "kavio:/m",
                             "HTTPS://QR.kavio.example/x",
                             "http://qr.kavio.example/x",
                             "https://nfc.kavio.exampl",
                             "VPOS TERMINAL Kavio ID:77 Serial Num: 123",
                             "VPOS TERMINAL kavio id: 77",
                             "VPOS TERMINAL Serial Num: 123",
                             "VPOS TERMINAL Kavio ID: 99999999999999999999",
                             "VPOS TERMINAL",
                             "vpos terminal Kavio ID: 77"})
        EXPECT_EQ(lookedUpAs(text), "nothing") << "for \"" << text << "\"";
    EXPECT_EQ(lookedUpAs(std::string("12\0", 3)), "nothing");
}

TEST(MachineCode, KnowsEveryCheckDigit) {
    const std::string ofTwoDigits =
        "03175986421750983426709215486389453620173674209581"
        "25814367909438617205586972013461230459784206871359";
    for (std::size_t number = 0; number < ofTwoDigits.size(); ++number) {
        const auto digits = std::to_string(100 + number).substr(1);
        for (char digit = '0'; digit <= '9'; ++digit)
            EXPECT_EQ(passesDammTest(digits + digit), digit == ofTwoDigits[number]) << digits << digit;
    }
}

}  // namespace
}  // namespace kavio::test
