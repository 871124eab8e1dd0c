#include "models/debug_text.h"

#include <kavio/filters.h>

#include <utility>

namespace kavio {

MachineFilter::MachineFilter(std::optional<std::string> value_, std::optional<double> latitude_,
                             std::optional<double> longitude_, std::optional<std::string> country_,
                             std::optional<std::int64_t> radius_, std::optional<std::int64_t> operatorId_,
                             std::optional<std::string> hwSerial_, std::optional<std::int64_t> limit_)
    : value(std::move(value_)),
      latitude(latitude_),
      longitude(longitude_),
      country(std::move(country_)),
      radius(radius_),
      operatorId(operatorId_),
      hwSerial(std::move(hwSerial_)),
      limit(limit_) {}

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

TransactionFilter::TransactionFilter(std::optional<std::int64_t> machineId_,
                                     std::optional<std::string> paymentMethodId_,
                                     std::optional<PaymentMethod::PaymentType> paymentType_,
                                     std::optional<std::int64_t> limit_, std::optional<Date> transactionsBefore_)
    : machineId(machineId_),
      paymentMethodId(std::move(paymentMethodId_)),
      paymentType(paymentType_),
      limit(limit_),
      transactionsBefore(transactionsBefore_) {}

std::string TransactionFilter::debugDescription() const {
    return DebugText()
        .line("{machine ID: ", machineId)
        .line("payment method ID: ", paymentMethodId)
        .line("payment type: ", paymentType)
        .line("limit: ", limit)
        .line("transactions before: ", transactionsBefore, "}");
}

}  // namespace kavio
