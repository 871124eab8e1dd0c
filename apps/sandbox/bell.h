#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace kavio::sandbox {

/// Wakes those who wait for something to change.
class Bell {
public:
    void ring() {
        {
            const std::lock_guard lock(mMutex);
            ++mRings;
        }
        mRung.notify_all();
    }
    /// From now on nobody waits.
    void close() {
        {
            const std::lock_guard lock(mMutex);
            mIsClosed = true;
        }
        mRung.notify_all();
    }
    /// Waits for a ring after the last one heard, for a while. False once it is closed.
    bool wait(std::uint64_t& heard, std::chrono::milliseconds most) {
        std::unique_lock lock(mMutex);
        mRung.wait_for(lock, most, [&] { return mIsClosed || mRings != heard; });
        heard = mRings;
        return !mIsClosed;
    }

private:
    std::mutex mMutex;
    std::condition_variable mRung;
    std::uint64_t mRings = 0;
    bool mIsClosed = false;
};

}  // namespace kavio::sandbox
