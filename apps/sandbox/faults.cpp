#include "faults.h"

#include "parameters.h"

#include <fnmatch.h>

#include <algorithm>

namespace kavio::sandbox {

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
    checkParameters(object, {{"path", Kind::text, true},
                             {"method", Kind::text},
                             {"status", Kind::integer},
                             {"body", Kind::text},
                             {"delayMs", Kind::integer},
                             {"cutAfter", Kind::integer},
                             {"padTo", Kind::integer},
                             {"drop", Kind::boolean},
                             {"handled", Kind::boolean},
                             {"times", Kind::integer}});
    Fault fault;
    if (object.contains("status")) fault.status = object["status"].get<int>();
    if (object.contains("body")) fault.body = object["body"].get<std::string>();
    if (object.contains("cutAfter")) fault.cutAfter = object["cutAfter"].get<std::size_t>();
    fault.method = object.value("method", "");
    fault.delay = std::chrono::milliseconds{object.value("delayMs", 0)};
    fault.padTo = object.value("padTo", std::size_t{0});
    fault.drop = object.value("drop", false);
    fault.handled = object.value("handled", false);
    fault.times = object.value("times", 1);
    return fault;
}

}  // namespace kavio::sandbox
