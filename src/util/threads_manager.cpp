#include <kavio/platform/platform.h>
#include <kavio/threads_manager.h>

#include <mutex>
#include <unordered_map>
#include <utility>

namespace kavio {
namespace {

/// The monitors under which blocks are running or waiting. One that nobody uses any more is forgotten, since a later
/// object may have the same address.
class Monitors {
public:
    std::recursive_mutex& enter(const void* lock) {
        const std::lock_guard guard(mMutex);
        auto& monitor = mMonitors[lock];
        ++monitor.users;
        return monitor.mutex;
    }

    void leave(const void* lock) {
        const std::lock_guard guard(mMutex);
        const auto found = mMonitors.find(lock);
        if (--found->second.users == 0) mMonitors.erase(found);
    }

private:
    struct Monitor {
        std::recursive_mutex mutex;
        int users = 0;
    };

    std::mutex mMutex;
    std::unordered_map<const void*, Monitor> mMonitors;
};

// Never destroyed: background threads may outlive the statics of the program.
Monitors& monitors() {
    static auto* const monitors = new Monitors;
    return *monitors;
}

/// One use of the monitor of a lock.
class MonitorUse {
public:
    explicit MonitorUse(const void* lock) : mLock(lock), mMutex(monitors().enter(lock)) { mMutex.lock(); }
    ~MonitorUse() {
        mMutex.unlock();
        monitors().leave(mLock);
    }
    MonitorUse(const MonitorUse&) = delete;
    MonitorUse& operator=(const MonitorUse&) = delete;

private:
    const void* const mLock;
    std::recursive_mutex& mMutex;
};

}  // namespace

bool ThreadsManager::isMainThread() { return Platform::current().mainQueue->isMainThread(); }

std::thread::id ThreadsManager::getCurrentThread() { return std::this_thread::get_id(); }

void ThreadsManager::runOnMainThread(std::function<void()> block) {
    if (isMainThread()) return block();
    Platform::current().mainQueue->post(std::move(block));
}

void ThreadsManager::startSyncTask(std::function<void()> block) {
    Platform::current().serialQueue->async(std::move(block));
}

void ThreadsManager::startAsyncTask(std::function<void()> block) {
    Platform::current().concurrentQueue->async(std::move(block));
}

void ThreadsManager::synchronized(const void* lock, const std::function<void()>& block) {
    const MonitorUse use(lock);
    block();
}

}  // namespace kavio
