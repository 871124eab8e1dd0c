#include "support/world.h"

#include "storage/kavio_user_defaults.h"
#include "util/shared_instance.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kavio::test {

World::World() : mPlatform(mDevice.platform()) {
    forgetSharedInstances();
    const auto now = mDevice.clock->now();
    store().set(keys::serverTime, now);
    store().set(keys::savedCpuTime, now);
    store().set(keys::serverExpiredTime, now + std::chrono::hours(24));
    makeFacade();
}

World::~World() {
    mKavio.reset();
    // What is still open ends here: a time request's end sends the request that waits for it, on whatever platform is
    // current by then.
    while (mDevice.backgroundUrlSession->fail(UrlError::cancelled) || mDevice.urlSession->fail(UrlError::cancelled))
        run();
    forgetSharedInstances();
}

KeyValueStore& World::store() { return *KavioUserDefaults::shared()->defualt; }

void World::destroyDelegate() {
    mReports = mDelegate->reports;
    mDelegate.reset();
}

// Nothing is sent for an order identifier that is no number: the answer tells whether the gate is open.
bool World::isBusy() {
    kavio().getOrder("no number");
    const bool busy = mDelegate->reports.back().type == ResultType::BUSY;
    mDelegate->reports.pop_back();
    return busy;
}

void World::makeFacade(Kavio::EnvironmentType environment) {
    mKavio = std::make_unique<Kavio>(mDelegate, "key", environment);
}

void World::answer(const Answer& answer) {
    const auto answered = [&](auto& session) {
        return answer.error ? session.fail(*answer.error) : session.answer(answer.status, answer.body);
    };
    EXPECT_TRUE(answered(*mDevice.backgroundUrlSession) || answered(*mDevice.urlSession)) << "no request is open";
    run();
}

std::vector<std::string> World::paths() const {
    std::vector<std::string> paths;
    for (const auto& request : sent())
        paths.push_back(request.url.substr(std::min(request.url.find("/v1") + 3, request.url.size())));
    return paths;
}

std::string header(const UrlRequest& request, std::string_view name) {
    for (const auto& [key, value] : request.headers) {
        if (key == name) return value;
    }
    return "none";
}

}  // namespace kavio::test
