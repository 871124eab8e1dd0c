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

std::string repeated(const std::string& text, int times) {
    std::string all;
    for (; times > 0; --times) all += text;
    return all;
}

/// Each of `inner` between `before` and `after`.
Texts within(const std::string& before, const Texts& inner, const std::string& after) {
    Texts texts;
    for (const auto& text : inner) texts.push_back(std::string(before).append(text).append(after));
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
    "123.456789 "
    "0e0 0e1 0e+1 0E-1 1e1 1E1 1E+2 1e-2 1e05 20e1 1.5e3 1.5E-3 123.456e78 -1e+00 1e-400 "
    "-0.000000000000000000000000000000000000000000000000000000000000000000000000000001");
const Texts badNumbers = split(
    "- + +1 ++1 -- --1 -+1 00 01 -01 -012 012.5 1. -1. 0. .1 -.1 .5e1 . .. 1..2 1.2.3 0.1.2 1.e1 2.e+3 2.e-3 0.e1 .e1 "
    "1e 1E "
    "1e+ 1E- 1.0e 1.0e+ 0e 0e+ 1ee2 1e1e1 1e1.5 1eE2 0.3e 9.e+ 0x 0x42 0b1 0o7 1_000 1a 1A2 1f 1L -a 1e1a 0.1a 1\u00e9 "
    "\uFF11 \u0661 -\u221e 1+2 1/2 (1) 1\xE5 -1x $1 #1 "
    // Malformed, and beyond a double or 64 bits besides.
    "01e400 -01e400 1.e400 1e400. 1e400x 1e400e1 1e+400- --1e400 .1e400 099999999999999999999 99999999999999999999. "
    "-99999999999999999999x");

// Control characters must be escaped; nothing else must be, other than quotes and backslashes.
Texts controls(const std::string& before, const std::string& after) {
    Texts texts;
    for (char c = 0; c < ' '; ++c) texts.push_back(std::string(before).append(1, c).append(after));
    return texts;
}
const Texts goodContents = Texts{"",
                                 " ",
                                 "a",
                                 "asd ",
                                 "/",
                                 "/*",
                                 "*//",
                                 "'",
                                 "{}[]:,",
                                 "\x7F",
                                 "\x7F\x7F",
                                 R"(\\)",
                                 R"(\")",
                                 R"(\/)",
                                 R"(\b\f\n\r\t)",
                                 R"(\"\\\/\b\f\n\r\t)",
                                 R"(\\n)",
                                 R"(\\u0000)",
                                 R"(\\\")",
                                 R"(\u0000)",
                                 R"(\u000a)",
                                 R"(\u0012)",
                                 R"(\u0022)",
                                 R"(\u005C)",
                                 R"(\u0061)",
                                 R"(\u00a0\u00A0)",
                                 R"(\u0821)",
                                 R"(\uA66D)",
                                 R"(\uFFFF)",
                                 R"(\uFFFE)",
                                 R"(\uFDD0)",
                                 R"(\u200B)",
                                 R"(\u2064)",
                                 R"(\ud83d\ude00)",
                                 R"(\uD834\uDd1e)",
                                 R"(\uDBFF\uDFFF)",
                                 R"(\uD83F\uDFFE)",
                                 R"(\uDBFF\uDFFE)",
                                 R"(\ud83d\ude39\ud83d\udc8d)",
                                 "\u0080",
                                 "\u00e9",
                                 "\u03c0",
                                 "\u0627\u0644",
                                 "\u200B",
                                 "\u2028",
                                 "\u2029",
                                 "\uFEFF",
                                 "\uFFFE",
                                 "\uFFFF",
                                 "\uFDD0",
                                 "\U0001D11E",
                                 "\U0001BFFF",
                                 "\U0010FFFF",
                                 "\u20AC\U0001F600\u00fc" + std::string(1000, 'x')};
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
    split(
        R"([] {} [[]] [[],[]] [[[]],0] {"":0} {"":""} {"a":{}} {"a":[]} {"a":1,"a":2} {"a":1,"a":1} {"a":{"a":{"a":null}}} [null,1,"1",{}])"
        R"( [1,null,null,null,2] {"\u0000":0} {"a\u0000b":0} {"title":"\u041f\u043e"} {"min":-1.0e+28,"max":1.0e+28} [0e1] [123.456e-78])") +
    Texts{" [ ] ",
          "[\n]",
          "\t{\r\n}\t",
          "[ 1 , 2 ]",
          R"({ "a" : 1 , "b" : 2 })",
          "{\n\"a\": \"b\"\n}\n",
          "[[]   ]",
          "[1\n]",
          " [1]",
          "[2] ",
          "[\"a\"]\n",
          std::string(400, '[') + std::string(400, ']')};

