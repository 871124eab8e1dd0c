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

    bool isGivenUp();
    /// Calls `send`, unless the request has been given up; false in that case.
    bool start(const std::function<std::shared_ptr<DownloadTask>()>& send);

private:
    std::mutex mMutex;  // guards all below; never held while anything is called
    bool mHasStarted = false;
    bool mIsGivenUp = false;
    std::shared_ptr<DownloadTask> mTask;
};

/// Called once the time is known, before the request can leave. If it fails, the request is not sent and ends with that
/// failure.
using BeforeSending = std::function<std::optional<APIFailure>()>;

/// How every request to the service is sent: it asks for the server's time first when the sample is missing or stale;
/// if that fails, the device's clock stands in.
void sendRawWithFreshTime(APIRequest request, RawCompletion completion, BeforeSending prepare);
/// The same in the background: waits for connectivity, and is sent at most once.
std::shared_ptr<Sending> sendRawInBackgroundWithFreshTime(APIRequest request, RawCompletion completion,
                                                          BeforeSending prepare);

/// `completion` runs on the main thread; the time request's own outcome never reaches it.
template <class T>
void sendWithFreshTime(APIRequest request, Completion<T> completion, Recorder<T> record = nullptr,
                       BeforeSending prepare = nullptr) {
    sendRawWithFreshTime(std::move(request), decodePayload<T>(std::move(completion), std::move(record)),
                         std::move(prepare));
}

template <class T>
std::shared_ptr<Sending> sendInBackgroundWithFreshTime(APIRequest request, Completion<T> completion, Recorder<T> record,
                                                       BeforeSending prepare) {
    return sendRawInBackgroundWithFreshTime(
        std::move(request), decodePayload<T>(std::move(completion), std::move(record)), std::move(prepare));
}

}  // namespace kavio
