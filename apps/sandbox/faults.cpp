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

std::uint64_t Faults::add(const std::string& path, Fault fault) {
    const std::lock_guard lock(mMutex);
    mInForce.push_back({++mLastId, path, std::move(fault), 0, mRequests});
    return mLastId;
}

void Faults::clear() {
    const std::lock_guard lock(mMutex);
    mInForce.clear();
    mSpent.clear();
}

bool Faults::remove(std::uint64_t id) {
    const std::lock_guard lock(mMutex);
    const auto isIt = [&](const SetFault& fault) { return fault.id == id; };
    return std::erase_if(mInForce, isIt) + std::erase_if(mSpent, isIt) > 0;
}

std::optional<SetFault> Faults::take(const std::string& method, const std::string& path) {
    const std::lock_guard lock(mMutex);
    ++mRequests;
    const auto met = std::find_if(mInForce.begin(), mInForce.end(), [&](const SetFault& set) {
        return (set.fault.method.empty() || set.fault.method == method) &&
               fnmatch(set.path.c_str(), path.c_str(), 0) == 0;
    });
    if (met == mInForce.end()) return std::nullopt;
    ++met->hits;
    auto taken = *met;
    if (taken.isSpent()) {
        mInForce.erase(met);
        mSpent.push_back(taken);
        mSpent.back().requests = mRequests - taken.requests;
        if (mSpent.size() > mostSpent) mSpent.pop_front();
    }
    return taken;
}

std::vector<SetFault> Faults::all() const {
    const std::lock_guard lock(mMutex);
    auto all = mInForce;
    for (auto& set : all) set.requests = mRequests - set.requests;
    all.insert(all.end(), mSpent.begin(), mSpent.end());
    std::ranges::sort(all, {}, &SetFault::id);
    return all;
}

std::size_t Faults::size() const {
    const std::lock_guard lock(mMutex);
    return mInForce.size();
}

Fault faultFrom(const nlohmann::json& object) {
    checkParameters(object, {{Kind::text, {"path"}, {"method", "body"}},
                             {Kind::integer, {}, {"status", "delayMs", "cutAfter", "padTo", "times"}},
                             {Kind::boolean, {}, {"drop", "handled"}}});
    constexpr std::int64_t day = 86'400'000, gigabyte = 1 << 30;
    constexpr std::size_t longestPath = 200;
    if (object["path"].get_ref<const std::string&>().size() > longestPath)
        throw Refusal(400, fmt::format("path must be at most {} characters", longestPath));
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
