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
    /// "key=kind", with "?" behind an optional key; nested keys as "outer/inner".
    const char* keys;
};

const std::vector<Record> records{
    {"Challenge", outcome<Challenge>, R"({"challenge":{"challenge":"c","phone":"5","retryTimeoutSeconds":30}})",
     "challenge=object challenge/challenge=text challenge/phone=text challenge/retryTimeoutSeconds=integer"},
    {"Token", outcome<Token>, R"({"token":{"token":"t"}})", "token=object token/token=text"},
    {"LogOutResponse", outcome<LogOutResponse>, R"({"ok":true,"result":"r"})", "ok=boolean result=anything?"},
    {"AccountModel", outcome<AccountModel>, samples::account,
     "configurationMaxUpdatedDT=text? token=object token/token=text account=object account/phone=text "
     "account/email=text? "
     "account/country=text account/currency=text account/firstName=text? account/lastName=text? account/balance=number "
     "account/currencyDecimalDigits=integer account/paypalClientId=text account/marketingConfirmation=boolean? "
     "account/preventPayPalDirectPayment=boolean? account/preventCreditCardDirectPayment=boolean? "
     "account/preventBalanceCardDirectPayment=boolean? account/preventPayPalTopUpDeposit=boolean? "
     "account/preventCreditCardTopUpDeposit=boolean? account/preventGPayTopUpDeposit=boolean? "
     "account/tokenLocators=array? "
     "account/gameficationTotalGamePlayed=integer? account/gameficationHighScore=integer? "
     "account/gameficationTotalAmountOfCashback=integer? account/appData=text?"},
    {"AppData", outcome<AppData>, R"({"machinesOrder":1,"paymentMethodsOrder":1,"lastEarnedCashback":5})",
     "machinesOrder=integer paymentMethodsOrder=integer lastEarnedCashback=integer"},
    {"Configuration", outcome<Configuration>, R"({"currencies":{"EUR":{}}})",
     "currencies=object currencies/EUR=anything?"},
    {"KavioCardModel", outcome<KavioCardModel>, R"({"amount":1,"decimalDigits":2,"currency":"EUR"})",
     "amount=integer decimalDigits=integer currency=text"},
    {"MachineModel", outcome<MachineModel>, samples::machine,
     "kavioID=unsigned? operatorName=text? name=integer machineId=integer machineName=text? "
     "machineConnectivityStatus=text? "
     "machineStatusId=integer32? zipCode=text? city=text? country=text? isWalletAllowed=boolean? distance=number? "
     "machineType=integer machineModel=integer? currency=text? location=text? isRevalueOnly=boolean campaigns=array? "
     "customLabel=text? isFavorite=boolean? latitude=number? longitude=number? decimalPlace=integer? "
     "fullTreeOperatorsField=array? lastOrderDT=text? reviewsCount=integer32 reviewsAvg=float? reviewsCount1=integer32 "
     "reviewsCount2=integer32 reviewsCount3=integer32 reviewsCount4=integer32 reviewsCount5=integer32 isPulse=boolean "
     "uniQR=integer? evNozzle=boolean? evNozzleLeft=boolean? evNozzleRight=boolean? supportRevalue=boolean? "
     "supportKavioAutoPP=boolean? actorID=integer? distributorID=integer? supportDcsImage=boolean? "
     "supportRemoteVend=boolean? "
     "multiVendCount=integer? machineSerial=text? supportDcsImageUpdatedDt=text? coordinate=object? "
     "coordinate/latitude=number? "
     "coordinate/longitude=number? smartStickerIdUrl=text? defaultCredit=text? extraCharge=number? "
     "extraChargeType=integer32?"},
    {"MachineProduct", outcome<MachineProduct>, samples::product,
     "machineProductID=integer productID=integer productName=text? groupName=text? cashPrice=number? cardPrice=number? "
     "exPrepaidPrice=number? machinePrice=number? preapidPrice=integer? commissionValue=number? paCode=text? "
     "opButtonCode=text? "
     "opRowCode=integer? opColCode=integer? imageURL=text? ageVerification=integer? productMemberType=boolean "
     "productPicture=text? codeInMap=integer? missingProduct=integer? vendOut=boolean retailPrice=number? par=integer? "
     "missingStockByMdb=integer? mdbMissingStockLastUpdated=date? dexMissingStockLastUpdated=date? "
     "lastSaleDt=date? "
     "lastSaleMdbDt=date? slowMover=boolean"},
    {"MachineByValueModel", outcome<MachineByValueModel>,
     R"({"kavioMachineId":1,"uni_qr_scan":"s","uni_qr_number":"n"})",
     "kavioMachineId=unsigned? uni_qr_scan=text? uni_qr_number=text?"},
    {"PlaceOrderModel", outcome<PlaceOrderModel>,
     R"({"amount":1,"tokenLocator":"t","prepaidCardId":2,"payPalMetadataId":"p","longitude":1,"latitude":2,"accuracy":3,)"
     R"("address":"a","city":"c","country":"co","zipcode":"z","streetNumber":"s","isQR":true})",
     "amount=integer? tokenLocator=text? prepaidCardId=integer? payPalMetadataId=text? longitude=number? "
     "latitude=number? "
     "accuracy=number? address=text? city=text? country=text? zipcode=text? streetNumber=text? isQR=boolean?"},
    {"OrderModel", outcome<OrderModel>, samples::order,
     "order=object order/address=text? order/id=text order/orderType=text order/orderStatus=text order/amount=integer? "
     "order/city=text? order/country=anything? order/country/code=anything? order/currency=text? "
     "order/userAmount=integer? "
     "order/orderItems=array? order/externalReference=text? order/paymentSourceLabel=text? order/paymentSource=text? "
     "order/issuer=text? order/externalPaymentReference=text? order/externalId=integer? order/revalue=integer? "
     "order/orderItemsCount=integer? order/externalCampaignID=text? order/chargedAmount=integer? "
     "order/createdUTC=text? "
     "order/endingBalance=integer? order/lookAndFeel=object? order/machineReview=object? "
     "order/machineReview/reviewsCount=unsigned32 "
     "order/machineReview/reviewsAvg=float order/machineReview/accountReview=boolean? order/dataFields=object? "
     "order/dataFields/machineType=anything? order/dataFields/prepaidCardId=anything? "
     "order/dataFields/totalPunches=anything?"},
    {"OrderModelResponse", outcome<OrderModelResponse>,
     R"({"order":{"id":"1","orderType":"vending","orderStatus":"created"},"qr":"q"})",
     "order=object order/id=text qr=text?"},
    {"OrderActivityModel", outcome<OrderActivityModel>, samples::activity,
     "orderId=unsigned created=text amount=integer orderStatusName=text paymentSourceName=text orderType=integer "
     "orderTypeName=text? machineType=text? machineName=text? externalReference=text? prepaidCardID=text? "
     "tokenLocatorID=text? "
     "label=text? startingBalance=integer endingBalance=integer issuerName=text? externalCampaignID=text? "
     "currency=text? "
     "locator=text? orderItems=text? bonus=integer city=text? country=text? gameWin=integer autoTopup=boolean "
     "operatorName=text? lookAndFeel=object? punchesOnPunch=text? totalPunches=text?"},
    {"PaymentCardModel", outcome<PaymentCardModel>, samples::storedCard,
     "locator=text securityCode=integer label=text issuer=text? month=integer year=integer processorType=text "
     "id=integer"},
    {"AddCreditCardResponse", outcome<AddCreditCardResponse>, R"({"locator":)" + samples::storedCard + "}",
     "locator=object locator/locator=text locator/label=text locator/month=integer locator/year=integer "
     "locator/securityCode=integer locator/issuer=text locator/id=integer? locator/processorType=text"},
    {"PrepaidCardModel", outcome<PrepaidCardModel>, samples::prepaidCard,
     "cardId=unsigned cardNumber=text? revalue=boolean balance=integer cardLimit=integer cardHolderName=text? "
     "cardIssuerName=text? cardStatus=number createdTime=text cardType=number currency=object currency/code=text "
     "currency/decimalDigits=integer fullTreeOperatorsField=array isMoney=boolean"},
    {"PrepaidsList", outcome<PrepaidsList>, R"({"prepaidCards":[]})", "prepaidCards=array"},
    {"DepositModel", outcome<DepositModel>, R"({"deposit":{"balance":1,"fee":"x"}})",
     "deposit=object deposit/balance=integer deposit/fee=anything?"},
    {"CampainModel", outcome<CampainModel>, samples::campaign,
     "campaignId=integer campaignName=text campaignTitle=text campaignDescription=text punched=integer "
     "totalPunches=integer "
     "created=text expiration=text? imagesUrl=text? fullTreeOperators=array? punchCardId=integer updated=text? "
     "lookAndFeel=object"},
    {"VoucherModel", outcome<VoucherModel>, R"({"campaigns":1,"vouchers":[]})", "campaigns=anything? vouchers=array"},
    {"LookAndFeelModel", outcome<LookAndFeelModel>, samples::lookAndFeel,
     "images_url=text? backgroundColor=text? textColor=text? receiptText=text? punchCardText=text? images=array?"},
    {"ImageMetaModel", outcome<ImageMetaModel>, samples::image,
     "file=text w=integer h=integer wasUploaded=boolean dpi=integer ios=boolean"},
    {"MachineReviewModel", outcome<MachineReviewModel>,
     R"({"userName":"u","createdDT":"c","updatedDT":"u","accountReview":true,"machineRating":5,"machineReview":"m"})",
     "userName=text? createdDT=text updatedDT=text accountReview=boolean? machineRating=unsigned32 machineReview=text"},
    {"PurchaseGameResponse", outcome<PurchaseGameResponse>, R"({"ok":true,"winAmount":1})",
     "ok=boolean winAmount=integer"},
    {"CheckGeoIPResponse", outcome<CheckGeoIPResponse>, R"({"country":{"iso_code":"DE"}})",
     "country=object country/iso_code=text"},
    {"PrepaidCreateVirtualCardResponse", outcome<PrepaidCreateVirtualCardResponse>, R"({"token":{"token":"t"}})",
     "token=object token/token=text?"},
    {"PrepaidCreatePhysicalCardResponse", outcome<PrepaidCreatePhysicalCardResponse>, R"({"id":1})", "id=integer?"},
    {"BasicResponse", outcome<BasicResponse>, R"({"ok":true,"result":"r"})", "ok=boolean result=text?"},
    {"ErrorKeys", outcome<ErrorKeys>, R"({"message":"m"})", "message=text"},
    {"ErrorModel", outcome<ErrorModel>, R"({"message":"m","code":"c"})", "message=text? code=text?"},
    {"ServerTimeResponse", outcome<ServerTimeResponse>, R"({"expireTime":"e","serverTime":"s"})",
     "expireTime=anything? serverTime=anything?"},
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

class Strictness : public testing::TestWithParam<Record> {
    InstalledPlatform mPlatform{FakeDevice().platform()};
};

TEST_P(Strictness, OfEveryKeyIsAsItsRowSays) {
    const auto& record = GetParam();
    const auto sample = JsonValue::parse(record.sample);
    ASSERT_EQ(record.outcome(sample), accepted);

    std::istringstream keys(record.keys);
    for (std::string row; keys >> row;) {
        SCOPED_TRACE(row);
        const bool isOptional = row.ends_with('?');
        if (isOptional) row.pop_back();
        const auto pointer = JsonValue::json_pointer("/" + row.substr(0, row.find('=')));
        const auto kindName = row.substr(row.find('=') + 1);
        const auto kind = std::find_if(kinds.begin(), kinds.end(), [&](const Kind& k) { return k.name == kindName; });
        ASSERT_NE(kind, kinds.end());
        ASSERT_TRUE(sample.contains(pointer));
        auto path = row.substr(0, row.find('='));
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
            } else if (kindName == "object") {
                EXPECT_THAT(result, testing::Not(testing::StartsWith(path + ":"))) << "an empty object";
            } else {
                EXPECT_EQ(result, accepted) << probes[i].value;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Records, Strictness, testing::ValuesIn(records),
                         [](const testing::TestParamInfo<Record>& record) { return record.param.name; });

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
