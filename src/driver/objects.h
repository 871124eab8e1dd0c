#pragma once

#include "driver/dates.h"
#include "driver/json.h"

#include <kavio/kavio.h>

// The public objects as JSON: every member under its own name, absent ones as null, and the debug text under "debug".

namespace kavio {

void to_json(driver::Json& json, const Campaign& campaign);
void to_json(driver::Json& json, const Image& image);
void to_json(driver::Json& json, const KavioResult& result);
void to_json(driver::Json& json, const LookAndFeel& lookAndFeel);
void to_json(driver::Json& json, const Machine& machine);
void to_json(driver::Json& json, const Order& order);
void to_json(driver::Json& json, const PaymentMethod& method);
void to_json(driver::Json& json, const Product& product);
void to_json(driver::Json& json, const UnsettledPayment& payment);

template <class Enumeration>
requires std::is_enum_v<Enumeration>
void to_json(driver::Json& json, Enumeration value) { json = name(value); }

}  // namespace kavio

namespace nlohmann {

template <class T>
struct adl_serializer<std::optional<T>> {
    static void to_json(kavio::driver::Json& json, const std::optional<T>& value) {
        json = value ? kavio::driver::Json(*value) : kavio::driver::Json();
    }
};

template <class T>
struct adl_serializer<std::shared_ptr<const T>> {
    static void to_json(kavio::driver::Json& json, const std::shared_ptr<const T>& object) {
        json = object ? kavio::driver::Json(*object) : kavio::driver::Json();
    }
};

template <>
struct adl_serializer<kavio::Date> {
    static void to_json(kavio::driver::Json& json, kavio::Date date) { json = kavio::driver::isoText(date); }
};

}  // namespace nlohmann
