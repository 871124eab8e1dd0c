#pragma once

#include "network/kavio_network_service.h"
#include "network/payload.h"

#include <functional>
#include <memory>
#include <utility>

namespace kavio {

enum class SendPath { ordinary, background };

/// Calls `next` once the time sample is good for `request`, or once an attempt to renew it has failed: then the
/// device's clock stands in.
void withFreshTime(const APIRequest& request, const std::shared_ptr<KavioNetworkService>& transport,
                   std::function<void()> next);

/// The way of every request of the services: asks for the server's time first when the sample is missing or stale.
/// `completion` runs on the main thread; the time request's own outcome never reaches it.
template <class T>
void sendWithFreshTime(APIRequest request, Completion<T> completion, SendPath path = SendPath::ordinary) {
    const auto transport = KavioNetworkService::shared();
    const auto kept = std::make_shared<APIRequest>(std::move(request));
    withFreshTime(*kept, transport, [=, completion = decodePayload<T>(std::move(completion))] {
        if (path == SendPath::background) {
            transport->sendInBackground(std::move(*kept), completion);
        } else {
            transport->send(std::move(*kept), completion);
        }
    });
}

}  // namespace kavio
