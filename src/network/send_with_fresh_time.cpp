#include "network/send_with_fresh_time.h"

#include "models/json/json_value.h"
#include "models/replies.h"
#include "network/requests.h"
#include "network/response_classification.h"
#include "time/reliable_clock.h"

namespace kavio {

bool Sending::cancel() {
    std::shared_ptr<DownloadTask> task;
    {
        const std::lock_guard lock(mMutex);
        mIsGivenUp = true;
        if (!mHasStarted) return true;
        task = mTask;
    }
    return task && task->cancel();  // without a task, it is just being handed over, and `start` cancels it
}

bool Sending::isGivenUp() {
    const std::lock_guard lock(mMutex);
    return mIsGivenUp;
}

bool Sending::start(const std::function<std::shared_ptr<DownloadTask>()>& send) {
    {
        const std::lock_guard lock(mMutex);
        if (mIsGivenUp) return false;
        mHasStarted = true;
    }
    const auto task = send();
    {
        const std::lock_guard lock(mMutex);
        mTask = task;
        if (!mIsGivenUp) return true;
    }
    if (task) task->cancel();
    return true;
}

namespace {

std::optional<APIFailure> givenUp() {
    return connectionFailure({UrlError::cancelled, "cancelled", std::nullopt, false});
}

/// Once the time sample is good for the request, or an attempt to renew it has failed, calls `prepare`, then `send`. If
/// `prepare` fails, the completion gets its failure instead.
void withFreshTime(APIRequest request, RawCompletion completion, BeforeSending prepare,
                   std::function<void(KavioNetworkService&, APIRequest, RawCompletion)> send) {
    const auto transport = KavioNetworkService::shared();
    auto proceed = [transport, completion = std::move(completion), prepare = std::move(prepare),
                    send = std::move(send)](APIRequest ready) mutable {
        if (auto failure = prepare ? prepare() : std::nullopt)
            return completion(RawResult::failed(*std::move(failure)));
        send(*transport, std::move(ready), std::move(completion));
    };
    if (request.requestName == timeRequestName || isTimeSampleFresh(request.stored.sample))
        return proceed(std::move(request));
    const auto waiting = std::make_shared<APIRequest>(std::move(request));
    transport->send(timeRequest(), [proceed = std::move(proceed), waiting](RawResult raw) mutable {
        // On the network's thread: the store syncs its writes to disk, and the main thread need not wait for that.
        const auto result = decoded<ServerTimeResponse>(std::move(raw));
        storeTimeSample(result ? result.payload() : std::nullopt);
        waiting->stored = storedState();
        proceed(std::move(*waiting));
    });
}

}  // namespace

void sendRawWithFreshTime(APIRequest request, RawCompletion completion, BeforeSending prepare) {
    withFreshTime(std::move(request), std::move(completion), std::move(prepare),
                  [](KavioNetworkService& transport, APIRequest ready, RawCompletion completed) {
                      transport.send(std::move(ready), std::move(completed));
                  });
}

std::shared_ptr<Sending> sendRawInBackgroundWithFreshTime(APIRequest request, RawCompletion completion,
                                                          BeforeSending prepare) {
    auto sending = std::make_shared<Sending>();
    withFreshTime(
        std::move(request), std::move(completion),
        [sending, prepare = std::move(prepare)] { return sending->isGivenUp() ? givenUp() : prepare(); },
        [sending](KavioNetworkService& transport, APIRequest ready, RawCompletion completed) {
            const auto send = [&] { return transport.sendInBackground(std::move(ready), completed); };
            if (!sending->start(send)) completed(RawResult::failed(*givenUp()));
        });
    return sending;
}

}  // namespace kavio
