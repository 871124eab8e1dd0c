#include "support/world.h"
#include "util/kavio_utils.h"

#include <gtest/gtest.h>

#include <tuple>

namespace kavio::test {
namespace {

// The signatures were made by an implementation of its own in another language.
TEST(Signature, CoversUrlBodyAndTime) {
    World world;
    world.device().clock->advance(std::chrono::seconds(754));
    EXPECT_EQ(KavioUtils::serverTimeStamp(), "20240101001234");
    const std::string letters = "abcdefghijklmnopqrstuvwxyz";
    std::string families;  // of 31 characters
    for (int i = 0; i < 31; ++i) families += "👩‍👩‍👧‍👦";
    for (const auto& [url, body, signature] : std::vector<std::tuple<std::string, std::string, std::string>>{
             {"https://api-qa2.kavio.example/v1/time?", "", "4lhPEGx4yB8NiUQxw7RFSWZ9DzUV01234"},
             {"HTTPS://API-QA2.kavio.example/v1/Orders/5?statusOnly=true", "", "wkgJMc-rGNf-npzAJ63asBf8DOAr01234"},
             {"https://api.kavio.example:443/v1/account/challenge/",
              R"({"countryCode":"49","phoneNumber":"151234567","challenge":"","retry":"0"})",
              "Fd3zrJlDdI6OZX7K8w73x1bGgPP301234"},
             {"https://h/a%E2%80%8Fb\u00E2c", "", "07CTnw9GHNcO9bQM62evBOWhl0wX01234"},
             {"u", letters + "01234", "UVuL_sY2qPzywwd44AbY-Fv3RBex01234"},
             {"u", letters + "0123456", "UamIYC_hrT0Fcl6HE0SUQEvv_woj01234"},
             {"u", "\u00E4" + letters + "012345", "UcLQuKgqmuMpISZfzSeZ6UN_VLCU01234"},
             {"u", letters + "\r\n0123456", "Ue9XDaTtX1WhcN9GgitkDWYzvTAj01234"},
             {"u", families + "e\u0301 and more", "UWrCUizN3r0CnoXd-k7YImkGcOpi01234"},
         })
        EXPECT_EQ(KavioUtils::signRequest(url, body), signature) << url << " " << body;
}

}  // namespace
}  // namespace kavio::test
