#pragma once

#include "network/environments.h"
#include "network/network_service_protocol.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

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

}  // namespace kavio
