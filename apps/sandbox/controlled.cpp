#include "controlled.h"

#include "backend.h"
#include "journal.h"
#include "report.h"

#include <utility>

namespace kavio::sandbox {

Controlled::Controlled(Backend& backend, Journal& journal, std::function<void()> resume)
    : mBackend(backend), mJournal(journal), mResume(std::move(resume)) {}

std::uint64_t Controlled::fault(const std::string& path, Fault fault) {
    return mBackend.faults().add(path, std::move(fault));
}
bool Controlled::removeFault(std::uint64_t id) { return mBackend.faults().remove(id); }
std::vector<SetFault> Controlled::faults() const { return mBackend.faults().all(); }
void Controlled::clearFaults() {
    mBackend.faults().clear();
    mResume();
}

void Controlled::setClockOffset(std::chrono::seconds offset) {
    mBackend.use([&](World& world) { world.clockOffset = offset; });
}
void Controlled::stopClock(bool isStopped) {
    mBackend.use([&](World& world) {
        const auto clock = world.options.clock();
        isStopped ? world.paceKeeper.stop(clock) : world.paceKeeper.resume(clock);
    });
}
void Controlled::stepClock(std::chrono::milliseconds step) {
    mBackend.use([&](World& world) { world.paceKeeper.ahead += step; });
}
nlohmann::json Controlled::clock() const {
    return mBackend.use([](World& world) {
        auto report = clockReport(world);
        report["now"] = millisecondsText(world.now());
        return report;
    });
}
void Controlled::setCode(const std::string& number, const std::string& code) {
    mBackend.use([&](World& world) { world.codes[number] = code; });
}
void Controlled::expireTokens() {
    mBackend.use([](World& world) { world.sessions.clear(); });
}
std::vector<Request> Controlled::requests() const {
    std::vector<Request> requests;
    for (auto& exchange : exchanges()) requests.push_back(std::move(exchange.request));
    return requests;
}
std::vector<Exchange> Controlled::exchanges() const { return mJournal.changedSince(0); }
void Controlled::clearRequests() { mJournal.clear(); }
void Controlled::reset() {
    mBackend.reset();
    mJournal.clear();
    mResume();
}
nlohmann::json Controlled::state() const {
    return mBackend.use([](World& world) {
        world.settleOrders();
        return stateReport(world);
    });
}

}  // namespace kavio::sandbox
