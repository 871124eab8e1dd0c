#include "network/send_with_fresh_time.h"

#include "models/replies.h"
#include "network/requests.h"
#include "time/reliable_clock.h"

namespace kavio {

void withFreshTime(const APIRequest& request, const std::shared_ptr<KavioNetworkService>& transport,
                   std::function<void()> next) {
    if (request.requestName == timeRequestName || isTimeSampleFresh()) return next();
    transport->send(timeRequest(), [next = std::move(next)](RawResult raw) {
        // On the network's thread: the store syncs its writes to disk, which the main thread need not wait for.
        const auto result = decoded<ServerTimeResponse>(std::move(raw));
        storeTimeSample(result ? result.payload() : std::nullopt);
        next();
    });
}

}  // namespace kavio
