#pragma once

#include <kavio/date.h>
#include <kavio/product.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace kavio {

class KeyedContainer;

/// One product of the machine-products reply.
struct MachineProduct {
    std::int64_t machineProductID = 0;
    std::int64_t productID = 0;
    std::optional<std::string> productName;
    std::optional<std::string> groupName;
    std::optional<double> cashPrice;
    std::optional<double> cardPrice;
    std::optional<double> exPrepaidPrice;
    std::optional<double> machinePrice;
    std::optional<std::int64_t> preapidPrice;
    std::optional<double> commissionValue;
    std::optional<std::string> paCode;
    std::optional<std::string> opButtonCode;
    std::optional<std::int64_t> opRowCode;
    std::optional<std::int64_t> opColCode;
    std::optional<std::string> imageURL;
    std::optional<std::int64_t> ageVerification;
    bool productMemberType = false;
    std::optional<std::string> productPicture;
    std::optional<std::int64_t> codeInMap;
    std::optional<std::int64_t> missingProduct;
    bool vendOut = false;
    std::optional<double> retailPrice;
    std::optional<std::int64_t> par;
    std::optional<std::int64_t> missingStockByMdb;
    std::optional<Date> mdbMissingStockLastUpdated;
    std::optional<Date> dexMissingStockLastUpdated;
    std::optional<Date> lastSaleDt;
    std::optional<Date> lastSaleMdbDt;
    std::optional<bool> slowMover;
    static MachineProduct decode(const KeyedContainer& in);
};

std::shared_ptr<const Product> publicObject(MachineProduct&& model);

}  // namespace kavio
