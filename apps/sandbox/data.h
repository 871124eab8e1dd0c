#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kavio::sandbox {

struct Currency {
    std::string_view code;
    int decimals;
    double perEuro;  // prices of the sample products are in euros
    std::int64_t smallestUnits(double major) const;
};

struct Country {
    std::string_view code;
    std::string_view phonePrefix;
    const Currency& currency;
};

struct City {
    std::string_view name;
    std::string_view zip;
    const Country& country;
    double latitude;
    double longitude;
};

struct Campaign {
    int id;
    std::string_view title;
    std::string_view description;
    int totalPunches;
    std::string_view background;
    std::string_view text;
};

struct Operator {
    std::int64_t id;
    std::string_view name;
    const Campaign* campaign;
};

struct Machine {
    std::int64_t id = 0;
    std::int64_t kavioId = 0;  // passes the Damm check; `id` and `qrNumber` fail it
    std::int64_t qrNumber = 0;
    std::string serial;
    int type = 0;
    std::string name;
    const City* city = nullptr;
    const Operator* owner = nullptr;
    double latitude = 0;
    double longitude = 0;
    /// The status in which its orders end: "completed" except for the machines of the test laboratory.
    std::string ending = "completed";
};

struct Product {
    int code = 0;  // "codeInMap"
    std::string_view name;
    std::string_view group;
    double price = 0;  // in the machine's currency
};

const std::vector<Machine>& machines();
const Machine* machineByKavioId(std::int64_t kavioId);
std::vector<Product> productsOf(const Machine& machine);

/// The country of a calling code; Germany for a code that is not in the sample data.
const Country& countryOf(std::string_view phonePrefix);

bool passesDamm(std::int64_t number);

}  // namespace kavio::sandbox
