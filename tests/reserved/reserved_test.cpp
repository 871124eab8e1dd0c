#include "models/json/document.h"
#include "models/json/json_value.h"
#include "network/requests.h"
#include "reserved/infrastructure.h"
#include "reserved/records.h"

#include <kavio/testing/device.h>

#include <gmock/gmock.h>

namespace kavio::test {
namespace {

class Reserved : public testing::Test {
protected:
    Device device;
};

struct FixedErrorHandler final : NetworkServiceErrorHandler {
    void handle(const UrlReply& response, Completion completion) override {
        completion(APIError::serverError, "status " + std::to_string(response.status));
    }
};

TEST_F(Reserved, MockTransportAnswersLaterByItsErrorCode) {
    KavioMockNetworkService transport;
    EXPECT_EQ(transport.networkConfiguration.baseURL, urlString(ApiType::ApiProduction));
    std::vector<std::string> results;
    const auto completion = [&](const RawResult& result) {
        results.push_back(result ? *result.payload()
                                 : std::to_string(result.failure().status) + result.failure().message.value_or(""));
    };
    transport.send(timeRequest(), completion);
    transport.errorCode = 503;
    transport.sendInBackground(timeRequest(), completion);
    transport.errorHandler = std::make_shared<FixedErrorHandler>();
    transport.send(machineProductsRequest(7), completion);
    EXPECT_EQ(transport.task->endpoint, "machines/7/products");
    EXPECT_THAT(results, testing::IsEmpty());
    device.run();
    EXPECT_THAT(results, testing::ElementsAre("null", "503", "503status 503"));
}

TEST_F(Reserved, PlaceOrderModelKeepsTheOrderOfItsKeys) {
    const std::string all =
        R"({"amount":1,"tokenLocator":"T","prepaidCardId":2,"payPalMetadataId":"P","longitude":1.5,"latitude":2.5,)"
        R"("accuracy":3.5,"address":"A","city":"C","country":"DE","zipcode":"Z","streetNumber":"5","isQR":true})";
    EXPECT_EQ(decodeDocument<PlaceOrderModel>(all)->encode().dump(), all);
    const std::string some = R"({"amount":1,"tokenLocator":"T"})";
    EXPECT_EQ(decodeDocument<PlaceOrderModel>(some)->encode().dump(), some);
}

}  // namespace
}  // namespace kavio::test
