// Every key of every record in this folder, with every wrong kind of value. A row says how a key is read, and the
// engine works out the expected outcome from that, down to the text of the error.

#include "models/account_model.h"
#include "models/json/decoding_error.h"
#include "models/json/document.h"
#include "models/json/json_value.h"
#include "models/machine_model.h"
#include "models/order_activity_model.h"
#include "models/order_model.h"
#include "models/product_model.h"
#include "models/request_models.h"
#include "reserved/records.h"
#include "samples.h"

#include <kavio/testing/device.h>

#include <gmock/gmock.h>

#include <map>
#include <sstream>

namespace kavio::test {
namespace {

constexpr const char* accepted = "accepted";

/// How the decoding of `T` from `body` ends: "accepted", or the text of the error.
template <class T>
std::string outcome(const JsonValue& body) {
    try {
        const Document document(body.dump());
        document.root().borrowed<T>();
        return accepted;
    } catch (const DecodingError& error) {
        return error.what();
    }
}

struct Record {
    std::string (*outcome)(const JsonValue&);
    /// After "kind:" come the keys of that kind; "kind?:" is for optional ones, "kind*:" for those that may be absent
    /// but not null. After "outer/" come those nested there.
    const char* keys;
};

const std::vector<Record> records{
    {outcome<Challenge>, "object: challenge challenge/ text: challenge phone integer: retryTimeoutSeconds"},
    {outcome<Token>, "object: token token/ text: token"},
    {outcome<LogOutResponse>, "boolean: ok anything?: result"},
    {outcome<AccountModel>,
     R"(text?: configurationMaxUpdatedDT object: token account token/ text: token account/ text: phone country currency
        paypalClientId text?: email firstName lastName appData number: balance integer: currencyDecimalDigits boolean?:
        marketingConfirmation preventPayPalDirectPayment preventCreditCardDirectPayment preventBalanceCardDirectPayment
        preventPayPalTopUpDeposit preventCreditCardTopUpDeposit preventGPayTopUpDeposit array?: tokenLocators integer?:
        gameficationTotalGamePlayed gameficationHighScore gameficationTotalAmountOfCashback)"},
    {outcome<AppData>, "integer: machinesOrder paymentMethodsOrder lastEarnedCashback"},
    {outcome<Configuration>, "object: currencies currencies/ anything?: EUR"},
    {outcome<KavioCardModel>, "integer: amount decimalDigits text: currency"},
    {outcome<Machine>,
     R"(unsigned?: kavioID text?: operatorName machineName machineConnectivityStatus zipCode city country currency
        location customLabel lastOrderDT machineSerial supportDcsImageUpdatedDt smartStickerIdUrl defaultCredit
        integer: name machineId machineType integer32?: machineStatusId extraChargeType boolean?: isWalletAllowed
        isFavorite evNozzle evNozzleLeft evNozzleRight supportRevalue supportKavioAutoPP supportDcsImage
        supportRemoteVend number?: distance latitude longitude extraCharge integer?: machineModel decimalPlace uniQR
        actorID distributorID multiVendCount boolean: isRevalueOnly isPulse array?: campaigns fullTreeOperatorsField
        integer32: reviewsCount reviewsCount1 reviewsCount2 reviewsCount3 reviewsCount4 reviewsCount5
        float?: reviewsAvg object?: coordinate coordinate/ number*: latitude longitude accuracy)"},
    {outcome<MachineProduct>,
     R"(integer: machineProductID productID text?: productName groupName paCode opButtonCode imageURL productPicture
        number?: cashPrice cardPrice exPrepaidPrice machinePrice commissionValue retailPrice integer?: preapidPrice
        opRowCode opColCode ageVerification codeInMap missingProduct par missingStockByMdb boolean: productMemberType
        vendOut slowMover date?: mdbMissingStockLastUpdated dexMissingStockLastUpdated lastSaleDt lastSaleMdbDt)"},
    {outcome<MachineByValueModel>, "unsigned?: kavioMachineId text?: uni_qr_scan uni_qr_number"},
    {outcome<PlaceOrderModel>,
     R"(integer?: amount prepaidCardId text?: tokenLocator payPalMetadataId address city country zipcode streetNumber
        number?: longitude latitude accuracy boolean?: isQR)"},
    {outcome<OrderModel>,
     R"(object: order order/ text?: address city currency externalReference paymentSourceLabel paymentSource issuer
        externalPaymentReference externalCampaignID createdUTC text: id orderType orderStatus integer?: amount
        userAmount externalId revalue orderItemsCount chargedAmount endingBalance anything?: country array?: orderItems
        object?: lookAndFeel machineReview dataFields order/country/ anything?: code order/dataFields/ anything?:
        machineType prepaidCardId prepaidCardReference prepaidCardIssuer totalPunches punchesOnPunch
        order/machineReview/ unsigned32: reviewsCount float: reviewsAvg boolean?: accountReview)"},
    {outcome<OrderModelResponse>, "object: order text?: qr order/ text: id orderType orderStatus"},
    {outcome<OrderActivityModel>,
     R"(unsigned: orderId text: created orderStatusName paymentSourceName integer: amount orderType startingBalance
        endingBalance bonus gameWin text?: orderTypeName machineType machineName externalReference prepaidCardID
        tokenLocatorID label issuerName externalCampaignID currency locator orderItems city country operatorName
        punchesOnPunch totalPunches boolean: autoTopup object?: lookAndFeel)"},
    {outcome<PaymentCardModel>, "text: locator label processorType integer: securityCode month year id text?: issuer"},
    {outcome<AddCreditCardResponse>,
     R"(object: locator locator/ text: locator label issuer processorType integer: month year securityCode
        integer?: id)"},
    {outcome<PrepaidCardModel>,
     R"(unsigned: cardId text?: cardNumber cardHolderName cardIssuerName boolean: revalue isMoney integer: balance
        cardLimit number: cardStatus cardType text: createdTime array: fullTreeOperatorsField object: currency
        currency/ text: code integer: decimalDigits)"},
    {outcome<PrepaidsList>, "array: prepaidCards"},
    {outcome<DepositModel>, "object: deposit deposit/ integer: balance anything?: fee"},
    {outcome<Campaign>,
     R"(integer: campaignId punched totalPunches punchCardId text: campaignName campaignTitle campaignDescription
        created text?: expiration imagesUrl updated array?: fullTreeOperators object: lookAndFeel)"},
    {outcome<VoucherModel>, "anything?: campaigns array: vouchers"},
    {outcome<LookAndFeelModel>, "text?: images_url backgroundColor textColor receiptText punchCardText array?: images"},
    {outcome<ImageMetaModel>, "text: file integer: w h dpi boolean: wasUploaded ios"},
    {outcome<MachineReviewModel>,
     "text?: userName text: createdDT updatedDT machineReview boolean?: accountReview unsigned32: machineRating"},
    {outcome<PurchaseGameResponse>, "boolean: ok integer: winAmount"},
    {outcome<CheckGeoIPResponse>, "object: country country/ text: iso_code"},
    {outcome<PrepaidCreateVirtualCardResponse>, "object: token token/ text?: token"},
    {outcome<PrepaidCreatePhysicalCardResponse>, "integer?: id"},
    {outcome<BasicResponse>, "boolean: ok text?: result"},
    {outcome<ErrorKeys>, "text: message"},
    {outcome<ErrorModel>, "text?: message code"},
    {outcome<ServerTimeResponse>, "anything?: expireTime serverTime"},
};

const auto nothing = JsonValue::object();
// With this text as the source of its payment, an order's issuer is read.
const std::vector<JsonValue> probes{"Ecommerce", 1, 1.5, -1, 4294967296, 1e300, true, JsonValue::array(), nothing};
const std::vector<std::string> found{"text",     "a number",  "a number", "a number", "a number",
                                     "a number", "a boolean", "an array", "an object"};

struct Kind {
    const char* expectation;
    std::vector<std::size_t> accepts;  // which of `probes`; the first is a value for the sample
};

const std::map<std::string, Kind> kinds{
    {"text", {"text", {0}}},
    {"integer", {"an integer", {1, 3, 4}}},
    {"integer32", {"a 32-bit integer", {1, 3}}},
    {"unsigned", {"an unsigned integer", {1, 4}}},
    {"unsigned32", {"an unsigned 32-bit integer", {1}}},
    {"number", {"a number", {1, 2, 3, 4, 5}}},
    {"date", {"a date as a number", {1, 2, 3, 4, 5}}},
    {"float", {"a single-precision number", {1, 2, 3, 4}}},
    {"boolean", {"a boolean", {6}}},
    {"array", {"an array", {7}}},
    {"object", {"an object", {8}}},
    {"anything", {"", {8, 0, 1, 2, 3, 4, 5, 6, 7}}},
};

struct Key {
    std::string path;
    std::string kind;
    bool mayBeAbsent;
    bool mayBeNull;
};

std::vector<Key> keysOf(const Record& record) {
    std::vector<Key> keys;
    std::string outer;
    std::string kind;
    std::istringstream words(record.keys);
    for (std::string word; words >> word;) {
        if (word.ends_with('/')) {
            outer = word;
        } else if (word.ends_with(':')) {
            kind = word.substr(0, word.size() - 1);
        } else {
            const auto mark = kind.substr(std::min(kind.find_first_of("?*"), kind.size()));
            keys.push_back({outer + word, kind.substr(0, kind.size() - mark.size()), !mark.empty(), mark == "?"});
        }
    }
    return keys;
}

TEST(KeysOfRecords, AreAsStrictAsTheirRowsSay) {
    const Device device;
    for (const auto& record : records) {
        const auto keys = keysOf(record);
        JsonValue sample;
        for (const auto& key : keys)
            sample[JsonValue::json_pointer("/" + key.path)] = probes[kinds.at(key.kind).accepts.front()];
        ASSERT_EQ(record.outcome(sample), accepted) << record.keys;

        for (const auto& [key, kind, mayBeAbsent, mayBeNull] : keys) {
            const JsonValue::json_pointer pointer("/" + key);
            auto path = key;
            std::replace(path.begin(), path.end(), '/', '.');
            SCOPED_TRACE(path + " in " + record.keys);

            const std::string whenMissing = mayBeAbsent ? accepted : path + ": missing";
            auto body = sample;
            body[pointer.parent_pointer()].erase(pointer.back());
            EXPECT_EQ(record.outcome(body), whenMissing) << "absent";
            body[pointer] = nullptr;
            const auto& [expectation, accepts] = kinds.at(kind);
            const auto refusedNull = path + ": expected " + expectation + ", found null";
            EXPECT_EQ(record.outcome(body), mayBeAbsent && !mayBeNull ? refusedNull : whenMissing) << "null";

            for (std::size_t i = 0; i < probes.size(); ++i) {
                body[pointer] = probes[i];
                const auto result = record.outcome(body);
                if (std::find(accepts.begin(), accepts.end(), i) == accepts.end()) {
                    EXPECT_EQ(result, path + ": expected " + expectation + ", found " + found[i]);
                } else if (kind == "object") {
                    EXPECT_THAT(result, testing::Not(testing::StartsWith(path + ":"))) << "an empty object";
                } else {
                    EXPECT_EQ(result, accepted) << probes[i];
                }
            }
        }
    }
}

TEST(Strictness, OfACampaignIsThatOfItsVoucherIfThatIsAnObject) {
    auto campaign = JsonValue::parse(samples::campaign);
    campaign["voucher"] = 7;
    EXPECT_EQ(outcome<Campaign>(campaign), accepted);
    campaign["voucher"] = {{"campaignId", "1"}};
    EXPECT_EQ(outcome<Campaign>(campaign), "voucher.campaignId: expected an integer, found text");
}

TEST(Lists, NameTheElementThatFails) {
    auto machine = JsonValue::parse(samples::machine);
    auto broken = machine;
    broken["campaigns"][0]["lookAndFeel"] = nullptr;
    EXPECT_EQ(outcome<std::vector<std::shared_ptr<const Machine>>>({machine, broken}),
              "[1].campaigns[0].lookAndFeel: missing");
    EXPECT_EQ(outcome<std::vector<std::shared_ptr<const Machine>>>(nothing), "expected an array, found an object");
}

}  // namespace
}  // namespace kavio::test
