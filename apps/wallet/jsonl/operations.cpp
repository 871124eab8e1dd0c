#include "operations.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>
#include <vector>

namespace kavio::wallet {

namespace {

/// How a parameter of the facade's finds its argument: by name, and required.
template <class T>
struct Parameter {
    static T in(const Arguments& arguments, std::string_view name) { return arguments.required<T>(name); }
};

template <class T>
struct Parameter<std::optional<T>> {
    static std::optional<T> in(const Arguments& arguments, std::string_view name) {
        return arguments.optional<T>(name);
    }
};

/// A filter may be left out.
template <class Filter>
struct OptionalFilter {
    using Pointer = std::shared_ptr<const Filter>;
    static Pointer in(const Arguments& arguments, std::string_view name) {
        return arguments.optional<Pointer>(name).value_or(nullptr);
    }
};
template <>
struct Parameter<std::shared_ptr<const MachineFilter>> : OptionalFilter<MachineFilter> {};
template <>
struct Parameter<std::shared_ptr<const TransactionFilter>> : OptionalFilter<TransactionFilter> {};

/// An operation of the facade: the line names the arguments, the method tells their types.
template <class... Parameters>
Operation reporting(std::string_view name, std::string_view callback, void (Kavio::*method)(Parameters...),
                    std::array<std::string_view, sizeof...(Parameters)> names) {
    return {name, callback, [method, names](Driver& driver, const Call& call) {
                auto& kavio = driver.kavio(call);
                [&]<std::size_t... index>(std::index_sequence<index...>) {
                    // In braces, so that the first bad argument is the one named.
                    std::tuple<Parameters...> arguments{Parameter<Parameters>::in(call.arguments, names[index])...};
                    std::apply([&](auto&... argument) { (kavio.*method)(std::move(argument)...); }, arguments);
                }
                (std::index_sequence_for<Parameters...>{});
            }};
}

Operation returning(std::string_view name, std::optional<std::string> (Kavio::*method)() const) {
    return {name, {}, [method](Driver& driver, const Call& call) {
                const auto text = (driver.kavio(call).*method)();
                driver.answer(call, text ? Json(*text) : Json());
            }};
}

Operation silent(std::string_view name, void (Driver::*run)(const Call&)) { return {name, {}, run}; }

const std::vector<Operation>& operations() {
    static const std::vector<Operation> table{
        silent("create", &Driver::create),
        silent("release", &Driver::release),
        silent("destroy", &Driver::destroy),
        silent("dropDelegate", &Driver::dropDelegate),
        silent("sleep", &Driver::sleep),
        silent("storeGet", &Driver::storeGet),
        silent("storeSet", &Driver::storeSet),
        returning("getVersion", &Kavio::getVersion),
        returning("getBuild", &Kavio::getBuild),
        reporting("isLoggedIn", "onCheckIsUserLogin", &Kavio::isLoggedIn, {}),
        reporting("login", "onLogin", &Kavio::login, {"countryCode", "phoneNumber"}),
        reporting("verify", "onVerify", &Kavio::verify, {"otp", "country", "countryCode", "phoneNumber"}),
        reporting("logout", "onLogout", &Kavio::logout, {}),
        reporting("getPaymentMethods", "onGetPaymentMethods", &Kavio::getPaymentMethods, {}),
        reporting("getMachines", "onGetMachines", &Kavio::getMachines, {"filter"}),
        reporting("getMachineProducts", "onGetMachineProducts", &Kavio::getMachineProducts, {"machineId"}),
        reporting("getTransactions", "onGetTransactions", &Kavio::getTransactions, {"filter"}),
        reporting("getOrder", "onGetOrder", &Kavio::getOrder, {"orderId"}),
        reporting("placeOrder", "onPlaceOrder", &Kavio::placeOrder, {"kavioId", "paymentMethod", "amount", "products"}),
        reporting("addCreditCard", "onAddCreditCard", &Kavio::addCreditCard, {"card"}),
        reporting("addCreditCardTDSecure", "onAddCreditCard", &Kavio::addCreditCardTDSecure,
                  {"paymentCard", "cardHolder"}),
        reporting("removeCard", "onRemoveCard", &Kavio::removeCard, {"id"}),
        reporting("deposit", "onDeposit", &Kavio::deposit, {"depositCard", "amount", "chargedCardId"}),
    };
    return table;
}

}  // namespace

const Operation& operationNamed(const std::string& name) {
    const auto found = std::ranges::find(operations(), name, &Operation::name);
    if (found == operations().end()) throw Refused(fmt::format("\"{}\" is no operation", name));
    return *found;
}

}  // namespace kavio::wallet
