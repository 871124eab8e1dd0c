#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <string>

namespace kavio::c {

/// The lines that wait to be received, and a descriptor that shows whether there are any. For any thread.
class Outbox {
public:
    enum class Taken { LINE, NOTHING, CLOSED };

    /// Throws `std::system_error` if there is no descriptor left.
    Outbox();
    ~Outbox();
    Outbox(const Outbox&) = delete;
    Outbox& operator=(const Outbox&) = delete;

    void put(std::string line);
    /// Waits for a line, without a limit for as long as it takes, and hands it to `use`. It stays if that throws.
    template <class Use>
    Taken take(std::optional<std::chrono::milliseconds> limit, const Use& use) {
        std::unique_lock lock(mMutex);
        const auto isReady = [this] { return mIsClosed || !mLines.empty(); };
        if (!limit) mChanged.wait(lock, isReady);
        if (limit && !mChanged.wait_for(lock, *limit, isReady)) return Taken::NOTHING;
        if (mIsClosed) return Taken::CLOSED;
        use(mLines.front());
        mLines.pop_front();
        if (mLines.empty()) lower();
        return Taken::LINE;
    }
    /// Drops all lines, now and from now on.
    void close();
    bool isClosed() const;
    int descriptor() const { return mDescriptor; }

private:
    // The descriptor can be read from between these two.
    void raise() const;
    void lower() const;

    const int mDescriptor;
    mutable std::mutex mMutex;
    std::condition_variable mChanged;
    std::deque<std::string> mLines;
    bool mIsClosed = false;
};

}  // namespace kavio::c
