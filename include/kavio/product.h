#pragma once

#include <kavio/date.h>
#include <kavio/export.h>

#include <cstdint>
#include <optional>
#include <string>

namespace kavio {

/// What a machine sells. Immutable.
struct KAVIO_API Product {
    ///@{
    /// As the service sends it; `codeInMap` is what an order names.
    const std::int64_t machineProductId;
    const std::int64_t id;
    const std::optional<std::string> name;
    const std::optional<std::string> department;
    ///@}
    ///@{
    /// This and the other prices are in whole units of the machine's currency, such as 1.5 for EUR 1.50; `preapidPrice`
    /// is in its smallest unit.
    const std::optional<double> cashPrice;
    const std::optional<double> cardPrice;
    const std::optional<double> exPrepaidPrice;
    const std::optional<double> machinePrice;
    const std::optional<std::int64_t> preapidPrice;
    ///@}
    ///@{
    /// As the service sends it.
    const std::optional<double> commissionValue;
    const std::optional<std::string> paCode;
    const std::optional<std::string> opButtonCode;
    const std::optional<std::int64_t> opRowCode;
    const std::optional<std::int64_t> opColCode;
    const std::optional<std::string> imageUrl;
    const std::optional<std::int64_t> ageVerification;
    const bool memberType;
    const std::optional<std::string> image;
    ///@}
    /// Position in the machine; a `RemoteVendProduct` asks for the product by it.
    const std::optional<std::int64_t> codeInMap;
    ///@{
    /// Stock and sales, as the service sends them.
    const std::optional<std::int64_t> missingProduct;
    const bool vendOut;
    const std::optional<double> retailPrice;
    const std::optional<std::int64_t> par;
    const std::optional<std::int64_t> missingStockByMdb;
    const std::optional<Date> mdbMissingStockLastUpdated;
    const std::optional<Date> dexMissingStockLastUpdated;
    const std::optional<Date> lastSaleDt;
    const std::optional<Date> lastSaleMdbDt;
    const std::optional<bool> slowMover;
    ///@}

    /// One line per member, for logs and tests.
    std::string debugDescription() const;
};

/// Asks for a product in an order; the application initialises it by member name. Immutable.
struct KAVIO_API RemoteVendProduct {
    /// The product's position in the machine, `Product::codeInMap`.
    const std::int64_t codeInMap;
    const std::int64_t quantity;         ///< how many of it
    const std::int64_t pulseLineNumber;  ///< passed on to the service as it is; 0 for a machine without pulse lines

    /// One line per member, for logs and tests.
    std::string debugDescription() const;
};

}  // namespace kavio
