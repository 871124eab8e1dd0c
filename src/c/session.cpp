#include "c/session.h"

#include <utility>

namespace kavio::c {

Session::Session(std::shared_ptr<MainQueue> mainQueue, std::shared_ptr<Outbox> outbox)
    : mMainQueue(std::move(mainQueue)), mOutbox(std::move(outbox)) {}

void Session::begin(const driver::Options& options) {
    mFacades = std::make_unique<driver::Facades>([this](const std::string& line) { write(line); });
    if (!options.withoutFacade) mFacades->create("main", options.apiKey, options.environment);
}

void Session::take(std::string line) {
    if (!mFacades) return;
    mLines.push_back(std::move(line));
    proceed();
}

void Session::end() {
    mLines.clear();
    mWait.reset();
    mFacades.reset();
}

void Session::write(const std::string& line) {
    mOutbox->put(line);
    // The report may be what a line waits for. It is counted after it was written.
    if (mWait) mMainQueue->post([self = shared_from_this()] { self->proceed(); });
}

void Session::proceed() {
    if (mWait && !mWait->isOver()) return;
    mWait.reset();
    while (!mLines.empty()) {
        const auto line = std::move(mLines.front());
        mLines.pop_front();
        mWait = driver::carryOut(line, *mFacades);
        if (!mWait) continue;
        mDeadline = Monotonic::now() + mWait->limit;
        return setAlarm();
    }
}

void Session::setAlarm() {
    if (!mAlarms.empty() && *mAlarms.begin() <= mDeadline) return;
    mAlarms.insert(mDeadline);
    const auto delay = std::chrono::ceil<std::chrono::milliseconds>(mDeadline - Monotonic::now());
    mMainQueue->postAfter(delay, [session = weak_from_this()] {
        if (const auto self = session.lock()) self->onAlarm();
    });
}

void Session::onAlarm() {
    mAlarms.erase(mAlarms.begin());
    if (!mWait) return;
    if (Monotonic::now() < mDeadline) return setAlarm();
    if (!mWait->isOver()) mWait->giveUp();
    mWait.reset();
    proceed();
}

}  // namespace kavio::c
