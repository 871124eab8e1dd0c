#pragma once

#include "network/environments.h"
#include "network/network_service_protocol.h"

#include <kavio/platform/device.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kavio {

struct NetworkConfiguration {
    std::string baseURL{urlString(ApiType::ApiProduction)};
};

/// A transport without a network, for tests: every request is answered from here, asynchronously. If `errorCode` is 0,
/// the answer is the body `null`, a success without a payload; any other code is the failure of that HTTP status, which
/// `errorHandler` may take over.
class KavioMockNetworkService final : public NetworkServiceProtocol {
public:
    std::shared_ptr<NetworkServiceErrorHandler> errorHandler;
    std::int64_t errorCode = 0;
    std::optional<APIRequest> task;  // the last one
    NetworkConfiguration networkConfiguration;

    void send(APIRequest request, RawCompletion completion) override;
    /// Null: what is answered at once cannot be given up.
    std::shared_ptr<DownloadTask> sendInBackground(APIRequest request, RawCompletion completion) override;
};

/// An object that is archived and unarchived by the names of its own properties.
class Serializable {
public:
    using Archive = std::map<std::string, std::uint64_t, std::less<>>;

    virtual ~Serializable() = default;

    std::optional<std::string> tag;

    Archive archive();
    /// Properties that `archive` lacks are zero afterwards, except the tag, which becomes none.
    void unarchive(const Archive& archive);

protected:
    struct Property {
        std::string_view name;
        std::uint64_t* value;
    };
    /// In the order of their declaration.
    virtual std::vector<Property> properties() = 0;
};

/// A reading of the clocks as it is archived. The library keeps its time sample in `KavioUserDefaults` instead.
class ReliableClockState final : public Serializable {
public:
    std::uint64_t real = 0;
    std::uint64_t elapsed = 0;
    std::uint64_t local = 0;

private:
    std::vector<Property> properties() override { return {{"real", &real}, {"elapsed", &elapsed}, {"local", &local}}; }
};

/// Two lower-case hexadecimal digits per byte.
inline std::string hexDigest(const Digest::Sha1& digest) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const auto byte : digest) text += {digits[byte >> 4U], digits[byte & 0xFU]};
    return text;
}

// Names without state or operations. What is stored goes through `KavioUserDefaults`; the clock is the functions of
// reliable_clock.h; whether there is a network is learnt by sending; nothing is thrown across the public boundary.
class StorageTool {};
class ReliableClock {};
class SystemClock {};
class Reachability {};
class Exceptions {};
class GoodiesService {};
class GoodiesRepository {};
struct PrepaidGetPhysicalCreationResponse {};

}  // namespace kavio
