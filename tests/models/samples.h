#pragma once

#include <string>

/// One whole record of each kind, with every key that is read, each with a different value.
namespace kavio::test::samples {

inline const std::string image = R"({"file":"logo.png","w":120,"h":80,"wasUploaded":true,"dpi":72,"ios":false})";
inline const std::string lookAndFeel =
    R"({"images_url":"u","backgroundColor":"b","textColor":"t","receiptText":"r","punchCardText":"p","images":[)" +
    image + "]}";
inline const std::string campaign =
    R"({"campaignId":1,"campaignName":"n","campaignTitle":"t","campaignDescription":"d","punched":3,"totalPunches":10,)"
    R"("created":"2024-01-02T03:04:05.678","expiration":"2022-13-45T00:00:00.000","imagesUrl":"i","fullTreeOperators":[1,2],)"
    R"("punchCardId":4,"updated":"2024-02-01T10:00:00.500","lookAndFeel":)" +
    lookAndFeel + "}";
inline const std::string machine =
    R"({"kavioID":5,"operatorName":"o","name":12345,"machineId":7,"machineName":"m","machineConnectivityStatus":"c",)"
    R"("machineStatusId":1,"zipCode":"z","city":"Berlin","country":"DE","isWalletAllowed":false,"distance":1.5,"machineType":43,)"
    R"("machineModel":8,"currency":"EUR","location":"l","isRevalueOnly":true,"campaigns":[)" +
    campaign +
    R"(],"customLabel":"cl","customLabe":"misspelled","isFavorite":true,"latitude":1.25,"longitude":2.5,"decimalPlace":3,)"
    R"("fullTreeOperatorsField":[1,2.5],"lastOrderDT":"2020-01-02T03:04:05.678","reviewsCount":1,"reviewsAvg":4.5,)"
    R"("reviewsCount1":2,"reviewsCount2":3,"reviewsCount3":4,"reviewsCount4":5,"reviewsCount5":6,"isPulse":true,"uniQR":9,)"
    R"("evNozzle":true,"evNozzleLeft":false,"evNozzleRight":true,"supportRevalue":true,"supportKavioAutoPP":true,)"
    R"("actorID":10,"distributorID":11,"supportDcsImage":true,"supportRemoteVend":true,"multiVendCount":12,)"
    R"("machineSerial":"s","supportDcsImageUpdatedDt":"sd","coordinate":{"latitude":3.5,"longitude":-4},)"
    R"("smartStickerIdUrl":"ss","defaultCredit":"dc","extraCharge":0.5,"extraChargeType":13})";
inline const std::string product =
    R"({"machineProductID":1,"productID":2,"productName":"n","groupName":"g","cashPrice":1.5,"cardPrice":2,)"
    R"("exPrepaidPrice":0.1,"machinePrice":3.25,"preapidPrice":4,"commissionValue":0.25,"paCode":"A1","opButtonCode":"b",)"
    R"("opRowCode":5,"opColCode":6,"imageURL":"i","ageVerification":18,"productMemberType":true,"productPicture":"p",)"
    R"("codeInMap":7,"missingProduct":8,"vendOut":false,"retailPrice":9.5,"par":10,"missingStockByMdb":11,)"
    R"("mdbMissingStockLastUpdated":0,"dexMissingStockLastUpdated":86400.5,"lastSaleDt":1,"lastSaleMdbDt":2,"slowMover":true})";
inline const std::string order =
    R"({"order":{"address":"a","id":"77","orderType":"prePaidDeposit","orderStatus":"Completed","amount":150,"city":"c",)"
    R"("country":{"code":"DE"},"currency":"EUR","userAmount":1,"orderItems":[{"a":1}],"externalReference":"e",)"
    R"("paymentSourceLabel":"pl","paymentSource":"Ecommerce","issuer":"visa","externalPaymentReference":"ep","externalId":77,)"
    R"("revalue":2,"orderItemsCount":3,"externalCampaignID":"ec","chargedAmount":4,"createdUTC":"2021-05-06T07:08:09",)"
    R"("endingBalance":500,"lookAndFeel":)" +
    lookAndFeel +
    R"(,"machineReview":{"reviewsCount":1,"reviewsAvg":4.5,"accountReview":true},"dataFields":{"feedback":"{\"AlertType\":5003}",)"
    R"("machineType":6,"prepaidCardReference":"pr","prepaidCardIssuer":"pi","prepaidCardId":"pc","totalPunches":10,)"
    R"("punchesOnPunch":2}}})";
inline const std::string activity =
    R"({"orderId":88,"created":"2021-05-06T07:08:09.100","amount":250,"orderStatusName":"TimedOut","paymentSourceName":"Prepaid",)"
    R"("orderType":3,"orderTypeName":"balanceDeposit","machineType":"mt","machineName":"mn","externalReference":"er",)"
    R"("prepaidCardID":"pc","tokenLocatorID":"tl","label":"l","startingBalance":1,"endingBalance":2,"issuerName":"in",)"
    R"("externalCampaignID":"ec","currency":"EUR","locator":"lo","orderItems":"[1,{},[]]","bonus":3,"city":"c","country":"co",)"
    R"("gameWin":4,"autoTopup":true,"operatorName":"on","lookAndFeel":)" +
    lookAndFeel + R"(,"punchesOnPunch":"+5","totalPunches":"ten"})";
inline const std::string storedCard =
    R"({"locator":"L1","securityCode":7,"label":"**11","issuer":"visa","month":1,"year":2030,"processorType":"PaymentCard","id":9})";
inline const std::string prepaidCard =
    R"({"cardId":9,"cardNumber":"99","revalue":true,"balance":500,"cardLimit":200,"cardHolderName":"h","cardIssuerName":"i",)"
    R"("cardStatus":1,"createdTime":"2020-01-02T03:04:05.678","cardType":30000601,"currency":{"code":"EUR","decimalDigits":2},)"
    R"("fullTreeOperatorsField":[1],"isMoney":true})";
inline const std::string account =
    R"({"configurationMaxUpdatedDT":"cm","token":{"token":"t1"},"account":{"phone":"501","email":"e","country":"DE",)"
    R"("currency":"EUR","firstName":"f","lastName":"l","balance":12,"currencyDecimalDigits":2,"paypalClientId":"pp",)"
    R"("marketingConfirmation":true,"preventPayPalDirectPayment":true,"preventCreditCardDirectPayment":true,)"
    R"("preventBalanceCardDirectPayment":true,"preventPayPalTopUpDeposit":true,"preventCreditCardTopUpDeposit":true,)"
    R"("preventGPayTopUpDeposit":true,"tokenLocators":[)" +
    storedCard +
    R"(],"gameficationTotalGamePlayed":1,"gameficationHighScore":2,"gameficationTotalAmountOfCashback":3,)"
    R"("appData":"{\"machinesOrder\":7,\"paymentMethodsOrder\":3,\"lastEarnedCashback\":0}"}})";

}  // namespace kavio::test::samples
