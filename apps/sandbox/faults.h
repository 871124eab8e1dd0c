#pragma once

#include "sandbox.h"

#include <nlohmann/json.hpp>

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace kavio::sandbox {

/// The faults in force.
class Faults {
public:
    void add(const std::string& path, Fault fault);
    void clear();
    /// The first fault that a request meets; counts it as met.
    std::optional<Fault> take(const std::string& method, const std::string& path);

private:
    struct Entry {
        std::string path;
        Fault fault;
    };
    std::mutex mMutex;
    std::vector<Entry> mEntries;
};

/// A fault as the control endpoint takes it; throws Refusal.
Fault faultFrom(const nlohmann::json& object);

}  // namespace kavio::sandbox
