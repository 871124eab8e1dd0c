#include "reserved/kavio_mock_network_service.h"

#include <kavio/platform/platform.h>

#include <utility>

namespace kavio {
namespace {

RawResult failure(APIError error, std::int64_t status, std::optional<std::string> message) {
    return RawResult::failed({error, status, std::move(message), std::nullopt});
}

}  // namespace

void KavioMockNetworkService::send(APIRequest request, RawCompletion completion) {
    task = std::move(request);
    Platform::current().mainQueue->post(
        [handler = errorHandler, status = errorCode, completion = std::move(completion)] {
            if (status == 0) return completion(RawResult::success("null"));
            if (!handler) return completion(failure(APIError::responseUnsuccessful, status, std::nullopt));
            handler->handle({static_cast<int>(status), {}},
                            [completion, status](APIError error, std::optional<std::string> message) {
                                completion(failure(error, status, std::move(message)));
                            });
        });
}

std::shared_ptr<DownloadTask> KavioMockNetworkService::sendInBackground(APIRequest request, RawCompletion completion) {
    send(std::move(request), std::move(completion));
    return nullptr;
}

}  // namespace kavio
