#include "names.h"

#include "command_line/translation.h"
#include "wording/text.h"

#include <map>

namespace kavio::wallet {

namespace {

struct StatusWords {
    const char* name;
    const char* sentence;
};

StatusWords wordsOf(Order::Status status) {
    switch (status) {
        case Order::Status::COMPLETED:
            return {later("completed"), later("Order {} is complete.")};
        case Order::Status::CREATED:
            return {later("placed"), later("Order {} was placed.")};
        case Order::Status::AUTHORIZED:
            return {later("approved"), later("Order {}: the payment was approved, and the machine is at work.")};
        case Order::Status::CANCELED:
            return {later("canceled"), later("Order {} was canceled.")};
        case Order::Status::FREE_TRANSACTION:
            return {later("free of charge"), later("Order {} is free of charge.")};
        case Order::Status::TIMEOUT:
            return {later("no answer"), later("Order {}: the machine did not answer in time.")};
        case Order::Status::INCOMPLETE:
            return {later("not completed"), later("Order {} was not completed.")};
        case Order::Status::UNKNOWN:
            break;
    }
    return {later("unknown"), later("Order {}: the service gives a status that this program does not know.")};
}

using enum Machine::MachineType;

const std::map<Machine::MachineType, const char*> machineTypes{
    {HOT_DRINKS, later("hot drinks")},
    {COLD_DRINKS, later("cold drinks")},
    {SNACKS, later("snacks")},
    {ICE_CREAM, later("ice cream")},
    {MILK_PRODUCTS, later("milk products")},
    {SANDWICHES, later("sandwiches")},
    {FOOD, later("food")},
    {AMUSEMENT, later("amusement")},
    {ALCOHOL, later("alcohol")},
    {CIGARETTES, later("cigarettes")},
    {COMBO, later("drinks and snacks")},
    {AIR, later("air for tyres")},
    {ELECTRICITY, later("electricity")},
    {OTHER, later("other")},
    {RECYCLING, later("recycling")},
    {WATER_FILLING_STATION, later("water")},
    {CAR_WASH_MACHINE, later("car wash")},
    {LAUNDRY_MACHINE, later("laundry")},
    {CELLULAR_ACCESSORIES, later("phone accessories")},
    {PHARMACY, later("pharmacy")},
    {TV_AND_INTERNET_SERVICES, later("TV and internet")},
    {PPE, later("protective equipment")},
    {MASSAGE_CHAIRS, later("massage chair")},
    {ICE, later("ice")},
    {PHOTO_BOOTH, later("photo booth")},
    {PICTURES, later("pictures")},
    {PHOTOCOPIES, later("photocopies")},
    {FLOWERS, later("flowers")},
    {CAR_VACUUM_CLEANER, later("car vacuum cleaner")},
    {WEIGHT, later("scales")},
    {LOCKERS, later("lockers")},
    {ACCESS_CONTROL, later("entrance")},
    {GOLF_BALL_DISPENSER, later("golf balls")},
    {DOG_WASH, later("dog wash")},
    {FRESH_JUICE, later("fresh juice")},
    {GAMING, later("games")},
    {MICRO_MARKETS, later("micro market")},
};

using Names = std::map<std::string, const char*>;

std::string named(const std::string& code, const Names& names) {
    const auto found = names.find(code);
    return found == names.end() ? code : gettext(found->second);
}

}  // namespace

std::string statusName(Order::Status status) { return gettext(wordsOf(status).name); }

std::string statusSentence(const Order& order) {
    return fmt::format(fmt::runtime(gettext(wordsOf(order.status).sentence)), printable(order.id));
}

std::string orderTypeName(const std::string& code) {
    static const Names names{{"vending", later("purchase")},
                             {"prePaidDeposit", later("prepaid top-up")},
                             {"balanceDeposit", later("wallet top-up")}};
    return named(code, names);
}

std::string paymentSourceName(const std::string& code) {
    static const Names names{{"balance", later("wallet")},       {"ecommerce", later("credit card")},
                             {"prepaid", later("prepaid card")}, {"paypal", "PayPal"},
                             {"cashback", later("cashback")},    {"unknown", later("unknown")}};
    return named(code, names);
}

std::string machineTypeName(Machine::MachineType type) {
    const auto found = machineTypes.find(type);
    return found == machineTypes.end() ? std::string{} : gettext(found->second);
}

std::string machineStateName(const Machine& machine) {
    if (!machine.machineStatus) return tr("out of service");
    return machine.isWalletAllowed ? tr("ready") : tr("not payable");
}

std::string titleOf(const Machine& machine) {
    const auto title = printable(machine.name.value_or(""));
    return title.empty() ? tr("machine {}", machine.kavioId == 0 ? machine.id : machine.kavioId) : title;
}

std::string titleOf(const PaymentMethod& method) {
    const auto number = printable(method.number);
    if (const auto* const card = dynamic_cast<const CreditCard*>(&method))
        return (card->brand.empty() ? tr("Card") : printable(card->brand)) + " " + number;
    if (method.type == PaymentMethod::PaymentType::PREPAID) return tr("Prepaid card {}", number);
    return method.type == PaymentMethod::PaymentType::KAVIO ? tr("Wallet") : number;
}

}  // namespace kavio::wallet
