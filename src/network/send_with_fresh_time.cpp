#include "network/send_with_fresh_time.h"

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

RawResult givenUp() {
    return RawResult::failed(connectionFailure({UrlError::cancelled, "cancelled", std::nullopt, false}));
}

void withFreshTime(const APIRequest& request, const std::shared_ptr<KavioNetworkService>& transport,
                   std::function<void()> next) {
    if (request.requestName == timeRequestName || isTimeSampleFresh()) return next();
    transport->send(timeRequest(), [next = std::move(next)](RawResult raw) {
        // On the network thread: the store syncs its writes to disk, and the main thread should not wait for that.
        const auto result = decoded<ServerTimeResponse>(std::move(raw));
        storeTimeSample(result ? result.payload() : std::nullopt);
        next();
    });
}

}  // namespace kavio
