#include "support/signature_samples.h"
#include "support/world.h"
#include "util/kavio_utils.h"

#include <gtest/gtest.h>

namespace kavio::test {
namespace {

TEST(Signature, CoversUrlBodyAndTime) {
    World world;
    world.device().clock->advance(std::chrono::seconds(754));
    EXPECT_EQ(KavioUtils::serverTimeStamp(), signatureSampleTime);
    for (const auto& [url, body, signature] : signatureSamples()) {
        EXPECT_EQ(KavioUtils::signRequest(url, body), signature) << url << " " << body;
    }
}

TEST(Signature, EncodesBytesForUrls) {
    World world;
    for (const auto& [bytes, text] : std::vector<std::pair<std::string, std::string>>{
             {"", "0"}, {"a", "YQ2"}, {"ab", "YWI1"}, {"abc", "YWJj0"}, {"\xfb\xff\xfe", "-__-0"}}) {
        EXPECT_EQ(KavioUtils::urlTokenEncode(bytes), text);
    }
}

TEST(KavioUtils, FindsMatches) {
    World world;
    EXPECT_EQ(KavioUtils::matches("a(b)", "abab"), (std::vector<std::string>{"ab", "ab"}));
    EXPECT_EQ(KavioUtils::matches("(", "abab"), std::vector<std::string>{});
    EXPECT_EQ(KavioUtils::firstGroup("a(b?)", "xab"), "b");
    EXPECT_EQ(KavioUtils::firstGroup("a(b)", "x"), std::nullopt);
}

}  // namespace
}  // namespace kavio::test
