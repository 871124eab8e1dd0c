#include "models/product_model.h"

namespace kavio {

Product Decoder<Product>::decode(const KeyedContainer& in) {
    return {
        .machineProductId = in.required("machineProductID"),
        .id = in.required("productID"),
        .name = in.optional("productName"),
        .department = in.optional("groupName"),
        .cashPrice = in.optional("cashPrice"),
        .cardPrice = in.optional("cardPrice"),
        .exPrepaidPrice = in.optional("exPrepaidPrice"),
        .machinePrice = in.optional("machinePrice"),
        .preapidPrice = in.optional("preapidPrice"),
        .commissionValue = in.optional("commissionValue"),
        .paCode = in.optional("paCode"),
        .opButtonCode = in.optional("opButtonCode"),
        .opRowCode = in.optional("opRowCode"),
        .opColCode = in.optional("opColCode"),
        .imageUrl = in.optional("imageURL"),
        .ageVerification = in.optional("ageVerification"),
        .memberType = in.required("productMemberType"),
        .image = in.optional("productPicture"),
        .codeInMap = in.optional("codeInMap"),
        .missingProduct = in.optional("missingProduct"),
        .vendOut = in.required("vendOut"),
        .retailPrice = in.optional("retailPrice"),
        .par = in.optional("par"),
        .missingStockByMdb = in.optional("missingStockByMdb"),
        .mdbMissingStockLastUpdated = in.optional("mdbMissingStockLastUpdated"),
        .dexMissingStockLastUpdated = in.optional("dexMissingStockLastUpdated"),
        .lastSaleDt = in.optional("lastSaleDt"),
        .lastSaleMdbDt = in.optional("lastSaleMdbDt"),
        .slowMover = in.required("slowMover"),
    };
}

}  // namespace kavio
