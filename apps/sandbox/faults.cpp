#include "faults.h"

#include "parameters.h"
#include "reply.h"

#include <fmt/format.h>
#include <fnmatch.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace kavio::sandbox {
namespace {

template <class T>
void read(const nlohmann::json& object, const char* name, std::int64_t least, std::int64_t most, T& value) {
    if (!object.contains(name)) return;
    const auto given = object[name].get<std::int64_t>();
    if (given < least || given > most) throw Refusal(400, fmt::format("{} must be {} to {}", name, least, most));
    value = T(given);
}

}  // namespace

void Faults::add(const std::string& path, Fault fault) {
    const std::lock_guard lock(mMutex);
    mEntries.push_back({path, std::move(fault)});
}

void Faults::clear() {
    const std::lock_guard lock(mMutex);
    mEntries.clear();
}

std::optional<Fault> Faults::take(const std::string& method, const std::string& path) {
    const std::lock_guard lock(mMutex);
    const auto met = std::find_if(mEntries.begin(), mEntries.end(), [&](const Entry& entry) {
        return (entry.fault.method.empty() || entry.fault.method == method) &&
               fnmatch(entry.path.c_str(), path.c_str(), 0) == 0;
    });
    if (met == mEntries.end()) return std::nullopt;
    const auto fault = met->fault;
    if (fault.times > 0 && --met->fault.times == 0) mEntries.erase(met);
    return fault;
}

Fault faultFrom(const nlohmann::json& object) {
    checkParameters(object, {{Kind::text, {"path"}, {"method", "body"}},
                             {Kind::integer, {}, {"status", "delayMs", "cutAfter", "padTo", "times"}},
                             {Kind::boolean, {}, {"drop", "handled"}}});
    constexpr std::int64_t day = 86'400'000, gigabyte = 1 << 30;
    Fault fault;
    read(object, "status", 200, 599, fault.status);
    read(object, "cutAfter", 0, gigabyte, fault.cutAfter);
    read(object, "padTo", 0, gigabyte, fault.padTo);
    read(object, "delayMs", 0, day, fault.delay);
    read(object, "times", -1, gigabyte, fault.times);
    if (fault.times == 0) throw Refusal(400, "times must be a positive number, or -1 for every time");
    if (object.contains("body")) fault.body = object["body"].get<std::string>();
    fault.method = object.value("method", "");
    fault.drop = object.value("drop", false);
    fault.handled = object.value("handled", false);
    return fault;
}

}  // namespace kavio::sandbox
