// The debug text of every public object: one line per member, in the order that integrators know.

#include "models/debug_text.h"

#include <kavio/campaign.h>
#include <kavio/card.h>
#include <kavio/filters.h>
#include <kavio/machine.h>
#include <kavio/order.h>
#include <kavio/payment_method.h>
#include <kavio/product.h>
#include <kavio/result.h>

namespace kavio {

std::string KavioResult::debugDescription() const {
    return DebugText().line("{type: ", type).line("message: ", message, "}");
}

std::string Machine::debugDescription() const {
    return DebugText()
        .line("{ref ID: ", id)
        .line("kavio ID: ", kavioId)
        .line("operator name: ", operatorName)
        .line("online: ", isWalletAllowed)
        .line("latitude: ", latitude)
        .line("longitude: ", longitude)
        .line("type: ", type, ", ")
        .line("campaigns: ", campaigns, ", ")
        .line("name: ", name, ", ")
        .line("country: ", country, ", ")
        .line("city: ", city, ", ")
        .line("hwSerial: ", hwSerial, ", ")
        .line("supportRemoteVend: ", supportRemoteVend, ", ")
        .line("machineStatus: ", machineStatus, ", ")
        .line("multiVendCount: ", multiVendCount, "}");
}

std::string Product::debugDescription() const {
    return DebugText()
        .line("{machineProductId: ", machineProductId)
        .line("ID: ", id)
        .line("name: ", name)
        .line("department: ", department)
        .line("cashPrice: ", cashPrice)
        .line("cardPrice: ", cardPrice)
        .line("exPrepaidPrice: ", exPrepaidPrice)
        .line("machinePrice: ", machinePrice)
        .line("preapidPrice: ", preapidPrice)
        .line("commissionValue: ", commissionValue)
        .line("paCode: ", paCode)
        .line("opButtonCode: ", opButtonCode)
        .line("opRowCode: ", opRowCode)
        .line("opColCode: ", opColCode)
        .line("imageUrl: ", imageUrl)
        .line("ageVerification: ", ageVerification)
        .line("memberType: ", memberType)
        .line("image: ", image)
        .line("codeInMap: ", codeInMap)
        .line("missingProduct: ", missingProduct)
        .line("vendOut: ", vendOut)
        .line("retailPrice: ", retailPrice)
        .line("par: ", par)
        .line("missingStockByMdb: ", missingStockByMdb)
        .line("mdbMissingStockLastUpdated: ", mdbMissingStockLastUpdated)
        .line("dexMissingStockLastUpdated: ", dexMissingStockLastUpdated)
        .line("lastSaleDt: ", lastSaleDt)
        .line("lastSaleMdbDt: ", lastSaleMdbDt)
        .line("slowMover: ", slowMover, "}");
}

std::string RemoteVendProduct::debugDescription() const {
    return DebugText()
        .line("{ref codeInMap: ", codeInMap)
        .line("quantity: ", quantity)
        .line("pulseLineNumber: ", pulseLineNumber, "}");
}

std::string Order::debugDescription() const {
    return DebugText()
        .line("{ID: ", id)
        .line("type: ", type)
        .line("status: ", status)
        .line("source: ", paymentSource)
        .line("amount: ", amount)
        .line("date: ", date)
        .line("currency: ", currency)
        .line("items count: ", itemsCount)
        .line("ending balance: ", endingBalance, "}");
}

std::string Image::debugDescription() const {
    return DebugText()
        .line("{file: ", file)
        .line("width: ", width)
        .line("height: ", height)
        .line("was uploaded: ", wasUploaded)
        .line("dpi: ", dpi)
        .line("iOS: ", iOS, "}");
}

std::string LookAndFeel::debugDescription() const {
    return DebugText()
        .line("{image URL: ", imageUrl)
        .line("backgroud color: ", backgroudColor)
        .line("text color: ", textColor)
        .line("receipt text: ", receiptText)
        .line("punch card text: ", punchCardText)
        .line("images: ", images, "}");
}

std::string Campaign::debugDescription() const {
    return DebugText()
        .line("{ID: ", id)
        .line("name: ", name)
        .line("title: ", title)
        .line("description: ", description)
        .line("punched: ", punched)
        .line("totalPunches: ", totalPunches)
        .line("created: ", created)
        .line("updated: ", updated)
        .line("expiration: ", expiration)
        .line("imageUrl: ", imageUrl)
        .line("punchCardId: ", punchCardId)
        .line("lookAndFeel: ", lookAndFeel, "}");
}

std::string Card::debugDescription() const {
    return DebugText()
        .line("{PAN: ", pan.text())
        .line("month: ", month)
        .line("year: ", year)
        .line("CVV: ", cvv.text())
        .line("email: ", email, "}");
}

std::string PaymentMethod::debugDescription() const {
    return DebugText().line("{ID: ", id).line("number: ", number).line("type: ", type, "");
}

std::string CreditCard::debugDescription() const {
    return DebugText(PaymentMethod::debugDescription() + ",").line("brand: ", brand, "}");
}

std::string DepositCard::debugDescription() const {
    return DebugText(PaymentMethod::debugDescription() + ",")
        .line("balance: ", balance)
        .line("currency: ", currency, ", ")
        .line("currency decimal digits: ", currencyDecimalDigits, "}");
}

std::string PrepaidCard::debugDescription() const {
    return DebugText(DepositCard::debugDescription() + ",")
        .line("isActive: ", isActive)
        .line("created: ", created)
        .line("isMoney: ", isMoney, "}");
}

std::string MachineFilter::debugDescription() const {
    return DebugText()
        .line("{value: ", value)
        .line("latitude: ", latitude)
        .line("longitude: ", longitude)
        .line("country: ", country)
        .line("radius: ", radius)
        .line("operatorId: ", operatorId)
        .line("limit: ", limit)
        .line("hwSerial: ", hwSerial, "}");
}

std::string TransactionFilter::debugDescription() const {
    return DebugText()
        .line("{machine ID: ", machineId)
        .line("payment method ID: ", paymentMethodId)
        .line("payment type: ", paymentType)
        .line("limit: ", limit)
        .line("transactions before: ", transactionsBefore, "}");
}

}  // namespace kavio
