#pragma once

#include <kavio/date.h>
#include <kavio/export.h>
#include <kavio/payment_method.h>

#include <cstdint>
#include <optional>
#include <string>

namespace kavio {

/// What `Kavio::getMachines` looks for. Initialise it by member name: `MachineFilter{.latitude = 52.5, .longitude =
/// 13.4}`. Nothing is checked here. Immutable.
struct KAVIO_API MachineFilter {
    /// A machine's code, or the text of a QR code.
    const std::optional<std::string> value = std::nullopt;
    ///@{
    /// Degrees.
    const std::optional<double> latitude = std::nullopt;
    const std::optional<double> longitude = std::nullopt;
    ///@}
    /// The country of the position, such as "DE".
    const std::optional<std::string> country = std::nullopt;
    /// Metres.
    const std::optional<std::int64_t> radius = std::nullopt;
    /// Not sent along with `hwSerial`.
    const std::optional<std::int64_t> operatorId = std::nullopt;
    /// The serial number of the machine's payment device.
    const std::optional<std::string> hwSerial = std::nullopt;
    /// The most machines to list; 50 for a `value` when absent.
    const std::optional<std::int64_t> limit = std::nullopt;

    /// One line per member, for logs and tests.
    std::string debugDescription() const;
};

/// Which past orders `Kavio::getTransactions` lists. Initialise it by member name. Nothing is checked here. Immutable.
struct KAVIO_API TransactionFilter {
    /// A `Machine`'s `id`, not its `kavioId`.
    const std::optional<std::int64_t> machineId = std::nullopt;
    ///@{
    /// As in `PaymentMethod`; only orders paid with it.
    const std::optional<std::string> paymentMethodId = std::nullopt;
    const std::optional<PaymentMethod::PaymentType> paymentType = std::nullopt;
    ///@}
    /// The most orders to list.
    const std::optional<std::int64_t> limit = std::nullopt;
    /// Sent in UTC, rounded down to the millisecond.
    const std::optional<Date> transactionsBefore = std::nullopt;

    /// One line per member, for logs and tests.
    std::string debugDescription() const;
};

}  // namespace kavio
