#pragma once

#include "models/replies.h"
#include "network/kavio_network_service.h"
#include "network/payload.h"

#include <functional>
#include <memory>
#include <utility>

namespace kavio {

enum class SendPath { ordinary, background };

/// Calls `next` once the time sample is good for `request`, or once an attempt to renew it has failed: then the
/// device's clock stands in.
void withFreshTime(const APIRequestProtocol& request, const std::shared_ptr<KavioNetworkService>& transport,
                   std::function<void()> next);

/// The way of every request of the services: asks for the server's time first when the sample is missing or stale.
/// `completion` runs on the main thread; the time request's own outcome never reaches it.
template <class T>
void sendWithFreshTime(APIRequestPtr request, Completion<T> completion, SendPath path = SendPath::ordinary) {
    const auto transport = KavioNetworkService::shared();
    withFreshTime(*request, transport, [=, completion = decodePayload<T>(std::move(completion))] {
        if (path == SendPath::background) {
            transport->sendInBackground(request, completion);
        } else {
            transport->send(request, completion);
        }
    });
}

}  // namespace kavio
