#include "support/sample_replies.h"
#include "support/world.h"

#include <gmock/gmock.h>

namespace kavio::test {
namespace {

using EnvironmentType = Kavio::EnvironmentType;

TEST(Facade, ChoosesTheServiceForTheWholeProcess) {
    using Text = std::optional<std::string>;
    for (const auto& [stored, environment, kept] : std::vector<std::tuple<Text, EnvironmentType, Text>>{
             {std::nullopt, EnvironmentType::PROD, std::nullopt},  // what nothing stands for anyway
             {"nonsense", EnvironmentType::PROD, "nonsense"},
             {"ApiProduction", EnvironmentType::TESTS, "ApiQA2Stable"},
             {"ApiQA2", EnvironmentType::PROD, "ApiProduction"},
         }) {
        World world;
        world.store().remove("service_name");
        if (stored) world.store().set("service_name", *stored);
        world.makeFacade(environment);
        EXPECT_EQ(world.store().string("service_name"), kept);
        EXPECT_EQ(world.store().string("api_key"), "key");
    }
}

TEST(Facade, SendsToTheServiceThatTheStoreNames) {
    World world;
    for (const auto& [stored, url] : std::vector<std::pair<std::string, std::string>>{
             {"ApiProduction", "https://api.kavio.example:443/v1/orders/1?statusOnly=false"},
             {"ApiKavioDE", "https://api-de.kavio.example/v1/orders/1?statusOnly=false"},
             {"apiqa3", "https://api.kavio.example:443/v1/orders/1?statusOnly=false"},
         }) {
        world.store().set("service_name", stored);
        world.kavio().getOrder("1");
        EXPECT_EQ(world.sent().back().url, url);
        world.answer({503, ""});
    }
}

}  // namespace
}  // namespace kavio::test
