// Every key of every record, with every wrong kind of value. What a row says of a key is all that the records have to
// agree with; the engine works out the outcome, down to the text of the error.

#include "models/account_model.h"
#include "models/json/decoding_error.h"
#include "models/json/document.h"
#include "models/json/json_value.h"
#include "models/machine_model.h"
#include "models/order_activity_model.h"
#include "models/order_model.h"
#include "models/product_model.h"
#include "models/request_models.h"
#include "samples.h"
#include "support/fakes/fake_device.h"

#include <gmock/gmock.h>

#include <sstream>

namespace kavio::test {
namespace {

constexpr const char* accepted = "accepted";

/// How the decoding of `T` from `body` ends: "accepted", or the text of the error.
template <class T>
std::string outcome(const JsonValue& body) {
    try {
        decodeDocument<T>(body.dump());
        return accepted;
    } catch (const DecodingError& error) {
        return error.what();
    }
}

struct Record {
    const char* name;
    std::string (*outcome)(const JsonValue&);
    std::string sample;
    /// Behind a "kind:" the keys of that kind; "kind?:" for optional ones. Nested keys as "outer/inner".
    const char* keys;

    friend void PrintTo(const Record& record, std::ostream* stream) { *stream << record.name; }
};

const std::vector<Record> records{
    {"Challenge", outcome<Challenge>, R"({"challenge":{"challenge":"c","phone":"5","retryTimeoutSeconds":30}})",
     "object: challenge text: challenge/challenge challenge/phone integer: challenge/retryTimeoutSeconds"},
    {"Token", outcome<Token>, R"({"token":{"token":"t"}})", "object: token text: token/token"},
    {"LogOutResponse", outcome<LogOutResponse>, R"({"ok":true,"result":"r"})", "boolean: ok anything?: result"},
    {"AccountModel", outcome<AccountModel>, samples::account,
     R"(text?: configurationMaxUpdatedDT account/email account/firstName account/lastName account/appData object:
        token account text: token/token account/phone account/country account/currency account/paypalClientId number:
        account/balance integer: account/currencyDecimalDigits boolean?: account/marketingConfirmation
        account/preventPayPalDirectPayment account/preventCreditCardDirectPayment
        account/preventBalanceCardDirectPayment account/preventPayPalTopUpDeposit
        account/preventCreditCardTopUpDeposit account/preventGPayTopUpDeposit array?: account/tokenLocators integer?:
        account/gameficationTotalGamePlayed account/gameficationHighScore account/gameficationTotalAmountOfCashback)"},
    {"AppData", outcome<AppData>, R"({"machinesOrder":1,"paymentMethodsOrder":1,"lastEarnedCashback":5})",
     "integer: machinesOrder paymentMethodsOrder lastEarnedCashback"},
    {"Configuration", outcome<Configuration>, R"({"currencies":{"EUR":{}}})",
     "object: currencies anything?: currencies/EUR"},
    {"KavioCardModel", outcome<KavioCardModel>, R"({"amount":1,"decimalDigits":2,"currency":"EUR"})",
     "integer: amount decimalDigits text: currency"},
    {"MachineModel", outcome<MachineModel>, samples::machine,
     R"(unsigned?: kavioID text?: operatorName machineName machineConnectivityStatus zipCode city country currency
        location customLabel lastOrderDT machineSerial supportDcsImageUpdatedDt smartStickerIdUrl defaultCredit
        integer: name machineId machineType integer32?: machineStatusId extraChargeType boolean?: isWalletAllowed
        isFavorite evNozzle evNozzleLeft evNozzleRight supportRevalue supportKavioAutoPP supportDcsImage
        supportRemoteVend number?: distance latitude longitude coordinate/latitude coordinate/longitude extraCharge
        integer?: machineModel decimalPlace uniQR actorID distributorID multiVendCount boolean: isRevalueOnly isPulse
        array?: campaigns fullTreeOperatorsField integer32: reviewsCount reviewsCount1 reviewsCount2 reviewsCount3
        reviewsCount4 reviewsCount5 float?: reviewsAvg object?: coordinate)"},
    {"MachineProduct", outcome<MachineProduct>, samples::product,
     R"(integer: machineProductID productID text?: productName groupName paCode opButtonCode imageURL
        productPicture number?: cashPrice cardPrice exPrepaidPrice machinePrice commissionValue retailPrice integer?:
        preapidPrice opRowCode opColCode ageVerification codeInMap missingProduct par missingStockByMdb boolean:
        productMemberType vendOut slowMover date?: mdbMissingStockLastUpdated dexMissingStockLastUpdated lastSaleDt
        lastSaleMdbDt)"},
    {"MachineByValueModel", outcome<MachineByValueModel>,
     R"({"kavioMachineId":1,"uni_qr_scan":"s","uni_qr_number":"n"})",
     "unsigned?: kavioMachineId text?: uni_qr_scan uni_qr_number"},
    {"PlaceOrderModel", outcome<PlaceOrderModel>,
     R"({"amount":1,"tokenLocator":"t","prepaidCardId":2,"payPalMetadataId":"p","longitude":1,"latitude":2,"accuracy":3,)"
     R"("address":"a","city":"c","country":"co","zipcode":"z","streetNumber":"s","isQR":true})",
     R"(integer?: amount prepaidCardId text?: tokenLocator payPalMetadataId address city country zipcode
        streetNumber number?: longitude latitude accuracy boolean?: isQR)"},
    {"OrderModel", outcome<OrderModel>, samples::order,
     R"(object: order text?: order/address order/city order/currency order/externalReference
        order/paymentSourceLabel order/paymentSource order/issuer order/externalPaymentReference
        order/externalCampaignID order/createdUTC text: order/id order/orderType order/orderStatus integer?:
        order/amount order/userAmount order/externalId order/revalue order/orderItemsCount order/chargedAmount
        order/endingBalance anything?: order/country order/country/code order/dataFields/machineType
        order/dataFields/prepaidCardId order/dataFields/prepaidCardReference order/dataFields/prepaidCardIssuer
        order/dataFields/totalPunches order/dataFields/punchesOnPunch array?: order/orderItems object?:
        order/lookAndFeel order/machineReview order/dataFields unsigned32: order/machineReview/reviewsCount float:
        order/machineReview/reviewsAvg boolean?: order/machineReview/accountReview)"},
    {"OrderModelResponse", outcome<OrderModelResponse>,
     R"({"order":{"id":"1","orderType":"vending","orderStatus":"created"},"qr":"q"})",
     "object: order text: order/id text?: qr"},
    {"OrderActivityModel", outcome<OrderActivityModel>, samples::activity,
     R"(unsigned: orderId text: created orderStatusName paymentSourceName integer: amount orderType startingBalance
        endingBalance bonus gameWin text?: orderTypeName machineType machineName externalReference prepaidCardID
        tokenLocatorID label issuerName externalCampaignID currency locator orderItems city country operatorName
        punchesOnPunch totalPunches boolean: autoTopup object?: lookAndFeel)"},
    {"PaymentCardModel", outcome<PaymentCardModel>, samples::storedCard,
     "text: locator label processorType integer: securityCode month year id text?: issuer"},
    {"AddCreditCardResponse", outcome<AddCreditCardResponse>, R"({"locator":)" + samples::storedCard + "}",
     R"(object: locator text: locator/locator locator/label locator/issuer locator/processorType integer:
        locator/month locator/year locator/securityCode integer?: locator/id)"},
    {"PrepaidCardModel", outcome<PrepaidCardModel>, samples::prepaidCard,
     R"(unsigned: cardId text?: cardNumber cardHolderName cardIssuerName boolean: revalue isMoney integer: balance
        cardLimit currency/decimalDigits number: cardStatus cardType text: createdTime currency/code object: currency
        array: fullTreeOperatorsField)"},
    {"PrepaidsList", outcome<PrepaidsList>, R"({"prepaidCards":[]})", "array: prepaidCards"},
    {"DepositModel", outcome<DepositModel>, R"({"deposit":{"balance":1,"fee":"x"}})",
     "object: deposit integer: deposit/balance anything?: deposit/fee"},
    {"CampainModel", outcome<CampainModel>, samples::campaign,
     R"(integer: campaignId punched totalPunches punchCardId text: campaignName campaignTitle campaignDescription
        created text?: expiration imagesUrl updated array?: fullTreeOperators object: lookAndFeel)"},
    {"VoucherModel", outcome<VoucherModel>, R"({"campaigns":1,"vouchers":[]})", "anything?: campaigns array: vouchers"},
    {"LookAndFeelModel", outcome<LookAndFeelModel>, samples::lookAndFeel,
     "text?: images_url backgroundColor textColor receiptText punchCardText array?: images"},
    {"ImageMetaModel", outcome<ImageMetaModel>, samples::image, "text: file integer: w h dpi boolean: wasUploaded ios"},
    {"MachineReviewModel", outcome<MachineReviewModel>,
     R"({"userName":"u","createdDT":"c","updatedDT":"u","accountReview":true,"machineRating":5,"machineReview":"m"})",
     "text?: userName text: createdDT updatedDT machineReview boolean?: accountReview unsigned32: machineRating"},
    {"PurchaseGameResponse", outcome<PurchaseGameResponse>, R"({"ok":true,"winAmount":1})",
     "boolean: ok integer: winAmount"},
    {"CheckGeoIPResponse", outcome<CheckGeoIPResponse>, R"({"country":{"iso_code":"DE"}})",
     "object: country text: country/iso_code"},
    {"PrepaidCreateVirtualCardResponse", outcome<PrepaidCreateVirtualCardResponse>, R"({"token":{"token":"t"}})",
     "object: token text?: token/token"},
    {"PrepaidCreatePhysicalCardResponse", outcome<PrepaidCreatePhysicalCardResponse>, R"({"id":1})", "integer?: id"},
    {"BasicResponse", outcome<BasicResponse>, R"({"ok":true,"result":"r"})", "boolean: ok text?: result"},
    {"ErrorKeys", outcome<ErrorKeys>, R"({"message":"m"})", "text: message"},
    {"ErrorModel", outcome<ErrorModel>, R"({"message":"m","code":"c"})", "text?: message code"},
    {"ServerTimeResponse", outcome<ServerTimeResponse>, R"({"expireTime":"e","serverTime":"s"})",
     "anything?: expireTime serverTime"},
};

struct Kind {
    const char* name;
    const char* expectation;
    /// Which of `probes` are of this kind, by position.
    std::vector<std::size_t> accepts;
};

struct Probe {
    JsonValue value;
    const char* found;
};

const std::vector<Probe> probes{
    {"text", "text"},
    {1, "a number"},
    {1.5, "a number"},
    {-1, "a number"},
    {4294967296, "a number"},
    {1e300, "a number"},
    {true, "a boolean"},
    {JsonValue::array(), "an array"},
    {JsonValue::object(), "an object"},
};

const std::vector<Kind> kinds{
    {"text", "text", {0}},
    {"integer", "an integer", {1, 3, 4}},
    {"integer32", "a 32-bit integer", {1, 3}},
    {"unsigned", "an unsigned integer", {1, 4}},
    {"unsigned32", "an unsigned 32-bit integer", {1}},
    {"number", "a number", {1, 2, 3, 4, 5}},
    {"date", "a date as a number", {1, 2, 3, 4, 5}},
    {"float", "a single-precision number", {1, 2, 3, 4}},
    {"boolean", "a boolean", {6}},
    {"array", "an array", {7}},
    {"object", "an object", {8}},
    {"anything", "", {0, 1, 2, 3, 4, 5, 6, 7, 8}},
};

class KeysOfRecords : public testing::TestWithParam<Record> {
    InstalledPlatform mPlatform{FakeDevice().platform()};
};

TEST_P(KeysOfRecords, AreAsStrictAsTheirRowsSay) {
    const auto& record = GetParam();
    const auto sample = JsonValue::parse(record.sample);
    ASSERT_EQ(record.outcome(sample), accepted);

    auto kind = kinds.end();
    bool isOptional = false;
    std::istringstream words(record.keys);
    for (std::string path; words >> path;) {
        SCOPED_TRACE(path);
        if (path.ends_with(':')) {
            isOptional = path.ends_with("?:");
            path.resize(path.find_first_of("?:"));
            kind = std::find_if(kinds.begin(), kinds.end(), [&](const Kind& k) { return k.name == path; });
            continue;
        }
        ASSERT_NE(kind, kinds.end());
        const JsonValue::json_pointer pointer("/" + path);
        ASSERT_TRUE(sample.contains(pointer));
        std::replace(path.begin(), path.end(), '/', '.');

        const std::string whenMissing = isOptional ? accepted : path + ": missing";
        auto body = sample;
        body[pointer.parent_pointer()].erase(pointer.back());
        EXPECT_EQ(record.outcome(body), whenMissing) << "absent";
        body[pointer] = nullptr;
        EXPECT_EQ(record.outcome(body), whenMissing) << "null";

        for (std::size_t i = 0; i < probes.size(); ++i) {
            body[pointer] = probes[i].value;
            const auto result = record.outcome(body);
            const bool isOfKind = std::find(kind->accepts.begin(), kind->accepts.end(), i) != kind->accepts.end();
            if (!isOfKind) {
                EXPECT_EQ(result, path + ": expected " + kind->expectation + ", found " + probes[i].found);
            } else if (kind->name == std::string_view("object")) {
                EXPECT_THAT(result, testing::Not(testing::StartsWith(path + ":"))) << "an empty object";
            } else {
                EXPECT_EQ(result, accepted) << probes[i].value;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, KeysOfRecords, testing::ValuesIn(records), testing::PrintToStringParamName());

TEST(Strictness, OfACampaignIsThatOfItsVoucherIfThatIsAnObject) {
    auto campaign = JsonValue::parse(samples::campaign);
    campaign["voucher"] = 7;
    EXPECT_EQ(outcome<CampainModel>(campaign), accepted);
    campaign["voucher"] = {{"campaignId", "1"}};
    EXPECT_EQ(outcome<CampainModel>(campaign), "voucher.campaignId: expected an integer, found text");
}

TEST(RecordsWithoutFields, TakeAnyJson) {
    for (const auto& probe : probes) {
        EXPECT_EQ(outcome<DeleteCreditResponse>(probe.value), accepted);
        EXPECT_EQ(outcome<PrepaidGetPhysicalCreationResponse>(probe.value), accepted);
    }
}

TEST(Lists, NameTheElementThatFails) {
    auto machine = JsonValue::parse(samples::machine);
    auto broken = machine;
    broken["campaigns"][0]["lookAndFeel"] = nullptr;
    EXPECT_EQ(outcome<std::vector<MachineModel>>({machine, broken}), "[1].campaigns[0].lookAndFeel: missing");
    EXPECT_EQ(outcome<std::vector<MachineModel>>({machine, 7}), "[1]: expected an object, found a number");
    EXPECT_EQ(outcome<std::vector<MachineModel>>(JsonValue::object()), "expected an array, found an object");
}

}  // namespace
}  // namespace kavio::test
