#include "platform/linux/thread_queue.h"

#include <pthread.h>

#include <condition_variable>
#include <list>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace kavio {
namespace {

/// What the queue and its threads share. It outlives the queue if a block destroys the queue that runs it.
struct Shared {
    std::mutex mutex;
    std::condition_variable changed;
    std::list<std::function<void()>> pending;  // takes no memory while it is empty, nor to be destroyed
    std::size_t idle = 0;
    bool stopping = false;
};

/// A block is the application's own code. Nobody could catch what it throws, which must not end the program.
void runGuarded(const std::function<void()>& block) {
    try {
        block();
    } catch (...) {  // NOLINT(bugprone-empty-catch)
    }
}

void serve(const std::shared_ptr<Shared>& shared) {
    std::unique_lock lock(shared->mutex);
    while (true) {
        ++shared->idle;
        shared->changed.wait(lock, [&] { return shared->stopping || !shared->pending.empty(); });
        --shared->idle;
        if (shared->stopping) return;

        auto block = std::move(shared->pending.front());
        shared->pending.pop_front();
        lock.unlock();
        runGuarded(block);
        block = nullptr;  // what it holds is destroyed before the lock is taken again
        lock.lock();
    }
}

class ThreadQueue final : public WorkQueue {
public:
    ThreadQueue(std::string name, std::size_t threads) : mName(std::move(name)), mLimit(threads) {}

    ~ThreadQueue() override {
        std::list<std::function<void()>> dropped;
        {
            const std::lock_guard lock(mShared->mutex);
            mShared->stopping = true;
            dropped.swap(mShared->pending);
        }
        mShared->changed.notify_all();
        dropped.clear();
        for (auto& thread : mThreads) {
            if (thread.get_id() == std::this_thread::get_id()) {
                thread.detach();  // a block has dropped the last reference: it cannot wait for itself
            } else {
                thread.join();
            }
        }
    }

    void async(std::function<void()> work) override {
        const std::lock_guard lock(mShared->mutex);
        if (mShared->stopping) return;  // posted by something that a dropped block held
        // Before the work is accepted: starting a thread may throw, and then the work must not run.
        if (mShared->pending.size() >= mShared->idle && mThreads.size() < mLimit) addThread();
        mShared->pending.push_back(std::move(work));
        mShared->changed.notify_one();
    }

private:
    void addThread() {
        try {
            auto& thread = mThreads.emplace_back(serve, mShared);
            ::pthread_setname_np(thread.native_handle(), mName.c_str());
        } catch (const std::system_error&) {  // there is no memory for one
            if (mThreads.empty()) throw std::bad_alloc();
        }
    }

    const std::string mName;
    const std::size_t mLimit;
    const std::shared_ptr<Shared> mShared = std::make_shared<Shared>();
    std::vector<std::thread> mThreads;
};

}  // namespace

std::shared_ptr<WorkQueue> makeThreadQueue(std::string name, std::size_t threads) {
    return std::make_shared<ThreadQueue>(std::move(name), threads);
}

}  // namespace kavio
