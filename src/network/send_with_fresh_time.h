#pragma once

#include "network/kavio_network_service.h"
#include "network/payload.h"

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace kavio {

/// A request on its way in the background, for whoever made it. Letting go of this object does not affect the request.
class Sending {
public:
    /// Gives the request up, unless a byte of it may have left. True: nothing of it has left or ever will, and its
    /// completion gets a failure. False: it may have left and goes on.
    bool cancel();

    /// Calls `send`, unless the request has been given up; false in that case.
    bool start(const std::function<std::shared_ptr<DownloadTask>()>& send);

private:
    std::mutex mMutex;  // guards all below; never held while anything is called
    bool mHasStarted = false;
    bool mIsGivenUp = false;
    std::shared_ptr<DownloadTask> mTask;
};

/// Calls `next` once the time sample is good for `request`, or once an attempt to renew it has failed: then the
/// device's clock stands in.
void withFreshTime(const APIRequest& request, const std::shared_ptr<KavioNetworkService>& transport,
                   std::function<void()> next);

/// The failure of a request that was given up before it left.
RawResult givenUp();

/// Called once the time is known, before the request can leave. If it fails, the request is not sent and ends with that
/// failure.
using BeforeSending = std::function<std::optional<APIFailure>()>;

/// How every request to the service is sent: it asks for the server's time first when the sample is missing or stale.
/// `completion` runs on the main thread; the time request's own outcome never reaches it.
template <class T>
void sendWithFreshTime(APIRequest request, Completion<T> completion, Recorder<T> record = nullptr,
                       BeforeSending prepare = nullptr) {
    const auto transport = KavioNetworkService::shared();
    const auto kept = std::make_shared<APIRequest>(std::move(request));
    withFreshTime(*kept, transport,
                  [transport, kept, prepare = std::move(prepare),
                   completion = decodePayload<T>(std::move(completion), std::move(record))] {
                      if (auto failure = prepare ? prepare() : std::nullopt)
                          return completion(RawResult::failed(*std::move(failure)));
                      transport->send(std::move(*kept), completion);
                  });
}

/// The same in the background: waits for connectivity, and is sent at most once.
template <class T>
std::shared_ptr<Sending> sendInBackgroundWithFreshTime(APIRequest request, Completion<T> completion, Recorder<T> record,
                                                       BeforeSending prepare) {
    const auto transport = KavioNetworkService::shared();
    const auto kept = std::make_shared<APIRequest>(std::move(request));
    auto sending = std::make_shared<Sending>();
    withFreshTime(*kept, transport,
                  [transport, kept, sending, prepare = std::move(prepare),
                   completion = decodePayload<T>(std::move(completion), std::move(record))] {
                      if (auto failure = prepare()) return completion(RawResult::failed(*std::move(failure)));
                      const auto send = [&] { return transport->sendInBackground(std::move(*kept), completion); };
                      if (!sending->start(send)) completion(givenUp());
                  });
    return sending;
}

}  // namespace kavio
