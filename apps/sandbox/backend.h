#pragma once

#include "faults.h"
#include "options.h"
#include "request.h"
#include "service.h"

#include <httplib.h>

#include <mutex>
#include <string>
#include <vector>

namespace kavio::sandbox {

/// The service without its sockets: the world behind one lock, the faults in force, and the requests so far. Safe from
/// any thread.
class Backend {
public:
    explicit Backend(Options options) : mWorld(std::move(options)), mService(mWorld) {}

    /// Records the request and answers it, or whatever a fault makes of that. The reply says what is left to do on the
    /// wire: a delay, a slow or a cut body, no reply at all.
    Reply handle(const httplib::Request& request);
    /// The same for a page, of which no fault gets hold; 404 for anything else.
    Reply handleIssuerPage(const httplib::Request& request);

    Faults& faults() { return mFaults; }
    std::vector<Request> requests() const;
    void clearRequests();
    /// Runs `work(world)` while no request is handled.
    template <class Work>
    decltype(auto) use(Work work) {
        const std::lock_guard lock(mMutex);
        return work(mWorld);
    }

private:
    void record(const httplib::Request& request);
    Reply answer(const httplib::Request& request);

    mutable std::mutex mMutex;  // guards the world and the requests
    World mWorld;
    std::vector<Request> mRequests;
    Faults mFaults;
    Service mService;
};

}  // namespace kavio::sandbox
