#include "reserved/infrastructure.h"

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

Serializable::Archive Serializable::archive() {
    Archive archive;
    for (const auto& [name, value] : properties()) archive.emplace(name, *value);
    return archive;
}

void Serializable::unarchive(const Archive& archive) {
    tag.reset();
    for (const auto& [name, value] : properties()) {
        const auto found = archive.find(name);
        *value = found == archive.end() ? 0 : found->second;
    }
}

}  // namespace kavio
