#include "models/json/document.h"
#include "models/json/json_value.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// What RFC 8259 decides: texts that every parser has to accept, and texts that none may. What it leaves to the parser,
// such as a byte order mark, half of a surrogate pair, or a number beyond a double, is in json_test.cpp.

namespace kavio::test {
namespace {

using namespace std::string_literals;
using Texts = std::vector<std::string>;

Texts operator+(Texts texts, const Texts& more) {
    texts.insert(texts.end(), more.begin(), more.end());
    return texts;
}

Texts split(const std::string& text) {
    Texts words;
    for (std::size_t start = 0; start < text.size(); start = text.find_first_not_of(' ', text.find(' ', start)))
        words.push_back(text.substr(start, text.find(' ', start) - start));
    return words;
}

/// Each of `inner` between `before` and `after`.
Texts within(const std::string& before, const Texts& inner, const std::string& after) {
    Texts texts;
    for (const auto& text : inner) texts.push_back(before + text + after);
    return texts;
}
Texts quoted(const Texts& contents) { return within("\"", contents, "\""); }

/// A value alone, with white space around it, and as part of others.
Texts everywhere(const Texts& values) {
    return values + within(" \t\r\n", values, " \t\r\n") + within("[", values, "]") + within("[0,", values, ",[]]") +
           within(R"({"a":)", values, "}") + within(R"({"a": [)", values, R"(],"b" :{}})");
}

const Texts goodLiterals = split("null true false");
const Texts badLiterals = split(
                              "nul nulll NULL Null True tru truee fals FALSE falsee undefined nan NaN Infinity "
                              "-Infinity inf a \u00e5 ' '' 'a' ` -true") +
                          Texts{"nu ll", "t\0rue"s, "\\u006eull", "\uFEFF"s, "\xE2\x81\xA0"};

const Texts goodNumbers = split(
    "0 -0 1 -1 10 123456789 -9007199254740993 9223372036854775807 18446744073709551615 0.0 -0.0 0.5 1.0 1.000 "
    "123.456789 0e0 0e1 0e+1 0E-1 1e1 1E1 1E+2 1e-2 1e05 20e1 1.5e3 1.5E-3 123.456e78 -1e+00 1e-400 "
    "-0.000000000000000000000000000000000000000000000000000000000000000000000000000001");
const Texts badNumbers = split(
    "- + +1 ++1 -- --1 -+1 00 01 -01 -012 012.5 1. -1. 0. .1 -.1 .5e1 . .. 1..2 1.2.3 0.1.2 1.e1 2.e+3 2.e-3 0.e1 .e1 "
    "1e 1E 1e+ 1E- 1.0e 1.0e+ 0e 0e+ 1ee2 1e1e1 1e1.5 1eE2 0.3e 9.e+ 0x 0x42 0b1 1_000 1a 1f -a 1e1a 0.1a 1\u00e9 "
    "\uFF11 "
    "\u0661 -\u221e 1+2 1/2 (1) 1\xE5 $1 #1 "
    // Malformed, and beyond a double or 64 bits besides.
    "01e400 -01e400 1.e400 1e400. 1e400x 1e400e1 1e+400- --1e400 .1e400 099999999999999999999 99999999999999999999. "
    "-99999999999999999999x");

// Control characters must be escaped; nothing else must be, other than quotes and backslashes.
Texts controls(const std::string& before, const std::string& after) {
    Texts texts;
    for (char c = 0; c < ' '; ++c) texts.push_back(before + c + after);
    return texts;
}
const Texts goodContents =
    split(R"(a / /* *// ' {}[]:, \\ \" \/ \b\f\n\r\t \"\\\/\b\f\n\r\t \\n \\u0000 \\\" \u0000 \u000a \u0022 \u005C)"
          R"( \u0061 \u00a0\u00A0 \uA66D \uFFFF \uFDD0 \ud83d\ude00 \uD834\uDd1e \uDBFF\uDFFF)") +
    Texts{"", " ", "asd ", "\x7F", "\u0080", "\u0627\u0644", "\u2028", "\uFEFF", "\uFFFE", "\uFDD0", "\U0010FFFF"};
const Texts badContents =
    Texts{"\"", "\\", "\\\\\\", R"(\ )", R"(\a)", R"(\v)", R"(\0)", R"(\')", R"(\x00)", R"(\x)", R"(\U0041)", R"(\N)",
          R"(\1)", R"(\u)", R"(\u1)", R"(\u00A)", R"(\u12)", R"(\u00G0)", R"(\u-123)", R"(\u 041)", R"(\u{41})",
          R"(\ud83d\u)", R"(\ud83d\u1)", R"(\ud83d\ude0)", R"(\ud83d\ude0g)", R"(\uqqqq)", R"(\ud800\x)", "\\ud800\x01",
          "\\ud800\xC3", "\\udc00\\", "\\\U0001F300", "\\\u00e9", "\\\t", "\\\n", "\\\xE5", "\\u\xE5",
          // Bytes that are not UTF-8: lone, cut short, too long for what they say, surrogates, beyond the last one.
          "\x80", "\xBF", "\xE9", "\xFF", "\xFE", "\xC3", "\xC3\x28", "\xE2\x82", "\xE2\x28\xA1", "\xF0\x9F\x98",
          "\xF0\x28\x8C\xBC", "\xC0\xAF", "\xC1\xBF", "\xE0\x80\xAF", "\xF0\x80\x80\xAF", "\xFC\x83\xBF\xBF\xBF\xBF",
          "\xED\xA0\x80", "\xED\xB0\x80", "\xED\xA0\xBD\xED\xB8\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80",
          "\xF7\xBF\xBF\xBF", "a\x80z"} +
    controls("", "") + controls("a", "z");

const Texts goodStructures =
    split(R"([] {} [[]] [[],[]] [[[]],0] {"":0} {"a":{}} {"a":[]} {"a":1,"a":2} {"a":{"a":{"a":null}}} [null,1,"1",{}])"
          R"( {"\u0000":0} {"title":"\u041f\u043e"} {"min":-1.0e+28,"max":1.0e+28})") +
    Texts{" [ ] ", "[\n]", "\t{\r\n}\t", "[ 1 , 2 ]", R"({ "a" : 1 , "b" : 2 })", " [1]", "[\"a\"]\n"};

const Texts badStructures =
    split(
        R"([ ] { } [[] []] [} {] , : [,] [1,] [1,,2] [1 ["a" [1:2] {,} {:1} {"a"} {"a":} {"a":1, {"a":1,} {"a"::1})"
        R"( {"a",1} {"a"1} {"a":1"b":2} {a:1} {'a':1} {1:1} {[]:1} {"a":1}} {"a":1}/**/ []{} [1]x "a""b" [-] // # ")") +
    Texts{"", " ", "\t\r\n ", "1 2", "[1 2]", "[] []", "{\"a\" 1}", "{\"a\":1 x}", "[1]\0"s, "\0"s, "[\0]"s, "[\f]",
          "[\u00a0]", "\f1", "[\xA0]", "\xEF\xBB{}", "\xFF\xFE[\0]\0"s, "{}\xEF\xBB\xBF", "\xEF\xBB\xBF", "[\xE5]",
          "\xEF\xBB\xBF\xEF\xBB\xBF{}", "{\"\xC3\x28\":1}",
          // Malformed, although they contain what is tolerated.
          "[1e400,]", "[99999999999999999999 1]", "{\"a\":1e400,}", "[\"\\ud800\",]", "[\"\\ud800]",
          std::string(100'000, '{'), std::string(100'000, ']')};

/// As any reply is read.
bool isAccepted(const std::string& json) {
    try {
        decodeDocument<JsonValue>(json);
        return true;
    } catch (const DecodingError&) {
        return false;
    }
}

void expectAll(const Texts& texts, bool accepted) {
    for (const auto& json : texts) EXPECT_EQ(isAccepted(json), accepted) << json.substr(0, 200);
}

TEST(JsonCases, ThatMustBeAccepted) {
    expectAll(goodStructures + everywhere(goodLiterals + goodNumbers + quoted(goodContents)) +
                  within("{", quoted(goodContents), ":0}"),
              true);
}

TEST(JsonCases, ThatMustBeRefused) {
    expectAll(badStructures + everywhere(badLiterals + badNumbers + quoted(badContents)) +
                  within("{", quoted(badContents), ":0}"),
              false);
}

}  // namespace
}  // namespace kavio::test
