#pragma once

#include "faults.h"
#include "options.h"
#include "request.h"
#include "service.h"

#include <httplib.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kavio::sandbox {

Request recordOf(const httplib::Request& request);

/// The service without its sockets: the world behind one lock, the faults in force, and the requests so far. Safe from
/// any thread.
class Backend {
public:
    /// Whether it is to keep all requests.
    enum class Recording { on, off };

    explicit Backend(Options options, Recording recording = Recording::on)
        : mOptions(std::move(options)),
          mIsRecording(recording == Recording::on),
          mLife(std::make_unique<Life>(mOptions)) {}

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
        return work(mLife->world);
    }
    /// Makes everything as it was at the start, with the same texts to come if the options say so.
    void reset();
    /// How often that has happened.
    std::uint64_t resets() const { return mResets; }

private:
    void record(const httplib::Request& request);
    Reply answer(const httplib::Request& request);

    /// From the start or a reset to the next.
    struct Life {
        explicit Life(const Options& options) : world(options), service(world) {}
        World world;
        Service service;
    };

    const Options mOptions;
    const bool mIsRecording;
    mutable std::mutex mMutex;  // guards the world and the requests
    std::unique_ptr<Life> mLife;
    std::vector<Request> mRequests;
    Faults mFaults;
    std::atomic<std::uint64_t> mResets = 0;
};

}  // namespace kavio::sandbox
