#pragma once

#include <kavio/platform/device.h>

#include <map>
#include <string>

namespace kavio {

/// A bundle whose contents were handed in: a Linux program has no property list to read them from.
class DictionaryBundle final : public Bundle {
public:
    using Information = std::map<std::string, Value, std::less<>>;
    using Strings = std::map<std::string, std::string, std::less<>>;

    explicit DictionaryBundle(Information information, Strings strings = {})
        : mInformation(std::move(information)), mStrings(std::move(strings)) {}

    std::optional<Value> informationValue(std::string_view key) const override {
        const auto found = mInformation.find(key);
        if (found == mInformation.end()) return std::nullopt;
        return found->second;
    }

    std::string localizedString(std::string_view key) const override {
        const auto found = mStrings.find(key);
        return found == mStrings.end() ? std::string(key) : found->second;
    }

private:
    const Information mInformation;
    const Strings mStrings;
};

}  // namespace kavio