const Texts badStructures =
    split(
        "[ ] { } [[] []] {{ }} [} {] {] [{ {[ [[ ]] , : [, [,] [,1] [1,] [1,,2] [1,,] [,,] [1 [1, [1,2 [\"\" [\"\", "
        "[\"a\" [{} [{}, "
        "[:] [1:2] [\"\":1] [\"a\",1: {, {,} {: {:} {:1} {\"a\" {\"a\"} {\"a\": {\"a\":} {\"a\":1 {\"a\":1, {\"a\":1,} "
        "{\"a\":1,,\"b\":2} {,\"a\":1} "
        "{\"a\"::1} {\"a\":1:2} {\"a\",1} {\"a\"1} {\"a\":1\"b\":2} {\"a\":1;\"b\":2} {\"a\"=1} {\"a\":1,\"b\"} "
        "{\"a\":1,1} {a:1} {a:\"b\"} {'a':1} {1:1} {null:1} "
        "{true:1} {[]:1} {{}:1} {\"a\":(1)} {\"a\":1}} {\"a\":1}# {\"a\":1}/**/ {\"a\":1}// {\"a\":/**/1} {\"a\":1/* "
        "[]] [1]] []{} {}[] {}{} [][] [1]x [1]1 "
        "{}\"\" 1,2 1;2 \"a\"\"b\" \"a\",\"b\" \"a\":1 [1\"a\"] [\"a\"1] [\"a\"\"b\"] [1[]] [[]1] [1{}] [3[4]] [*] [?] "
        "[<null>] [-] [\\n] [\"x\"]] <.> [* "
        "// /**/ # %00 \\ \" \"a a\" \"\\\" \"\\ \"\\u \"\\u00 [\" [\"a {\" {\"a [\\u000A\"\"] {\"a\":\"b \u2060 "
        "\uFEFF") +
    Texts{"", " ", "\n", "\t\r\n ", "1 2", "[1 2]", "[1 true]", "\"a\" \"b\"", "[] []", "{\"a\" 1}",
          "{\"a\":1 \"b\":2}", "{\"a\" b}", "{\"a\":1 x}", "[1]\0"s, "\0"s, "[\0]"s, "{\"a\":\0}"s, "[\f]", "[\v]",
          "[\u00a0]", "[\u2028]", "[\u3000]", "\f1", "1\v", "[\xA0]", "[1,\n1\n,1", "[\"a\",\n4\n,1,", "\xEF\xBB{}",
          "\xEF{}", "\xFF\xFE[\0]\0"s, "\0[\0]"s, "{}\xEF\xBB\xBF", "\xEF\xBB\xBF", "\xEF\xBB\xBF\xEF\xBB\xBF{}",
          "\xE5", "[\xE5]", "[\xFF]", "{\"\xC3\x28\":1}", "[1e400,]", "[99999999999999999999 1]", "{\"a\":1e400,}",
          "[\"\\ud800\",]", "[\"\\ud800]",
          // Open without an end, as deep as somebody cares to go.
          std::string(100'000, '['), std::string(100'000, '{'), std::string(100'000, ']'),
          std::string(100'000, '[') + std::string(99'999, ']'), repeated(R"([{"":)", 50'000)};

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
