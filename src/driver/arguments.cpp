#include "driver/arguments.h"

#include "driver/dates.h"
#include "driver/names.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace kavio::driver {

namespace {

/// Deeper than any operation needs, and far from what could exhaust the stack.
constexpr int maximumDepth = 32;

std::string_view kindOf(const Input& json) {
    if (json.is_object()) return "an object";
    if (json.is_array()) return "a list";
    if (json.is_string()) return "a text";
    if (json.is_boolean()) return "a boolean";
    return json.is_number() ? "a number" : "null";
}

}  // namespace

void Value::refuse(std::string_view expected) const {
    throw Refused(fmt::format("\"{}\" must be {}, not {}", path, expected, kindOf(json)));
}

Arguments::Arguments(Value object) : mObject(std::move(object)) {
    if (!mObject.json.is_object()) mObject.refuse("an object");
}

Value Arguments::member(std::string_view name) const {
    const auto path = mObject.path.empty() ? std::string{name} : fmt::format("{}.{}", mObject.path, name);
    const auto found = mObject.json.find(name);
    if (found == mObject.json.end()) throw Refused(fmt::format("\"{}\" is missing", path));
    return {*found, path};
}

Value Arguments::present(std::string_view name) const {
    auto value = member(name);
    if (value.json.is_null()) throw Refused(fmt::format("\"{}\" is missing", value.path));
    return value;
}

bool Arguments::isAbsent(std::string_view name) const {
    const auto found = mObject.json.find(name);
    return found == mObject.json.end() || found->is_null();
}

Input parseLine(std::string_view line) {
    const auto refuseDepth = [](int depth, Input::parse_event_t, Input&) {
        if (depth > maximumDepth) throw Refused("the line is nested too deeply");
        return true;
    };
    // The JSON library would stop there and ignore the rest.
    if (line.find('\0') != std::string_view::npos) throw Refused("the line is not a JSON object: it contains a NUL");
    try {
        auto json = Input::parse(line, refuseDepth);
        if (json.is_object()) return json;
    } catch (const Input::parse_error& problem) {
        throw Refused(fmt::format("the line is not a JSON object: it is malformed at byte {}", problem.byte));
    } catch (const Input::exception&) {
        throw Refused("the line contains a number that is out of range");
    }
    throw Refused("the line is not a JSON object");
}

void read(const Value& value, bool& result) {
    if (!value.json.is_boolean()) value.refuse("a boolean");
    result = value.json.get<bool>();
}

void read(const Value& value, double& result) {
    if (!value.json.is_number()) value.refuse("a number");
    result = value.json.get<double>();
}

void read(const Value& value, std::int64_t& result) {
    constexpr double limit = 9223372036854775808.0;  // 2^63, the first double past the range
    const auto& json = value.json;
    if (!json.is_number()) value.refuse("an integer");
    const auto number = json.get<double>();
    const bool fits =
        json.is_number_float()
            ? number >= -limit && number < limit && number == static_cast<double>(static_cast<std::int64_t>(number))
            : !json.is_number_unsigned() || std::in_range<std::int64_t>(json.get<std::uint64_t>());
    if (!fits) throw Refused(fmt::format("\"{}\" must be a 64-bit integer", value.path));
    result = json.get<std::int64_t>();
}

void read(const Value& value, std::uint64_t& result) {
    std::int64_t number = 0;
    read(value, number);
    if (number < 0) throw Refused(fmt::format("\"{}\" must not be negative", value.path));
    result = static_cast<std::uint64_t>(number);
}

void read(const Value& value, std::chrono::milliseconds& result) {
    constexpr std::uint64_t longest = 1'000'000'000'000;  // about thirty years: far from the end of the clock's range
    std::uint64_t count = 0;
    read(value, count);
    result = std::chrono::milliseconds{std::min(count, longest)};
}

void read(const Value& value, std::string& result) {
    if (!value.json.is_string()) value.refuse("a text");
    result = value.json.get<std::string>();
}

void read(const Value& value, Date& result) {
    std::string text;
    read(value, text);
    const auto date = dateFromIso(text);
    if (!date) throw Refused(fmt::format("\"{}\" must be a date such as 2024-03-05T14:07:09.250Z", value.path));
    result = *date;
}

