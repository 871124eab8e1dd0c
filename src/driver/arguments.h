#pragma once

#include <kavio/kavio.h>

#include <nlohmann/json.hpp>

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kavio::driver {

using Input = nlohmann::json;

/// Why a line is refused. The text says what is wrong and where, but quotes no value, which could be a card's.
struct Refused : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A JSON value in a line, and its path.
struct Value {
    const Input& json;
    std::string path;

    [[noreturn]] void refuse(std::string_view expected) const;
};

/// The members of a JSON object.
class Arguments {
public:
    explicit Arguments(Value object);

    template <class T>
    T required(std::string_view name) const {
        const auto value = present(name);
        T result{};
        read(value, result);
        return result;
    }
    /// Null counts as absent.
    template <class T>
    std::optional<T> optional(std::string_view name) const {
        if (isAbsent(name)) return std::nullopt;
        return required<T>(name);
    }
    /// The member as it is, even if it is null; throws `Refused` if there is none.
    Value member(std::string_view name) const;

private:
    /// Neither missing nor null.
    Value present(std::string_view name) const;
    bool isAbsent(std::string_view name) const;

    Value mObject;
};

/// The object in a line; throws `Refused` for any other text.
Input parseLine(std::string_view line);

// One reader per type; each throws `Refused` for a value that it cannot accept.
void read(const Value& value, bool& result);
void read(const Value& value, double& result);
/// Any number with an integral value, however it is written.
void read(const Value& value, std::int64_t& result);
/// The same, but not negative.
void read(const Value& value, std::uint64_t& result);
void read(const Value& value, std::chrono::milliseconds& result);
void read(const Value& value, std::string& result);
void read(const Value& value, Date& result);
void read(const Value& value, PaymentMethod::PaymentType& result);
void read(const Value& value, TDSPaymentCard& result);
void read(const Value& value, TDSCardHolder& result);
void read(const Value& value, std::shared_ptr<const Card>& result);
void read(const Value& value, std::shared_ptr<const DepositCard>& result);
void read(const Value& value, std::shared_ptr<const MachineFilter>& result);
void read(const Value& value, std::shared_ptr<const PaymentMethod>& result);
void read(const Value& value, std::shared_ptr<const RemoteVendProduct>& result);
void read(const Value& value, std::shared_ptr<const TransactionFilter>& result);
void read(const Value& value, std::vector<std::shared_ptr<const RemoteVendProduct>>& result);

}  // namespace kavio::driver
