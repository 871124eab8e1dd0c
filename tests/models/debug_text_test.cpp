#include "models/debug_text.h"

#include "models/campaign_model.h"
#include "models/json/document.h"
#include "models/machine_model.h"
#include "models/order_model.h"
#include "models/payment_model.h"
#include "models/product_model.h"
#include "samples.h"
#include "support/fakes/fake_device.h"

#include <kavio/card.h>
#include <kavio/filters.h>
#include <kavio/result.h>

#include <gmock/gmock.h>

namespace kavio::test {
namespace {

using PaymentType = PaymentMethod::PaymentType;

template <class Model>
std::string debugTextOf(const std::string& sample) {
    const InstalledPlatform installed(FakeDevice().platform());
    return publicObject(*decodeDocument<Model>(sample))->debugDescription();
}

// The public object of a whole record: its text shows where each member came from.

const std::string imageText =
    "\n\t{file: logo.png,\n\twidth: 120,\n\theight: 80,\n\twas uploaded: true,\n\tdpi: 72,\n\tiOS: false}";
const std::string lookAndFeelText =
    "\n\t{image URL: u,\n\tbackgroud color: b,\n\ttext color: t,\n\treceipt text: r,\n\tpunch card text: p,\n\timages: "
    "[" +
    imageText + "]}";
const std::string campaignText =
    "\n\t{ID: 1,\n\tname: n,\n\ttitle: t,\n\tdescription: d,\n\tpunched: 3,\n\ttotalPunches: 10,"
    "\n\tcreated: Optional(2024-01-02 03:04:05 +0000),\n\tupdated: Optional(2024-02-01 10:00:00 +0000),\n\texpiration: "
    "nil,"
    "\n\timageUrl: Optional(\"i\"),\n\tpunchCardId: 4,\n\tlookAndFeel: Optional(" +
    lookAndFeelText + ")}";

TEST(DebugTexts, OfCampaigns) {
    EXPECT_EQ(debugTextOf<LookAndFeelModel>(samples::lookAndFeel), lookAndFeelText);
    EXPECT_EQ(debugTextOf<LookAndFeelModel>(R"({"imageUrl":"ignored"})"),
              "\n\t{image URL: ,\n\tbackgroud color: ,\n\ttext color: ,\n\treceipt text: ,\n\tpunch card text: "
              ",\n\timages: []}");
    EXPECT_EQ(debugTextOf<CampainModel>(samples::campaign), campaignText);
    EXPECT_EQ(debugTextOf<CampainModel>(R"({"voucher":)" + samples::campaign + "}"), campaignText);
    EXPECT_EQ(Campaign(1, "", "", "", 0, 0, {}, {}, {}, {}, 2, nullptr).debugDescription(),
              "\n\t{ID: 1,\n\tname: ,\n\ttitle: ,\n\tdescription: ,\n\tpunched: 0,\n\ttotalPunches: 0,\n\tcreated: "
              "nil,\n\tupdated: nil,"
              "\n\texpiration: nil,\n\timageUrl: nil,\n\tpunchCardId: 2,\n\tlookAndFeel: nil}");
}

TEST(DebugTexts, OfMachines) {
    EXPECT_EQ(debugTextOf<MachineModel>(samples::machine),
              "\n\t{ref ID: 7,\n\tkavio ID: 5,\n\toperator name: Optional(\"o\"),\n\tonline: false,\n\tlatitude: "
              "3.5,\n\tlongitude: -4,"
              "\n\ttype: MICRO_MARKETS, \n\tcampaigns: [" +
                  campaignText +
                  "], \n\tname: Optional(\"m\"), \n\tcountry: Optional(\"DE\"), "
                  "\n\tcity: Optional(\"Berlin\"), \n\thwSerial: Optional(\"s\"), \n\tsupportRemoteVend: true, "
                  "\n\tmachineStatus: true, "
                  "\n\tmultiVendCount: 12}");
    EXPECT_EQ(
        Machine(1, 2, {}, true, 0.1, 1e-7, Machine::MachineType::AIR, {}, {}, {}, {}, {}, false, 3, false)
            .debugDescription(),
        "\n\t{ref ID: 1,\n\tkavio ID: 2,\n\toperator name: nil,\n\tonline: true,\n\tlatitude: 0.1,\n\tlongitude: 1e-07,"
        "\n\ttype: AIR, \n\tcampaigns: [], \n\tname: nil, \n\tcountry: nil, \n\tcity: nil, \n\thwSerial: nil, "
        "\n\tsupportRemoteVend: false, \n\tmachineStatus: false, \n\tmultiVendCount: 3}");
}

TEST(DebugTexts, OfProducts) {
    EXPECT_EQ(
        debugTextOf<MachineProduct>(samples::product),
        "\n\t{machineProductId: 1,\n\tID: 2,\n\tname: Optional(\"n\"),\n\tdepartment: Optional(\"g\"),\n\tcashPrice: "
        "Optional(1.5),"
        "\n\tcardPrice: Optional(2),\n\texPrepaidPrice: Optional(0.1),\n\tmachinePrice: "
        "Optional(3.25),\n\tpreapidPrice: Optional(4),"
        "\n\tcommissionValue: Optional(0.25),\n\tpaCode: Optional(\"A1\"),\n\topButtonCode: Optional(\"b\"),"
        "\n\topRowCode: Optional(5),\n\topColCode: Optional(6),\n\timageUrl: Optional(\"i\"),\n\tageVerification: "
        "Optional(18),"
        "\n\tmemberType: true,\n\timage: Optional(\"p\"),\n\tcodeInMap: Optional(7),\n\tmissingProduct: Optional(8),"
        "\n\tvendOut: false,\n\tretailPrice: Optional(9.5),\n\tpar: Optional(10),\n\tmissingStockByMdb: Optional(11),"
        "\n\tmdbMissingStockLastUpdated: Optional(2001-01-01 00:00:00 +0000),"
        "\n\tdexMissingStockLastUpdated: Optional(2001-01-02 00:00:00 +0000),"
        "\n\tlastSaleDt: Optional(2001-01-01 00:00:01 +0000),\n\tlastSaleMdbDt: Optional(2001-01-01 00:00:02 +0000),"
        "\n\tslowMover: Optional(true)}");
    const auto none = std::nullopt;
    EXPECT_EQ(
        Product(1, 2, none, none, none, none, none, none, none, none, none, none, none, none, none, none, false, none,
                none, none, true, none, none, none, none, none, none, none, none)
            .debugDescription(),
        "\n\t{machineProductId: 1,\n\tID: 2,\n\tname: nil,\n\tdepartment: nil,\n\tcashPrice: nil,\n\tcardPrice: nil,"
        "\n\texPrepaidPrice: nil,\n\tmachinePrice: nil,\n\tpreapidPrice: nil,\n\tcommissionValue: nil,\n\tpaCode: nil,"
        "\n\topButtonCode: nil,\n\topRowCode: nil,\n\topColCode: nil,\n\timageUrl: nil,\n\tageVerification: nil,"
        "\n\tmemberType: false,\n\timage: nil,\n\tcodeInMap: nil,\n\tmissingProduct: nil,\n\tvendOut: true,"
        "\n\tretailPrice: nil,\n\tpar: nil,\n\tmissingStockByMdb: nil,\n\tmdbMissingStockLastUpdated: nil,"
        "\n\tdexMissingStockLastUpdated: nil,\n\tlastSaleDt: nil,\n\tlastSaleMdbDt: nil,\n\tslowMover: nil}");
    EXPECT_EQ(RemoteVendProduct(1, 2, 3).debugDescription(),
              "\n\t{ref codeInMap: 1,\n\tquantity: 2,\n\tpulseLineNumber: 3}");
}

TEST(DebugTexts, OfOrders) {
    EXPECT_EQ(debugTextOf<OrderModel>(samples::order),
              "\n\t{ID: 77,\n\ttype: prePaidDeposit,\n\tstatus: COMPLETED,\n\tsource: ecommerce,\n\tamount: 150,"
              "\n\tdate: 2021-05-06 07:08:09 +0000,\n\tcurrency: Optional(\"EUR\"),\n\titems count: 3,\n\tending "
              "balance: 500}");
    EXPECT_EQ(
        Order("1", "vending", Order::Status::UNKNOWN, "unknown", -1, Date(), std::nullopt, 0, -1).debugDescription(),
        "\n\t{ID: 1,\n\ttype: vending,\n\tstatus: UNKNOWN,\n\tsource: unknown,\n\tamount: -1,"
        "\n\tdate: 1970-01-01 00:00:00 +0000,\n\tcurrency: nil,\n\titems count: 0,\n\tending balance: -1}");
}

TEST(DebugTexts, OfPaymentMethods) {
    struct Case {
        std::shared_ptr<const PaymentMethod> method;
        const char* text;
    };
    const Date created(std::chrono::seconds(1));
    for (const auto& [method, text] : std::initializer_list<Case>{
             {std::make_shared<PaymentMethod>("1", "n", PaymentType::PAYPAL),
              "\n\t{ID: 1,\n\tnumber: n,\n\ttype: PAYPAL"},
             {std::make_shared<CreditCard>("1", "n", PaymentType::CREDIT_CARD, "visa"),
              "\n\t{ID: 1,\n\tnumber: n,\n\ttype: CREDIT_CARD,\n\tbrand: visa}"},
             {std::make_shared<CreditCard>("1", "n", PaymentType::UNKNOWN),
              "\n\t{ID: 1,\n\tnumber: n,\n\ttype: UNKNOWN,\n\tbrand: }"},
             {std::make_shared<DepositCard>("0", "n", PaymentType::KAVIO, 500, "EUR", 2),
              "\n\t{ID: 0,\n\tnumber: n,\n\ttype: KAVIO,\n\tbalance: 500,\n\tcurrency: EUR, \n\tcurrency decimal "
              "digits: 2}"},
             {std::make_shared<DepositCard>("0", "n", PaymentType::KAVIO),
              "\n\t{ID: 0,\n\tnumber: n,\n\ttype: KAVIO,\n\tbalance: 0,\n\tcurrency: , \n\tcurrency decimal digits: "
              "0}"},
             {std::make_shared<PrepaidCard>("9", "n", PaymentType::PREPAID, -5, true, created, "EUR", 2, true),
              "\n\t{ID: 9,\n\tnumber: n,\n\ttype: PREPAID,\n\tbalance: -5,\n\tcurrency: EUR, \n\tcurrency decimal "
              "digits: 2},"
              "\n\tisActive: true,\n\tcreated: 1970-01-01 00:00:01 +0000,\n\tisMoney: true}"},
             {std::make_shared<PrepaidCard>("9", "n", PaymentType::PREPAID, 5, "EUR", 2),
              "\n\t{ID: 9,\n\tnumber: n,\n\ttype: PREPAID,\n\tbalance: 5,\n\tcurrency: EUR, \n\tcurrency decimal "
              "digits: 2},"
              "\n\tisActive: false,\n\tcreated: 1970-01-01 00:00:00 +0000,\n\tisMoney: false}"},
         }) {
        EXPECT_EQ(method->debugDescription(), text);
    }
    EXPECT_EQ(Card("4111", "1", "2030", "123", "e@x").debugDescription(),
              "\n\t{PAN: 4111,\n\tmonth: 1,\n\tyear: 2030,\n\tCVV: 123,\n\temail: e@x}");
}

TEST(DebugTexts, OfFiltersAndResults) {
    EXPECT_EQ(MachineFilter("v").debugDescription(),
              "\n\t{value: Optional(\"v\"),\n\tlatitude: nil,\n\tlongitude: nil,\n\tcountry: nil,\n\tradius: "
              "nil,\n\toperatorId: nil,"
              "\n\tlimit: nil,\n\thwSerial: nil}");
    EXPECT_EQ(
        MachineFilter("v", 1.0, 2.5, "DE", 3, 4, "hw", 5).debugDescription(),
        "\n\t{value: Optional(\"v\"),\n\tlatitude: Optional(1),\n\tlongitude: Optional(2.5),\n\tcountry: "
        "Optional(\"DE\"),"
        "\n\tradius: Optional(3),\n\toperatorId: Optional(4),\n\tlimit: Optional(5),\n\thwSerial: Optional(\"hw\")}");
    EXPECT_EQ(TransactionFilter().debugDescription(),
              "\n\t{machine ID: nil,\n\tpayment method ID: nil,\n\tpayment type: nil,\n\tlimit: nil,\n\ttransactions "
              "before: nil}");
    EXPECT_EQ(TransactionFilter(1, "p", PaymentType::PREPAID, 2, Date(std::chrono::seconds(3))).debugDescription(),
              "\n\t{machine ID: Optional(1),\n\tpayment method ID: Optional(\"p\"),\n\tpayment type: Optional(PREPAID),"
              "\n\tlimit: Optional(2),\n\ttransactions before: Optional(1970-01-01 00:00:03 +0000)}");
    EXPECT_EQ(KavioResult(ResultType::BUSY, std::nullopt).debugDescription(), "\n\t{type: BUSY,\n\tmessage: nil}");
    EXPECT_EQ(KavioResult(ResultType::FAILURE, "m").debugDescription(),
              "\n\t{type: FAILURE,\n\tmessage: Optional(\"m\")}");
}

TEST(DebugTexts, OfDoublesAreTheShortestThatReadBack) {
    struct Case {
        double value;
        const char* text;
    };
    for (const auto& c : std::initializer_list<Case>{{12.0, "12"},
                                                     {0, "0"},
                                                     {-0.5, "-0.5"},
                                                     {0.1, "0.1"},
                                                     {1.0 / 3, "0.3333333333333333"},
                                                     {100000, "100000"},
                                                     {123456789012345, "123456789012345"},
                                                     {0.0001, "0.0001"},
                                                     {1e-5, "1e-05"},
                                                     {1e16, "1e+16"},
                                                     {1e300, "1e+300"}}) {
        EXPECT_EQ(debugText(c.value), c.text);
    }
}

}  // namespace
}  // namespace kavio::test
