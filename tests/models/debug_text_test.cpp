#include "models/debug_text.h"

#include "models/campaign_model.h"
#include "models/json/document.h"
#include "models/machine_model.h"
#include "models/order_model.h"
#include "models/payment_model.h"
#include "models/product_model.h"
#include "samples.h"

#include <kavio/card.h>
#include <kavio/filters.h>
#include <kavio/result.h>
#include <kavio/testing/device.h>

#include <gmock/gmock.h>

namespace kavio::test {
namespace {

using PaymentType = PaymentMethod::PaymentType;

/// Each '|' of the expectation stands for a line break and a tab.
void expectText(const auto& object, std::string expected) {
    for (auto at = expected.find('|'); at != std::string::npos; at = expected.find('|'))
        expected.replace(at, 1, "\n\t");
    EXPECT_EQ(object.debugDescription(), expected);
}

template <class Object>
void expectTextOf(const std::string& sample, const std::string& expected) {
    const Device device;
    const Document document(sample);
    if constexpr (requires { publicObject(document.root().as<Object>()); }) {
        expectText(*publicObject(document.root().as<Object>()), expected);
    } else {
        expectText(document.root().as<Object>(), expected);
    }
}

// The public object made from a whole record: its text shows where each member came from.

const std::string imageText = "|{file: logo.png,|width: 120,|height: 80,|was uploaded: true,|dpi: 72,|iOS: false}";
const std::string lookAndFeelText =
    "|{image URL: u,|backgroud color: b,|text color: t,|receipt text: r,|punch card text: p,|images: [" + imageText +
    "]}";
const std::string campaignText =
    "|{ID: 1,|name: n,|title: t,|description: d,|punched: 3,|totalPunches: 10,"
    "|created: Optional(2024-01-02 03:04:05 +0000),|updated: Optional(2024-02-01 10:00:00 +0000),|expiration: nil,"
    "|imageUrl: Optional(\"i\"),|punchCardId: 4,|lookAndFeel: Optional(" +
    lookAndFeelText + ")}";

TEST(DebugTexts, OfCampaigns) {
    expectTextOf<LookAndFeel>(
        R"({"imageUrl":"ignored"})",
        "|{image URL: ,|backgroud color: ,|text color: ,|receipt text: ,|punch card text: ,|images: []}");
    expectTextOf<Campaign>(samples::campaign, campaignText);
}

TEST(DebugTexts, OfMachines) {
    expectTextOf<Machine>(
        samples::machine,
        "|{ref ID: 7,|kavio ID: 5,|operator name: Optional(\"o\"),|online: false,|latitude: 3.5,|longitude: -4,"
        "|type: MICRO_MARKETS, |campaigns: [" +
            campaignText +
            "], |name: Optional(\"m\"), |country: Optional(\"DE\"), |city: Optional(\"Berlin\"), "
            "|hwSerial: Optional(\"s\"), |supportRemoteVend: true, |machineStatus: true, |multiVendCount: 12}");
    expectTextOf<Machine>(
        R"({"name":1,"machineId":2,"machineType":35,"isRevalueOnly":false,"reviewsCount":0,"reviewsCount1":0,)"
        R"("reviewsCount2":0,"reviewsCount3":0,"reviewsCount4":0,"reviewsCount5":0,"isPulse":false})",
        "|{ref ID: 2,|kavio ID: 0,|operator name: nil,|online: true,|latitude: 0,|longitude: 0,|type: OTHER, "
        "|campaigns: [], |name: nil, |country: Optional(\"\"), |city: Optional(\"\"), |hwSerial: nil, "
        "|supportRemoteVend: false, |machineStatus: false, |multiVendCount: 0}");
}

TEST(DebugTexts, OfProducts) {
    expectTextOf<Product>(
        samples::product,
        "|{machineProductId: 1,|ID: 2,|name: Optional(\"n\"),|department: Optional(\"g\"),|cashPrice: Optional(1.5),"
        "|cardPrice: Optional(2),|exPrepaidPrice: Optional(0.1),|machinePrice: Optional(3.25),"
        "|preapidPrice: Optional(4),|commissionValue: Optional(0.25),|paCode: Optional(\"A1\"),"
        "|opButtonCode: Optional(\"b\"),|opRowCode: Optional(5),|opColCode: Optional(6),|imageUrl: Optional(\"i\"),"
        "|ageVerification: Optional(18),|memberType: true,|image: Optional(\"p\"),|codeInMap: Optional(7),"
        "|missingProduct: Optional(8),|vendOut: false,|retailPrice: Optional(9.5),|par: Optional(10),"
        "|missingStockByMdb: Optional(11),|mdbMissingStockLastUpdated: Optional(2001-01-01 00:00:00 +0000),"
        "|dexMissingStockLastUpdated: Optional(2001-01-02 00:00:00 +0000),"
        "|lastSaleDt: Optional(2001-01-01 00:00:01 +0000),|lastSaleMdbDt: Optional(2001-01-01 00:00:02 +0000),"
        "|slowMover: Optional(true)}");
    expectText(RemoteVendProduct{1, 2, 3}, "|{ref codeInMap: 1,|quantity: 2,|pulseLineNumber: 3}");
}

TEST(DebugTexts, OfOrders) {
    expectTextOf<OrderModel>(
        samples::order,
        "|{ID: 77,|type: prePaidDeposit,|status: COMPLETED,|source: ecommerce,|amount: 150,"
        "|date: 2021-05-06 07:08:09 +0000,|currency: Optional(\"EUR\"),|items count: 3,|ending balance: 500}");
    expectTextOf<OrderModel>(R"({"order":{"id":"1","orderType":"VENDING","orderStatus":"created"}})",
                             "|{ID: 1,|type: vending,|status: CREATED,|source: unknown,|amount: -1,"
                             "|date: 2024-01-01 00:00:00 +0000,|currency: nil,|items count: 0,|ending balance: -1}");
}

TEST(DebugTexts, OfPaymentMethods) {
    expectText(CreditCard("1", "n", PaymentType::CREDIT_CARD, "b"), "|{ID: 1,|number: n,|type: CREDIT_CARD,|brand: b}");
    expectText(PrepaidCard("1", "n", PaymentType::PREPAID, 5, "EUR", 2),
               "|{ID: 1,|number: n,|type: PREPAID,|balance: 5,|currency: EUR, |currency decimal digits: 2},"
               "|isActive: false,|created: 1970-01-01 00:00:00 +0000,|isMoney: false}");
    expectText(Card{"4111", "1", "2030", "123", "e@x"}, "|{PAN: 4111,|month: 1,|year: 2030,|CVV: 123,|email: e@x}");
}

TEST(DebugTexts, OfFiltersAndResults) {
    expectText(MachineFilter{"v", 1.0, 2.5, "DE", 3, 4, "hw", 5},
               "|{value: Optional(\"v\"),|latitude: Optional(1),|longitude: Optional(2.5),|country: Optional(\"DE\"),"
               "|radius: Optional(3),|operatorId: Optional(4),|limit: Optional(5),|hwSerial: Optional(\"hw\")}");
    expectText(TransactionFilter{1, "p", PaymentType::PREPAID, 2, Date(std::chrono::seconds(3))},
               "|{machine ID: Optional(1),|payment method ID: Optional(\"p\"),|payment type: Optional(PREPAID),"
               "|limit: Optional(2),|transactions before: Optional(1970-01-01 00:00:03 +0000)}");
    expectText(KavioResult(ResultType::FAILURE, "m"), "|{type: FAILURE,|message: Optional(\"m\")}");
}

TEST(DebugTexts, OfDoublesAreTheShortestThatReadBack) {
    const double values[] = {12, 0, -0.5, 0.1, 1.0 / 3, 1e5, 123456789012345, 0.0001, 1e-5, 1e16, 1e300};
    std::string texts;
    for (const double value : values) texts += debugText(value) + " ";
    EXPECT_EQ(texts, "12 0 -0.5 0.1 0.3333333333333333 100000 123456789012345 0.0001 1e-05 1e+16 1e+300 ");
}

}  // namespace
}  // namespace kavio::test
