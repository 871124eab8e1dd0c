#pragma once

#include <kavio/date.h>
#include <kavio/export.h>
#include <kavio/payment_method.h>

#include <cstdint>
#include <optional>
#include <string>

namespace kavio {

/// What `Kavio::getMachines` looks for. Keeps what it is given and checks nothing. Immutable.
class KAVIO_API MachineFilter {
public:
    explicit MachineFilter(
        std::optional<std::string> value = std::nullopt, std::optional<double> latitude = std::nullopt,
        std::optional<double> longitude = std::nullopt, std::optional<std::string> country = std::nullopt,
        std::optional<std::int64_t> radius = std::nullopt, std::optional<std::int64_t> operatorId = std::nullopt,
        std::optional<std::string> hwSerial = std::nullopt, std::optional<std::int64_t> limit = std::nullopt);

    /// A machine's code, or the text of a QR code.
    const std::optional<std::string> value;
    /// Degrees.
    const std::optional<double> latitude;
    const std::optional<double> longitude;
    /// Of the position, such as "DE".
    const std::optional<std::string> country;
    /// Metres.
    const std::optional<std::int64_t> radius;
    /// Not sent along with `hwSerial`.
    const std::optional<std::int64_t> operatorId;
    /// Of the machine's payment device.
    const std::optional<std::string> hwSerial;
    /// At most so many machines; 50 for a `value` when absent.
    const std::optional<std::int64_t> limit;

    std::string debugDescription() const;
};

/// Which past orders `Kavio::getTransactions` lists. Keeps what it is given and checks nothing. Immutable.
class KAVIO_API TransactionFilter {
public:
    explicit TransactionFilter(std::optional<std::int64_t> machineId = std::nullopt,
                               std::optional<std::string> paymentMethodId = std::nullopt,
                               std::optional<PaymentMethod::PaymentType> paymentType = std::nullopt,
                               std::optional<std::int64_t> limit = std::nullopt,
                               std::optional<Date> transactionsBefore = std::nullopt);

    /// A `Machine`'s `id`, not its `kavioId`.
    const std::optional<std::int64_t> machineId;
    const std::optional<std::string> paymentMethodId;
    const std::optional<PaymentMethod::PaymentType> paymentType;
    /// At most so many orders.
    const std::optional<std::int64_t> limit;
    /// Sent in UTC, to the millisecond below.
    const std::optional<Date> transactionsBefore;

    std::string debugDescription() const;
};

}  // namespace kavio
