#include "models/product_model.h"

#include "models/json/keyed_container.h"

namespace kavio {

MachineProduct MachineProduct::decode(const KeyedContainer& in) {
    return {
        .machineProductID = in.required<std::int64_t>("machineProductID"),
        .productID = in.required<std::int64_t>("productID"),
        .productName = in.optional<std::string>("productName"),
        .groupName = in.optional<std::string>("groupName"),
        .cashPrice = in.optional<double>("cashPrice"),
        .cardPrice = in.optional<double>("cardPrice"),
        .exPrepaidPrice = in.optional<double>("exPrepaidPrice"),
        .machinePrice = in.optional<double>("machinePrice"),
        .preapidPrice = in.optional<std::int64_t>("preapidPrice"),
        .commissionValue = in.optional<double>("commissionValue"),
        .paCode = in.optional<std::string>("paCode"),
        .opButtonCode = in.optional<std::string>("opButtonCode"),
        .opRowCode = in.optional<std::int64_t>("opRowCode"),
        .opColCode = in.optional<std::int64_t>("opColCode"),
        .imageURL = in.optional<std::string>("imageURL"),
        .ageVerification = in.optional<std::int64_t>("ageVerification"),
        .productMemberType = in.required<bool>("productMemberType"),
        .productPicture = in.optional<std::string>("productPicture"),
        .codeInMap = in.optional<std::int64_t>("codeInMap"),
        .missingProduct = in.optional<std::int64_t>("missingProduct"),
        .vendOut = in.required<bool>("vendOut"),
        .retailPrice = in.optional<double>("retailPrice"),
        .par = in.optional<std::int64_t>("par"),
        .missingStockByMdb = in.optional<std::int64_t>("missingStockByMdb"),
        .mdbMissingStockLastUpdated = in.optional<Date>("mdbMissingStockLastUpdated"),
        .dexMissingStockLastUpdated = in.optional<Date>("dexMissingStockLastUpdated"),
        .lastSaleDt = in.optional<Date>("lastSaleDt"),
        .lastSaleMdbDt = in.optional<Date>("lastSaleMdbDt"),
        .slowMover = in.required<bool>("slowMover"),
    };
}

std::shared_ptr<const Product> publicObject(MachineProduct&& model) {
    return std::make_shared<Product>(
        model.machineProductID, model.productID, std::move(model.productName), std::move(model.groupName),
        model.cashPrice, model.cardPrice, model.exPrepaidPrice, model.machinePrice, model.preapidPrice,
        model.commissionValue, std::move(model.paCode), std::move(model.opButtonCode), model.opRowCode, model.opColCode,
        std::move(model.imageURL), model.ageVerification, model.productMemberType, std::move(model.productPicture),
        model.codeInMap, model.missingProduct, model.vendOut, model.retailPrice, model.par, model.missingStockByMdb,
        model.mdbMissingStockLastUpdated, model.dexMissingStockLastUpdated, model.lastSaleDt, model.lastSaleMdbDt,
        model.slowMover);
}

}  // namespace kavio