void read(const Value& value, PaymentMethod::PaymentType& result) {
    std::string text;
    read(value, text);
    const auto type = paymentTypeNamed(text);
    if (!type) throw Refused(fmt::format("\"{}\" must be UNKNOWN, KAVIO, CREDIT_CARD, PAYPAL or PREPAID", value.path));
    result = *type;
}

// The objects are built in braces, which evaluate in order, unlike parentheses: so the first bad member is reported.

void read(const Value& value, TDSPaymentCard& result) {
    const Arguments in{value};
    result = {
        .number = in.required<std::string>("number"),
        .month = in.required<std::int64_t>("month"),
        .year = in.required<std::int64_t>("year"),
        .securityCode = in.required<std::int64_t>("securityCode"),
    };
}

void read(const Value& value, TDSCardHolder& result) {
    const Arguments in{value};
    result = {
        .name = in.required<std::string>("name"),
        .email = in.required<std::string>("email"),
        .streetNumber = in.optional<std::int64_t>("streetNumber"),
        .streetName = in.optional<std::string>("streetName"),
        .city = in.optional<std::string>("city"),
        .territory = in.optional<std::string>("territory"),
        .country = in.optional<std::string>("country"),
        .postal = in.optional<std::string>("postal"),
    };
}

void read(const Value& value, std::shared_ptr<const Card>& result) {
    const Arguments in{value};
    result = std::make_shared<const Card>(Card{
        .pan = in.required<std::string>("pan"),
        .month = in.required<std::string>("month"),
        .year = in.required<std::string>("year"),
        .cvv = in.required<std::string>("cvv"),
        .email = in.required<std::string>("email"),
    });
}

void read(const Value& value, std::shared_ptr<const DepositCard>& result) {
    const Arguments in{value};
    result = std::make_shared<const DepositCard>(DepositCard{
        in.required<std::string>("id"),
        in.required<std::string>("number"),
        in.required<PaymentMethod::PaymentType>("type"),
        in.required<std::int64_t>("balance"),
        in.required<std::string>("currency"),
        in.required<std::int64_t>("currencyDecimalDigits"),
    });
}

void read(const Value& value, std::shared_ptr<const MachineFilter>& result) {
    const Arguments in{value};
    result = std::make_shared<const MachineFilter>(MachineFilter{
        .value = in.optional<std::string>("value"),
        .latitude = in.optional<double>("latitude"),
        .longitude = in.optional<double>("longitude"),
        .country = in.optional<std::string>("country"),
        .radius = in.optional<std::int64_t>("radius"),
        .operatorId = in.optional<std::int64_t>("operatorId"),
        .hwSerial = in.optional<std::string>("hwSerial"),
        .limit = in.optional<std::int64_t>("limit"),
    });
}

void read(const Value& value, std::shared_ptr<const PaymentMethod>& result) {
    const Arguments in{value};
    result = std::make_shared<const PaymentMethod>(PaymentMethod{
        in.required<std::string>("id"),
        in.required<std::string>("number"),
        in.required<PaymentMethod::PaymentType>("type"),
    });
}

void read(const Value& value, std::shared_ptr<const RemoteVendProduct>& result) {
    const Arguments in{value};
    result = std::make_shared<const RemoteVendProduct>(RemoteVendProduct{
        .codeInMap = in.required<std::int64_t>("codeInMap"),
        .quantity = in.required<std::int64_t>("quantity"),
        .pulseLineNumber = in.required<std::int64_t>("pulseLineNumber"),
    });
}

void read(const Value& value, std::shared_ptr<const TransactionFilter>& result) {
    const Arguments in{value};
    result = std::make_shared<const TransactionFilter>(TransactionFilter{
        .machineId = in.optional<std::int64_t>("machineId"),
        .paymentMethodId = in.optional<std::string>("paymentMethodId"),
        .paymentType = in.optional<PaymentMethod::PaymentType>("paymentType"),
        .limit = in.optional<std::int64_t>("limit"),
        .transactionsBefore = in.optional<Date>("transactionsBefore"),
    });
}

void read(const Value& value, std::vector<std::shared_ptr<const RemoteVendProduct>>& result) {
    if (!value.json.is_array()) value.refuse("a list");
    for (const auto& element : value.json) {
        const Value item{element, fmt::format("{}[{}]", value.path, result.size())};
        read(item, result.emplace_back());
    }
}

}  // namespace kavio::driver
