#include "models/json/decoding_error.h"
#include "models/json/document.h"
#include "models/json/json_value.h"
#include "models/json/object_shape.h"
#include "models/replies.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <tuple>
#include <type_traits>

namespace kavio::test {
namespace {

template <class T>
std::optional<T> valueOf(const std::string& json) {
    try {
        return decodeDocument<T>(json);
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

bool isRefused(const std::string& json) { return !valueOf<JsonValue>(json); }

TEST(Numbers, AreIntegersWhenTheirValueIs) {
    struct Case {
        const char* json;
        std::optional<std::int64_t> integer;
        std::optional<std::uint64_t> natural;
        std::optional<std::int32_t> small;
    };
    for (const auto& c : std::initializer_list<Case>{
             {"1.0", 1, 1U, 1},
             {"-0.0", 0, 0U, 0},
             {"-7", -7, {}, -7},
             {"1e-400", 0, 0U, 0},
             {"2147483648.0", 2147483648, 2147483648U, {}},
             {"9223372036854775808", {}, 9223372036854775808U, {}},
             {"9007199254740991e0", 9007199254740991, 9007199254740991U, {}},
             {"9007199254740993.0", {}, {}, {}},  // a double would make it ...992
             {"1e17", {}, {}, {}},
             {"-9223372036854775808", std::numeric_limits<std::int64_t>::min(), {}, {}},
             {"18446744073709551615", {}, std::numeric_limits<std::uint64_t>::max(), {}},
             {"18446744073709551616", {}, {}, {}},
             {"-9223372036854775809", {}, {}, {}},
         }) {
        SCOPED_TRACE(c.json);
        EXPECT_EQ(valueOf<std::int64_t>(c.json), c.integer);
        EXPECT_EQ(valueOf<std::uint64_t>(c.json), c.natural);
        EXPECT_EQ(valueOf<std::int32_t>(c.json), c.small);
    }
}

TEST(Numbers, BeyondTheIntegersAreStillNumbers) {
    EXPECT_EQ(valueOf<double>("18446744073709551616"), 0x1p64);
    EXPECT_EQ(valueOf<double>("-123456789012345678901234567890"), -123456789012345678901234567890.0);
    // Next to one, anything else that looks like a number, and integers that fit, keep their values.
    EXPECT_EQ(
        valueOf<JsonValue>(R"({"a":99999999999999999999,"b":9007199254740993,"c":"99999999999999999999\"9",)"
                           R"("d":-1e0000000000000000000001,"e":"\\"})"),
        JsonValue({{"a", 1e20}, {"b", 9007199254740993}, {"c", "99999999999999999999\"9"}, {"d", -10}, {"e", "\\"}}));
}

TEST(Members, OfARepeatedOneTheLastCounts) {
    const std::string repeated = R"({"message":"first","code":"c","message":"last"})";
    EXPECT_EQ(decodeDocument<JsonObject>(repeated), (JsonObject{{"code", "c"}, {"message", "last"}}));
    EXPECT_EQ(decodeDocument<ErrorKeys>(repeated)->message, "last");
    EXPECT_EQ(decodeDocument<ErrorKeys>(R"({"mess\u0061ge":"escaped"})")->message, "escaped");
}

TEST(Members, AreFoundInObjectsOfAnySize) {
    for (const int size : {101, 126, 127, 128, 129, 20000}) {
        SCOPED_TRACE(size);
        std::string json = R"({"first":1)";
        // Alike at both ends and of equal length, as somebody would make them who wants them to collide.
        for (int i = 1; i < size; ++i)
            json += i == 100 ? R"(,"message":"found")" : R"(,"member-)" + std::to_string(i) + R"(-with-a-long-name":1)";
        const auto error = decodeDocument<ErrorModel>(json + "}");
        EXPECT_EQ(error->message, "found");
        EXPECT_EQ(error->code, std::nullopt);
    }
}

struct Pair {
    std::optional<std::int64_t> one;
    std::optional<std::int64_t> two;
    std::vector<Pair> inner;
    static Pair decode(const KeyedContainer& in) {
        // Asks for the keys in another order each time.
        if (in.integerIfInteger("swap")) {
            std::optional<std::int64_t> two = in.optional("two");
            return {.one = in.optional("one"), .two = two, .inner = {}};
        }
        return {.one = in.optional("one"), .two = in.optional("two"), .inner = in.orEmpty("inner")};
    }
};

std::string textOf(const std::vector<Pair>& pairs) {
    std::string text;
    for (const auto& [one, two, inner] : pairs) {
        text += (one ? std::to_string(*one) : "-") + (two ? std::to_string(*two) : "-");
        text += inner.empty() ? " " : "[" + textOf(inner) + "] ";
    }
    return text;
}

TEST(Members, AreFoundWhateverObjectWasReadBefore) {
    const std::string list = R"([{"one":1,"two":2},{"one":3,"tow":4},{"one":1,"two":2},{"two":5,"one":6},{"one":7},{},)"
                             R"({"one":1,"one":2},{"one":1,"two":null},{"one":8,"two":9,"swap":1},{"swap":1,"two":9},)"
                             R"({"one":1,"inner":[{"one":2,"inner":[{"one":3,"inner":[]}]},{"two":4,"inner":[]}]}])";
    const auto expected = "12 3- 12 65 7- -- 2- 1- 89 -9 1-[2-[3- ] -4 ] ";
    for (int time = 0; time < 2; ++time) EXPECT_EQ(textOf(*decodeDocument<std::vector<Pair>>(list)), expected);
}

TEST(Shapes, AreRememberedOnlyOfOrdinaryObjects) {
    for (const auto& [count, name, expected] : std::vector<std::tuple<std::size_t, std::string, bool>>{
             {256, "", true}, {257, "", false}, {256, "sixteen letters!", true}, {256, "seventeen letters", false}}) {
        const std::vector<std::string_view> names(count, name);
        EXPECT_EQ(ObjectShape(names).isOrdinary(), expected) << count << " of \"" << name << '"';
    }
}

TEST(Members, WithoutANameAreTakenForNoOther) {
    for (const int count : {1, 2, 300}) {
        std::string nameless = R"("":7)";
        for (int i = 1; i < count; ++i) nameless += R"(,"":7)";
        std::string list = "[";
        for (const auto* object : {"{N},", R"({N,"one":1},)", R"({"two":2,N},)", R"({"one":3,N},)", "{N}]"}) {
            std::string text = object;
            list += text.replace(text.find('N'), 1, nameless);
        }
        for (int time = 0; time < 2; ++time)
            EXPECT_EQ(textOf(*decodeDocument<std::vector<Pair>>(list)), "-- 1- -2 3- -- ");
    }
}

// A literal as a template's argument.
template <std::size_t N>
struct Literal {
    char text[N]{};
    consteval Literal(const char (&literal)[N]) { std::copy_n(literal, N, text); }
};
template <Literal name>
concept IsKey = requires {
    typename std::bool_constant<(Key(name.text), true)>;
};

static_assert(IsKey<"one"> && IsKey<"">);
static_assert(!IsKey<"one\0two"> && !IsKey<"\0">, "A key that is cut off would be another one.");

// Something that a record cannot do by mistake, because it does not compile.
struct Borrowing {
    std::string_view text;
    static Borrowing decode(const BorrowingContainer& in) { return {.text = in.required("text")}; }
};
template <class From, class To>
inline constexpr bool gives = std::is_convertible_v<From, To>;

static_assert(gives<KeyedContainer::Required<true>, std::string_view> &&
              gives<KeyedContainer::Required<true>, std::vector<Borrowing>>);
static_assert(!gives<KeyedContainer::Required<false>, std::string_view> &&
                  !gives<KeyedContainer::Required<false>, Borrowing>,
              "A record whose decode does not say so cannot keep texts in the document.");
static_assert(!gives<KeyedContainer::Optional<false>, std::optional<std::string_view>> &&
              !gives<KeyedContainer::Required<false>, std::optional<Borrowing>> &&
              !gives<KeyedContainer::Required<false>, std::vector<Borrowing>>);
static_assert(!gives<KeyedContainer::Optional<false>, std::string>,
              "An optional member cannot become one that is always there.");
static_assert(!gives<KeyedContainer::WithFallback<false, double>, std::int64_t> &&
                  !gives<KeyedContainer::WithFallback<false, int>, double> &&
                  !gives<KeyedContainer::WithFallback<false, const char*>, std::optional<bool>>,
              "A default has the type of its member.");

struct Loose {
    JsonValue value;
    std::optional<JsonValue> other;
    static Loose decode(const KeyedContainer& in) {
        return {.value = in.required("value"), .other = in.optional("other")};
    }
};

TEST(Members, CanBeLooseValues) {
    EXPECT_EQ(decodeDocument<Loose>(R"({"value":[1,"a"]})")->value, JsonValue({1.0, "a"}));
    EXPECT_EQ(decodeDocument<Loose>(R"({"value":"a","other":2})")->other, JsonValue(2));
    EXPECT_FALSE(valueOf<Loose>(R"({"value":null})"));
}

TEST(LooseValues, TakeTheFirstKindThatFits) {
    const auto loose = decodeDocument<JsonObject>(
        R"({"a":1,"b":1.5,"c":"x","d":true,"e":null,"f":[1,"y",true,{"n":2.0},null,3],"g":{"h":1e2,"i":null},"j":18446744073709551615})");
    ASSERT_TRUE(loose);
    EXPECT_EQ(
        JsonValue(*loose).dump(),
        R"({"a":1,"b":1.5,"c":"x","d":true,"f":[1.0,"y",true,{"n":2}],"g":{"h":100},"j":1.8446744073709552e+19})");
}

TEST(Documents, OfNothingButSpaceAreRefusedHoweverLong) {
    EXPECT_TRUE(isRefused(std::string(std::size_t{64} << 20U, ' ')));
}

TEST(Documents, ThatAreMerelyOddAreRead) {
    const auto message = [](const std::string& json) {
        return valueOf<ErrorKeys>(json).value_or(ErrorKeys{"refused"}).message;
    };
    const std::string left(400, '9');
    for (const auto& [json, expected] : std::vector<std::pair<std::string, std::string>>{
             {"\xEF\xBB\xBF{\"message\":\"x\"}", "x"},
             {R"({"other":1e400,"more":[-1e+999999999999999999999,0.1e310,)" + left + R"(],"message":"x"})", "x"},
             {R"({"message":"a\ud800b\\\uDC00\ud83d\ude00\ud83d"})", "a\uFFFDb\\\uFFFD\U0001F600\uFFFD"},
             {R"({"message":1e400})", "refused"},
             {R"({"message":"x","other":"\ud8"})", "refused"},
         }) {
        EXPECT_EQ(message(json), expected) << json;
    }
    EXPECT_EQ(decodeDocument<std::string>("\"\\u00e9\\ud83d\\ude00\""), "\u00e9\U0001F600");
    EXPECT_FALSE(decodeDocument<JsonObject>("null"));
    EXPECT_EQ(valueOf<double>("1e400"), std::nullopt);
    EXPECT_EQ(valueOf<std::vector<double>>("[1e-400,99999999999999999999]"), (std::vector<double>{0, 1e20}));
}

TEST(Documents, WithListsLongerThanAMillionAreRefused) {
    std::string list = "[0";
    for (int i = 1; i < 1'000'000; ++i) list += ",0";
    EXPECT_EQ(valueOf<std::vector<double>>(list + "]").value_or(std::vector<double>{}).size(), 1'000'000U);
    EXPECT_FALSE(valueOf<std::vector<double>>(list + ",0]"));
}

TEST(Documents, NestedTooDeeplyAreRefused) {
    const auto nested = [](std::size_t depth) { return std::string(depth, '[') + "1" + std::string(depth, ']'); };
    EXPECT_FALSE(isRefused(nested(500)));
    EXPECT_TRUE(isRefused(nested(1'000'000)));
    std::string objects;
    for (int i = 0; i < 1'000'000; ++i) objects += R"({"a":)";
    EXPECT_TRUE(isRefused(objects));
}

TEST(Serialising, FailsForWhatJsonCannotHold) {
    EXPECT_EQ(serialise({{"b", "\u00e9\""}, {"a", {1, 2.5, nullptr, true}}, {"n", 18446744073709551615U}}),
              R"({"a":[1,2.5,null,true],"b":")"
              "\u00e9"
              R"(\"","n":18446744073709551615})");
    EXPECT_EQ(serialise({{"a", {{"b", {1, std::numeric_limits<double>::infinity()}}}}}), std::nullopt);
    EXPECT_EQ(serialise({{"a", "\xC3\x28"}}), std::nullopt);
    EXPECT_EQ(serialise({{"\xC3\x28", 1}}), std::nullopt);
}

}  // namespace
}  // namespace kavio::test
