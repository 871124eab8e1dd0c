#include "data.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace kavio::sandbox {
namespace {

constexpr Currency euro{"EUR", 2, 1.0}, shekel{"ILS", 2, 4.0}, pound{"GBP", 2, 0.8}, yen{"JPY", 0, 160.0},
    dinar{"KWD", 3, 0.35}, dollar{"USD", 2, 1.2};

constexpr std::array countries{
    Country{"DE", "49", euro}, Country{"FR", "33", euro},   Country{"IL", "972", shekel}, Country{"GB", "44", pound},
    Country{"JP", "81", yen},  Country{"KW", "965", dinar}, Country{"US", "1", dollar},
};
constexpr const Country &de = countries[0], &fr = countries[1], &il = countries[2], &gb = countries[3],
                        &jp = countries[4], &kw = countries[5], &us = countries[6];

constexpr City berlin{"Berlin", "10178", de, 52.5219, 13.4132}, paris{"Paris", "75004", fr, 48.8566, 2.3522},
    telAviv{"Tel Aviv", "6688312", il, 32.0733, 34.7818}, london{"London", "WC2N 5DU", gb, 51.5081, -0.1281},
    tokyo{"Tokyo", "100-0005", jp, 35.6812, 139.7671}, kuwait{"Kuwait City", "13001", kw, 29.3759, 47.9774},
    newYork{"New York", "10036", us, 40.7580, -73.9855};

constexpr Campaign coffeeClub{501,      "Every tenth coffee is on us", "Ten punches fill the card", 10, "#4B2E20",
                              "#FFF4E6"};
constexpr Campaign coolSix{502, "Six cold ones, the seventh free", "Collect at every cooler", 6, "#0B6FA4", "#FFFFFF"};
constexpr Campaign cleanFive{503, "Five washes, one polish", "Bring the car again", 5, "#12372A", "#FBFADA"};

constexpr Operator northVend{9001, "North Vend", &coolSix}, cityBean{9002, "City Bean", &coffeeClub},
    sparkle{9003, "Sparkle Wash", &cleanFive}, voltway{9004, "Voltway", nullptr},
    cornerBox{9005, "Corner Box", nullptr}, laboratory{9099, "Kavio Test Laboratory", nullptr};

/// Where a machine stands: metres north and east of its city's centre.
struct Row {
    const City& city;
    const Operator& owner;
    int type;
    std::string_view name;
    int north, east;
};

constexpr std::array rows{
    Row{berlin, cityBean, 0, "Espresso corner, Alexanderplatz", 40, -120},
    Row{berlin, northVend, 1, "Cooler, platform 2", 90, 60},
    Row{berlin, northVend, 2, "Snack wall", 260, 310},
    Row{berlin, sparkle, 16, "Wash bay 1", 2900, -1400},
    Row{berlin, voltway, 12, "Charger A", -640, 820},
    Row{berlin, cornerBox, 30, "Parcel lockers", 410, -530},
    Row{berlin, cornerBox, 17, "Laundry room", 1800, 2100},
    Row{paris, cityBean, 0, "Café du quai", 120, 40},
    Row{paris, northVend, 10, "Combo, hall B", -80, 210},
    Row{paris, cornerBox, 27, "Fleurs 24 h", 350, -90},
    Row{paris, sparkle, 28, "Aspirateur", 1500, 1900},
    Row{telAviv, northVend, 1, "Cooler, Rothschild 12", -150, 80},
    Row{telAviv, northVend, 3, "Ice cream, Gordon beach", 700, -1200},
    Row{telAviv, cityBean, 0, "Coffee, Sarona", 220, 430},
    Row{telAviv, voltway, 12, "Charger, Arlozorov", 1300, 900},
    Row{telAviv, sparkle, 33, "Dog wash", 950, -300},
    Row{london, cityBean, 0, "Coffee, Charing Cross", -60, 30},
    Row{london, northVend, 5, "Sandwiches, track 9", 310, -240},
    Row{london, cornerBox, 24, "Photo booth", 15, 480},
    Row{london, cornerBox, 18, "Cables and chargers", -420, -700},
    Row{tokyo, northVend, 1, "Cold drinks, Marunouchi", 70, -40},
    Row{tokyo, cityBean, 0, "Hot drinks, Yaesu", -30, 190},
    Row{tokyo, northVend, 34, "Fresh juice", 640, 250},
    Row{tokyo, cornerBox, 37, "Game corner", 5200, -2600},
    Row{tokyo, cornerBox, 22, "Massage chair", 480, -60},
    Row{kuwait, northVend, 1, "Cooler, Souk", 100, 110},
    Row{kuwait, cityBean, 0, "Coffee, Marina", 3900, 5200},
    Row{kuwait, sparkle, 16, "Wash bay", -2100, 800},
    Row{newYork, northVend, 2, "Snacks, 7th Avenue", 50, -70},
    Row{newYork, cityBean, 0, "Coffee, Bryant Park", -380, 260},
    Row{newYork, cornerBox, 43, "Micro market", 620, 140},
    Row{newYork, cornerBox, 23, "Ice", -900, 1100},
};

/// The laboratory has one machine for each of these, in whose status its orders end.
constexpr std::array endings{"timedOut", "cancelled",       "failed",      "failedRefund", "refused", "expired",
                             "deleted",  "freeTransaction", "proccessing", "teleported",   "created"};

/// The products of one type of machine.
struct Shelf {
    struct Item {
        std::string_view name;
        double price;
    };
    int type;
    std::string_view group;
    std::array<Item, 4> items;  // those without a name are empty places
};

constexpr Shelf shelves[]{
    {0, "Hot drinks", {{{"Espresso", 1.5}, {"Cappuccino", 2.2}, {"Tea", 1.2}, {"Hot chocolate", 2.0}}}},
    {1, "Cold drinks", {{{"Water 0.5 l", 1.0}, {"Lemonade", 1.8}, {"Iced tea", 1.8}, {"Orange juice", 2.4}}}},
    {2, "Snacks", {{{"Salted nuts", 1.6}, {"Chocolate bar", 1.3}, {"Crisps", 1.5}, {"Müsli bar", 1.4}}}},
    {3, "Ice cream", {{{"Vanilla cone", 2.5}, {"Mango sorbet", 2.8}}}},
    {5, "Sandwiches", {{{"Cheese and tomato", 3.9}, {"Falafel wrap", 4.5}}}},
    {12, "Energy", {{{"10 kWh", 4.9}, {"25 kWh", 11.9}}}},
    {16, "Wash", {{{"Foam wash", 5.0}, {"Foam and wax", 8.5}}}},
    {17, "Laundry", {{{"Washing, 7 kg", 4.0}, {"Drying, 30 min", 2.0}}}},
    {27, "Flowers", {{{"Tulips", 9.0}, {"Roses", 15.0}}}},
};

bool offers(int machineType, int shelfType) {
    constexpr int combo = 10, market = 43;
    if (machineType == combo || machineType == market) return shelfType >= 1 && shelfType <= 5;
    return machineType == shelfType;
}

std::int64_t withDammDigit(std::int64_t number) {
    for (std::int64_t digit = 0;; ++digit)
        if (passesDamm(number * 10 + digit)) return number * 10 + digit;
}

/// The first number, starting at `number`, that cannot be mistaken for one with a check digit.
std::int64_t withoutDammDigit(std::int64_t number) {
    while (passesDamm(number)) ++number;
    return number;
}

Machine makeMachine(const Row& row, int index) {
    constexpr double metresPerDegree = 111'320;
    Machine machine;
    machine.id = withoutDammDigit(2001 + 10 * index);
    machine.kavioId = withDammDigit(4'210'010 + 7 * index);
    machine.qrNumber = withoutDammDigit(index % 2 == 0 ? 310'020 + 11 * index : 73'100'020 + 11 * index);
    machine.serial = fmt::format("04343349{:08}", 21'000'012 + 13 * index);
    machine.type = row.type;
    machine.name = row.name;
    machine.city = &row.city;
    machine.owner = &row.owner;
    machine.latitude = row.city.latitude + row.north / metresPerDegree;
    machine.longitude =
        row.city.longitude + row.east / (metresPerDegree * std::cos(row.city.latitude * std::numbers::pi / 180));
    return machine;
}

std::vector<Machine> makeMachines() {
    std::vector<Machine> all;
    all.reserve(rows.size() + endings.size());
    for (const auto& row : rows) all.push_back(makeMachine(row, int(all.size())));
    for (const auto* ending : endings) {
        const auto name = fmt::format("Ends as {}", ending);
        const int number = int(all.size() - rows.size());
        all.push_back(makeMachine({berlin, laboratory, 1, name, 12'000, 9000 + 20 * number}, int(all.size())));
        all.back().ending = ending;
    }
    return all;
}

}  // namespace

std::int64_t Currency::smallestUnits(double major) const { return std::llround(major * std::pow(10, decimals)); }

const std::vector<Machine>& machines() {
    static const auto all = makeMachines();
    return all;
}

const Machine* machineByKavioId(std::int64_t kavioId) {
    const auto found = std::ranges::find(machines(), kavioId, &Machine::kavioId);
    return found == machines().end() ? nullptr : &*found;
}

std::vector<Product> productsOf(const Machine& machine) {
    const auto& currency = machine.city->country.currency;
    const auto local = [&](double euros) {
        constexpr int coinsPerUnit = 20;  // prices are whole five-cent coins, or whole yen
        return currency.decimals == 0 ? std::round(euros * currency.perEuro / 10) * 10
                                      : std::round(euros * currency.perEuro * coinsPerUnit) / coinsPerUnit;
    };
    std::vector<Product> products;
    for (const auto& [type, group, items] : shelves)
        for (const auto& [name, price] : items)
            if (offers(machine.type, type) && !name.empty())
                products.push_back({int(11 + products.size()), name, group, local(price)});
    if (products.empty()) products.push_back({11, "One use", "Service", local(3.0)});
    return products;
}

const Country& countryOf(std::string_view phonePrefix) {
    const auto* const found = std::ranges::find(countries, phonePrefix, &Country::phonePrefix);
    return found == countries.end() ? de : *found;
}

bool passesDamm(std::int64_t number) {
    static constexpr std::array<std::string_view, 10> table{"0317598642", "7092154863", "4206871359", "1750983426",
                                                            "6123045978", "3674209581", "5869720134", "8945362017",
                                                            "9438617205", "2581436790"};
    std::size_t interim = 0;
    for (const char digit : std::to_string(number))
        interim = std::size_t(table[interim][std::size_t(digit - '0')] - '0');
    return interim == 0;
}

}  // namespace kavio::sandbox
