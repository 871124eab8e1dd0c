#include "network/requests.h"

#include "support/world.h"

#include <gtest/gtest.h>

namespace kavio::test {
namespace {

std::string described(const APIRequestPtr& request) {
    const auto params = request->params();
    return std::string(request->method()) + " " + request->endpoint() +
           (request->encoding() == ParameterEncoding::json ? " json " : " path ") +
           (params ? *serialise(*params) : "none");
}

const RequestHead head{"name", "token"};

TEST(Requests, HaveTheFormThatTheServiceKnows) {
    World world;
    const Deposit plain{"L", std::nullopt, "EUR", 5, std::nullopt, false};
    const Deposit labelled{"L", std::nullopt, "EUR", 5, "x", true};
    const Deposit paypal{"L", "meta", "EUR", 5, "x", false};
    const MachineQuery full{1, 2, 3.5, 4.5, 5, 6, 7, true, false, "DE", "scan", "number", "serial", 8};
    const std::string deposit = R"({"amount":5,"autoTopup":false,"currency":"EUR",)";
    const std::string locator = R"("paymentCardLocator":{"locator":"L"}})";
    for (const auto& [request, form] : std::vector<std::pair<APIRequestPtr, std::string>>{
             {makeRequest<AccountRequest>(head, "push", "1.2", "12.0", "os"),
              R"(GET /account path {"appVersion":"1.2","os":"os","osVersion":"12.0","pushToken":"push"})"},
             {makeRequest<AccountRequest>(head, "push", std::nullopt, "12.0", "os"), "GET /account path none"},
             {makeRequest<MachineByValueRequest>(head, MachineQuery{.longitude = 1.5, .latitude = 2.0}),
              R"(POST /machines/byValue json {"latitude":2.0,"longitude":1.5})"},
             {makeRequest<MachineByValueRequest>(head, full),
              R"(POST /machines/byValue json {"country":"DE","distance":7,"hadOrder":false,"hwSerial":"serial",)"
              R"("isByAccount":true,"kavioMachineId":2,"latitude":4.5,"limit":6,"longitude":3.5,"machineId":1,)"
              R"("machineType":5,"operatorId":8,"uni_qr_number":"number","uni_qr_scan":"scan"})"},
             {makeRequest<MachineProductsRequest>(head, std::uint64_t{18446744073709551615U}),
              "GET machines/18446744073709551615/products path none"},
             {makeRequest<PurchaseRequest>(head, "12", JsonObject{{"amount", 1}}),
              R"(POST /machines/12/orders json {"amount":1})"},
             {makeRequest<GetOrderRequest>(head, "7", true), R"(GET /orders/7 path {"statusOnly":true})"},
             {makeRequest<ActivitesRequest>(head, JsonObject{}), "GET /orders/activities path {}"},
             {makeRequest<AddCreditCardRequest>(head, "uuid", std::map<std::string, std::string>{{"number", "4"}}),
              R"(POST /account/locators json {"key":"uuid","paymentCard":{"number":"4"}})"},
             {makeRequest<DeleteLocatorRequest>(head, "L"), "DELETE /account/locators/L json none"},
             {makeRequest<PostDepositRequest>(head, plain), "POST /deposits/ json " + deposit + locator},
             {makeRequest<PostDepositRequest>(head, labelled),
              R"(POST /deposits/ json {"amount":5,"autoTopup":true,"currency":"EUR","label":"x",)" + locator},
             {makeRequest<PostPrepaidDepositRequest>(head, "9", paypal),
              "POST /prepaidCards/9/deposits/ json " + deposit + R"("payPalMetadataId":"meta",)" + locator},
         }) {
        EXPECT_EQ(described(request), form);
        EXPECT_EQ(request->token(), "token");
    }
}

TEST(Requests, WriteTheAppVersionWithTheHostsBuild) {
    World world;
    const auto sent = [](const std::string& version) {
        const auto request = makeRequest<AccountRequest>(head, std::nullopt, version, "", "");
        return request->params()->at("appVersion").get<std::string>();
    };
    EXPECT_EQ(sent("2.3.1"), "2.310");
    world.device().mainBundle->setInformation("CFBundleVersion", std::int64_t{45});
    EXPECT_EQ(sent("2.3.1"), "2.310") << "a value that is no text counts as none";
    world.device().mainBundle->setInformation("CFBundleVersion", std::string("45"));
    EXPECT_EQ(sent("2.3.1"), "2.3145");
    for (const auto* other : {"1.2", "1", "", "1.2.3.4"}) EXPECT_EQ(sent(other), other);
    EXPECT_EQ(sent(".."), ".45");
}

}  // namespace
}  // namespace kavio::test
