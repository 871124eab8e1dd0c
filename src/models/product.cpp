#include "models/debug_text.h"

#include <kavio/product.h>

#include <utility>

namespace kavio {

Product::Product(std::int64_t machineProductId_, std::int64_t id_, std::optional<std::string> name_,
                 std::optional<std::string> department_, std::optional<double> cashPrice_,
                 std::optional<double> cardPrice_, std::optional<double> exPrepaidPrice_,
                 std::optional<double> machinePrice_, std::optional<std::int64_t> preapidPrice_,
                 std::optional<double> commissionValue_, std::optional<std::string> paCode_,
                 std::optional<std::string> opButtonCode_, std::optional<std::int64_t> opRowCode_,
                 std::optional<std::int64_t> opColCode_, std::optional<std::string> imageUrl_,
                 std::optional<std::int64_t> ageVerification_, bool memberType_, std::optional<std::string> image_,
                 std::optional<std::int64_t> codeInMap_, std::optional<std::int64_t> missingProduct_, bool vendOut_,
                 std::optional<double> retailPrice_, std::optional<std::int64_t> par_,
                 std::optional<std::int64_t> missingStockByMdb_, std::optional<Date> mdbMissingStockLastUpdated_,
                 std::optional<Date> dexMissingStockLastUpdated_, std::optional<Date> lastSaleDt_,
                 std::optional<Date> lastSaleMdbDt_, std::optional<bool> slowMover_)
    : machineProductId(machineProductId_),
      id(id_),
      name(std::move(name_)),
      department(std::move(department_)),
      cashPrice(cashPrice_),
      cardPrice(cardPrice_),
      exPrepaidPrice(exPrepaidPrice_),
      machinePrice(machinePrice_),
      preapidPrice(preapidPrice_),
      commissionValue(commissionValue_),
      paCode(std::move(paCode_)),
      opButtonCode(std::move(opButtonCode_)),
      opRowCode(opRowCode_),
      opColCode(opColCode_),
      imageUrl(std::move(imageUrl_)),
      ageVerification(ageVerification_),
      memberType(memberType_),
      image(std::move(image_)),
      codeInMap(codeInMap_),
      missingProduct(missingProduct_),
      vendOut(vendOut_),
      retailPrice(retailPrice_),
      par(par_),
      missingStockByMdb(missingStockByMdb_),
      mdbMissingStockLastUpdated(mdbMissingStockLastUpdated_),
      dexMissingStockLastUpdated(dexMissingStockLastUpdated_),
      lastSaleDt(lastSaleDt_),
      lastSaleMdbDt(lastSaleMdbDt_),
      slowMover(slowMover_) {}

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

RemoteVendProduct::RemoteVendProduct(std::int64_t codeInMap_, std::int64_t quantity_, std::int64_t pulseLineNumber_)
    : codeInMap(codeInMap_), quantity(quantity_), pulseLineNumber(pulseLineNumber_) {}

std::string RemoteVendProduct::debugDescription() const {
    return DebugText()
        .line("{ref codeInMap: ", codeInMap)
        .line("quantity: ", quantity)
        .line("pulseLineNumber: ", pulseLineNumber, "}");
}

}  // namespace kavio
