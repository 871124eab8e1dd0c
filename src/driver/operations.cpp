#include "driver/operations.h"

#include "driver/names.h"
#include "driver/objects.h"
#include "driver/stored_value.h"

#include <kavio/user_defaults.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>
#include <vector>

namespace kavio::driver {

namespace {

/// How a parameter of the facade finds its argument: by name, and required.
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

/// A filter can be left out.
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

/// An operation of the facade: `names` are its arguments in a line, and the method gives their types.
template <class... Parameters>
Operation reporting(std::string_view name, std::vector<std::string_view> callbacks,
                    void (Kavio::*method)(Parameters...), std::array<std::string_view, sizeof...(Parameters)> names) {
    return {name, std::move(callbacks), [method, names](Facades& facades, const Call& call) {
                auto& kavio = *facades.held(call).kavio;
                [&]<std::size_t... index>(std::index_sequence<index...>) {
                    // In braces, so that the first bad argument is reported.
                    std::tuple<Parameters...> arguments{Parameter<Parameters>::in(call.arguments, names[index])...};
                    std::apply([&](auto&... argument) { (kavio.*method)(std::move(argument)...); }, arguments);
                }
                (std::index_sequence_for<Parameters...>{});
            }};
}

/// A question that is answered at once.
template <class Answer>
Operation returning(std::string_view name, Answer (Kavio::*method)() const) {
    return {name, {}, [method](Facades& facades, const Call& call) {
                facades.answer(call, (*facades.held(call).kavio.*method)());
            }};
}

void create(Facades& facades, const Call& call) {
    auto apiKey = call.arguments.required<std::string>("apiKey");
    const auto given = call.arguments.member("environment");
    std::optional<Kavio::EnvironmentType> environment;
    if (given.json.is_string()) {
        environment = environmentNamed(given.json.get<std::string>());
        if (!environment) throw Refused("\"environment\" must be TEST, TESTS or PROD, or a raw value");
    } else {
        environment = Kavio::environmentType(call.arguments.required<std::int64_t>("environment"));
    }
    if (environment) facades.create(call.facade, std::move(apiKey), *environment);
    facades.answer(call, environment.has_value());
}

void release(Facades& facades, const Call& call) {
    const auto byOther = call.arguments.optional<bool>("other").value_or(false);
    auto& kavio = *facades.held(call).kavio;
    kavio.release(byOther ? static_cast<const void*>(&facades) : &kavio);
}

void destroy(Facades& facades, const Call& call) { facades.held(call).kavio.reset(); }

void dropDelegate(Facades& facades, const Call& call) { facades.held(call).delegate.reset(); }

void doNothing(Facades&, const Call&) {}

std::chrono::milliseconds sleep(const Arguments& arguments) {
    return arguments.required<std::chrono::milliseconds>("milliseconds");
}

void forgetPayment(Facades& facades, const Call& call) {
    const auto id = call.arguments.required<std::string>("id");
    facades.answer(call, facades.held(call).kavio->forgetPayment(id));
}

void storeGet(Facades& facades, const Call& call) {
    const auto key = call.arguments.required<std::string>("key");
    const auto value = toJson(userDefaults()->value(key));
    facades.write({{"event", "return"}, {"op", call.op}, {"key", key}, {"value", value}});
}

void storeSet(Facades&, const Call& call) {
    const auto key = call.arguments.required<std::string>("key");
    auto value = storedValueIn(call.arguments);
    const auto store = userDefaults();
    const bool isWritten = value ? store->set(key, *std::move(value)) : store->remove(key);
    if (!isWritten) throw Refused("the store could not be written");
}

const std::vector<Operation>& operations() {
    // Never destroyed, like the thread of the C library.
    static const auto& table = *new std::vector<Operation>{
        {"create", {}, create},
        {"release", {}, release},
        {"destroy", {}, destroy},
        {"dropDelegate", {}, dropDelegate},
        {"sleep", {}, doNothing, sleep},
        {"storeGet", {}, storeGet},
        {"storeSet", {}, storeSet},
        {"forgetPayment", {}, forgetPayment},
        returning("isBusy", &Kavio::isBusy),
        returning("unsettledPayments", &Kavio::unsettledPayments),
        returning("getVersion", &Kavio::getVersion),
        returning("getBuild", &Kavio::getBuild),
        reporting("isLoggedIn", {"onCheckIsUserLogin"}, &Kavio::isLoggedIn, {}),
        reporting("login", {"onLogin"}, &Kavio::login, {"countryCode", "phoneNumber"}),
        reporting("verify", {"onVerify"}, &Kavio::verify, {"otp", "country", "countryCode", "phoneNumber"}),
        reporting("logout", {"onLogout"}, &Kavio::logout, {}),
        reporting("getPaymentMethods", {"onGetPaymentMethods"}, &Kavio::getPaymentMethods, {}),
        reporting("getMachines", {"onGetMachines"}, &Kavio::getMachines, {"filter"}),
        reporting("getMachineProducts", {"onGetMachineProducts"}, &Kavio::getMachineProducts, {"machineId"}),
        reporting("getTransactions", {"onGetTransactions"}, &Kavio::getTransactions, {"filter"}),
        reporting("getOrder", {"onGetOrder"}, &Kavio::getOrder, {"orderId"}),
        reporting("placeOrder", {"onPlaceOrder"}, &Kavio::placeOrder,
                  {"kavioId", "paymentMethod", "amount", "products"}),
        // It reports to the callback of the payment's kind.
        reporting("settlePayment", {"onPlaceOrder", "onDeposit"}, &Kavio::settlePayment, {"id"}),
        reporting("addCreditCard", {"onAddCreditCard"}, &Kavio::addCreditCard, {"card"}),
        reporting("addCreditCardTDSecure", {"onAddCreditCard"}, &Kavio::addCreditCardTDSecure,
                  {"paymentCard", "cardHolder"}),
        reporting("removeCard", {"onRemoveCard"}, &Kavio::removeCard, {"id"}),
        reporting("deposit", {"onDeposit"}, &Kavio::deposit, {"depositCard", "amount", "chargedCardId"}),
    };
    return table;
}

}  // namespace

const Operation& operationNamed(const std::string& name) {
    const auto found = std::ranges::find(operations(), name, &Operation::name);
    if (found == operations().end()) throw Refused(fmt::format("\"{}\" is not an operation", name));
    return *found;
}

}  // namespace kavio::driver
