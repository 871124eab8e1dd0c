#include "platform/linux/url_session_engine.h"

#include "platform/background_step.h"
#include "platform/linux/url_session_failure.h"
#include "platform/linux/url_session_kept_connection.h"
#include "platform/linux/url_session_libraries.h"
#include "platform/linux/url_session_wakeup.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <csignal>
#include <deque>
#include <mutex>
#include <new>
#include <system_error>
#include <utility>
#include <vector>

namespace kavio {
namespace {

using Steady = std::chrono::steady_clock;

// Of a session, with those that are kept. Further requests wait in libcurl, in their order, until one ends.
constexpr long mostConnectionsToHost = 6;
constexpr long mostConnections = 12;
constexpr std::chrono::seconds firstPause{1};
constexpr std::chrono::seconds longestPause{5};

struct Task {
    Task(UrlRequest request, const UrlConduct& conduct, UrlEngine::Completion whenDone)
        : exchange(std::move(request), conduct), completion(std::move(whenDone)) {}

    UrlExchange exchange;
    UrlEngine::Completion completion;
    CurlEasy easy;
    std::chrono::seconds pause = firstPause;
    Steady::time_point resumesAt;
};

using TaskPointer = std::unique_ptr<Task>;

CurlMulti makeMulti() {
    CurlMulti made(curl_multi_init());
    curl_multi_setopt(made.get(), CURLMOPT_MAX_HOST_CONNECTIONS, mostConnectionsToHost);
    curl_multi_setopt(made.get(), CURLMOPT_MAX_TOTAL_CONNECTIONS, mostConnections);
    return made;
}

void blockSigpipe() {
    // CURLOPT_NOSIGNAL keeps libcurl's SIGALRM out of our threads, but then a closed peer can raise SIGPIPE. It is
    // blocked only in the network thread: the process's signal handlers belong to the host application.
    sigset_t signals{};
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

bool isNetworkMissing(const UrlOutcome& outcome) {
    const auto* error = std::get_if<UrlError>(&outcome);
    return error != nullptr && error->code == UrlError::notConnectedToInternet;
}

/// Whether lack of memory may be why no connection was made.
bool isDistrust(CURLcode code) {
    return code == CURLE_PEER_FAILED_VERIFICATION || code == CURLE_SSL_CONNECT_ERROR || code == CURLE_OUT_OF_MEMORY;
}

/// The first one for which `isWanted` is true, or null.
template <class Tasks, class Predicate>
TaskPointer takeFirst(Tasks& tasks, Predicate isWanted) {
    const auto found = std::find_if(tasks.begin(), tasks.end(), isWanted);
    if (found == tasks.end()) return nullptr;
    TaskPointer task = std::move(*found);
    tasks.erase(found);
    return task;
}

bool any(const TaskPointer&) { return true; }

/// The end of every task. Where there is no memory for what is said here, the process ends.
void complete(TaskPointer task, UrlOutcome outcome) noexcept {
    const auto& departure = task->exchange.departure();
    if (!departure->end()) outcome = urlError(UrlError::cancelled);
    if (auto* error = std::get_if<UrlError>(&outcome)) error->mayHaveBeenSent = departure->hasLeft();
    const auto completion = std::move(task->completion);
    task.reset();
    completion(std::move(outcome));
}

/// Takes a step with the task, which ends here when memory runs out in it.
template <class Step>
void endedByLackOfMemory(TaskPointer& task, Step step) {
    try {
        step(task);
    } catch (const std::bad_alloc&) {
        if (task) complete(std::move(task), urlError(UrlError::cannotConnectToHost));
    }
}

}  // namespace

/// What the network thread does. It outlives the engine if a completion destroys the engine. A completion may do
/// anything to the loop, so none is called while a task is between two places.
class UrlEngine::Loop {
public:
    explicit Loop(UrlConduct conduct);

    // On any thread.
    TaskPointer makeTask(UrlRequest request, Completion completion) const;
    void submit(TaskPointer task);
    void completeGivenUp();
    void stop();

    // On the network thread.
    void run();
    void close();

private:
    void takeTurn(bool idleHasEnded);
    bool waitForMore();
    void cancelAll();
    bool isStopping();
    TaskPointer takeSubmitted();
    TaskPointer takeDue();
    TaskPointer takeOverdue();
    TaskPointer takeGivenUp();
    TaskPointer takeRunning(CURL* easy);
    TaskPointer takeAny();

    void begin(TaskPointer task);
    void warm(bool isEnded);
    void start(TaskPointer task);
    void attempt(TaskPointer& task);
    void endFinished();
    void end(CURL* easy, CURLcode code);
    void conclude(TaskPointer& task, CURLcode code);
    void wait(TaskPointer& task);
    int millisecondsToNextDeadline() const;

    void renewAfterDistrust();
    CurlEasy makeHandle() const;

    const UrlConduct mConduct;
    CurlShare mTlsSessions;  // what makes a new connection to a known host cheap
    CurlMulti mMulti;
    Wakeup mWakeup;
    std::atomic<bool> mSomeAreGivenUp = false;
    std::mutex mMutex;
    bool mStopping = false;              // guarded by mMutex
    std::deque<TaskPointer> mSubmitted;  // guarded by mMutex

    KeptConnection mKept;
    bool mHaveDistrusted = false;
    std::vector<TaskPointer> mRunning;
    Steady::time_point mNextOverdue = Steady::time_point::max();  // no task that runs is overdue before
    std::vector<TaskPointer> mWaiting;
};

/// A task in the engine, for whoever submitted it.
class UrlEngine::SubmittedTask : public DownloadTask {
public:
    SubmittedTask(std::weak_ptr<Loop> loop, std::shared_ptr<Departure> departure)
        : mLoop(std::move(loop)), mDeparture(std::move(departure)) {}

    bool cancel() override {
        if (!mDeparture->giveUp()) return false;
        if (const auto loop = mLoop.lock()) loop->completeGivenUp();
        return true;
    }

private:
    const std::weak_ptr<Loop> mLoop;
    const std::shared_ptr<Departure> mDeparture;
};

UrlEngine::UrlEngine(UrlConduct conduct) try
    : mLoop(std::make_shared<Loop>(std::move(conduct))), mThread([loop = mLoop] { loop->run(); }) {
} catch (const std::system_error&) {  // there is no memory for a thread
    throw std::bad_alloc();
}

UrlEngine::~UrlEngine() {
    mLoop->stop();
    if (mThread.get_id() == std::this_thread::get_id()) {
        mLoop->close();
        mThread.detach();
    } else if (BackgroundStep::haveEnded()) {
        mThread.detach();
    } else {
        mThread.join();
    }
}

void UrlEngine::submit(UrlRequest request, Completion completion) {
    const auto loop = mLoop;  // the completion may come at once and destroy the engine
    loop->submit(loop->makeTask(std::move(request), std::move(completion)));
}

std::shared_ptr<DownloadTask> UrlEngine::submitTask(UrlRequest request, Completion completion) {
    const auto loop = mLoop;
    auto task = loop->makeTask(std::move(request), std::move(completion));
    auto submitted = std::make_shared<SubmittedTask>(loop, task->exchange.departure());
    loop->submit(std::move(task));
    return submitted;
}

UrlEngine::Loop::Loop(UrlConduct conduct) : mConduct(std::move(conduct)) {
    initializeLibraries();
    mTlsSessions.reset(curl_share_init());
    mMulti = makeMulti();
    if (!mTlsSessions || !mMulti) throw std::bad_alloc();
    curl_share_setopt(mTlsSessions.get(), CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
}

TaskPointer UrlEngine::Loop::makeTask(UrlRequest request, Completion completion) const {
    return std::make_unique<Task>(std::move(request), mConduct, std::move(completion));
}

void UrlEngine::Loop::submit(TaskPointer task) {
    {
        const std::lock_guard lock(mMutex);
        mSubmitted.push_back(std::move(task));
    }
    mWakeup.signal();
}

void UrlEngine::Loop::completeGivenUp() {
    mSomeAreGivenUp = true;
    mWakeup.signal();
}

void UrlEngine::Loop::stop() {
    {
        const std::lock_guard lock(mMutex);
        mStopping = true;
    }
    mWakeup.signal();
}

void UrlEngine::Loop::run() {
    blockSigpipe();
    prepareOpenssl();
    bool idleHasEnded = false;
    while (!isStopping()) {
        takeTurn(idleHasEnded);
        idleHasEnded = waitForMore();
    }
    const BackgroundStep step;
    close();
}

void UrlEngine::Loop::takeTurn(bool idleHasEnded) {
    const BackgroundStep step;
    if (mRunning.empty() && !mHaveDistrusted) warm(idleHasEnded);
    // Before the next request, as there may have been no memory for it after the last one.
    if (mHaveDistrusted && mRunning.empty()) renewAfterDistrust();
    while (auto task = takeSubmitted()) begin(std::move(task));
    while (auto task = takeDue()) start(std::move(task));
    while (auto task = takeOverdue()) complete(std::move(task), urlError(UrlError::timedOut));
    while (mSomeAreGivenUp.exchange(false)) {
        while (auto task = takeGivenUp()) complete(std::move(task), urlError(UrlError::cancelled));
    }
    int running = 0;
    curl_multi_perform(mMulti.get(), &running);
    endFinished();
}

/// Whether the connection that is kept for the next request has ended meanwhile.
bool UrlEngine::Loop::waitForMore() {
    const auto idle = mRunning.empty() ? mKept.socket() : CURL_SOCKET_BAD;
    const int milliseconds = millisecondsToNextDeadline();
    if (!mRunning.empty() || milliseconds != INT_MAX) return mWakeup.wait(mMulti.get(), idle, milliseconds);
    mWakeup.wait();
    return false;
}

void UrlEngine::Loop::begin(TaskPointer task) {
    endedByLackOfMemory(task, [this](TaskPointer& submitted) {
        if (mConduct.warmsConnection) mKept.expectAnother(submitted->exchange.request());
        start(std::move(submitted));
    });
}

/// What becomes of it is of no interest: the next query makes its own connection, if need be.
void UrlEngine::Loop::warm(bool isEnded) try {
    if (auto request = mKept.renewal(isEnded)) start(makeTask(*std::move(request), [](const UrlOutcome&) {}));
} catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch): likewise
}

/// Leaves the thread nothing to do in libcurl and OpenSSL. After a completion has destroyed the engine, the process may
/// end at any time: it does not wait for a thread that cannot be joined, and OpenSSL's exit handler may run. What `run`
/// still asks of libcurl on its way out is refused, as there is no handle.
void UrlEngine::Loop::close() {
    cancelAll();
    if (!mMulti) return;  // done already
    mMulti.reset();       // here, where SIGPIPE is blocked: it says goodbye on open connections
    mTlsSessions.reset();
    OPENSSL_thread_stop();
}

void UrlEngine::Loop::start(TaskPointer task) {
    if (task->exchange.departure()->isGivenUp()) return complete(std::move(task), urlError(UrlError::cancelled));
    task->easy = makeHandle();
    if (!task->easy) return complete(std::move(task), urlError(UrlError::cannotConnectToHost));
    endedByLackOfMemory(task, [this](TaskPointer& started) { attempt(started); });
}

void UrlEngine::Loop::attempt(TaskPointer& task) {
    CURL* const easy = task->easy.get();
    mKept.use();
    const CURLcode code = task->exchange.prepare(easy);
    mNextOverdue = std::min(mNextOverdue, task->exchange.connectsBy().value_or(mNextOverdue));
    mRunning.push_back(std::move(task));
    if (code != CURLE_OK) return end(easy, code);
    if (curl_multi_add_handle(mMulti.get(), easy) != CURLM_OK) end(easy, CURLE_FAILED_INIT);
}

void UrlEngine::Loop::endFinished() {
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(mMulti.get(), &left)) {
        if (message->msg != CURLMSG_DONE) continue;
        mKept.use();
        if (mConduct.warmsConnection && message->data.result == CURLE_OK) mKept.release(message->easy_handle);
        end(message->easy_handle, message->data.result);
    }
}

void UrlEngine::Loop::end(CURL* easy, CURLcode code) {
    auto running = takeRunning(easy);
    endedByLackOfMemory(running, [&](TaskPointer& task) { conclude(task, code); });
}

void UrlEngine::Loop::conclude(TaskPointer& task, CURLcode code) {
    CURL* const easy = task->easy.get();
    UrlExchange& exchange = task->exchange;
    if (code == CURLE_OK && exchange.followRedirect(easy)) return start(std::move(task));
    if (exchange.needsNewConnection(code)) return start(std::move(task));
    mHaveDistrusted |= isDistrust(code);
    auto outcome = exchange.finish(easy, code);
    if (mConduct.background && isNetworkMissing(outcome) && !exchange.departure()->hasLeft()) return wait(task);
    complete(std::move(task), std::move(outcome));
}

void UrlEngine::Loop::wait(TaskPointer& task) {
    task->exchange.willWait();
    task->resumesAt = Steady::now() + task->pause;
    task->pause = std::min(2 * task->pause, longestPause);
    mWaiting.push_back(std::move(task));
}

void UrlEngine::Loop::cancelAll() {
    while (auto task = takeAny()) complete(std::move(task), urlError(UrlError::cancelled));
}

bool UrlEngine::Loop::isStopping() {
    const std::lock_guard lock(mMutex);
    return mStopping;
}

TaskPointer UrlEngine::Loop::takeSubmitted() {
    const std::lock_guard lock(mMutex);
    return takeFirst(mSubmitted, any);
}

TaskPointer UrlEngine::Loop::takeDue() {
    return takeFirst(mWaiting, [now = Steady::now()](const auto& task) { return task->resumesAt <= now; });
}

/// libcurl has no time-out for a request that waits until there may be another connection.
TaskPointer UrlEngine::Loop::takeOverdue() {
    const auto now = Steady::now();
    if (now < mNextOverdue) return nullptr;
    mNextOverdue = Steady::time_point::max();
    CURL* overdue = nullptr;
    for (const auto& task : mRunning) {
        const auto end = task->exchange.connectsBy();
        if (end && *end <= now) overdue = task->easy.get();
        if (end) mNextOverdue = std::min(mNextOverdue, *end);
    }
    return overdue == nullptr ? nullptr : takeRunning(overdue);
}

/// Anything still in `mSubmitted` is not started.
TaskPointer UrlEngine::Loop::takeGivenUp() {
    const auto isGivenUp = [](const TaskPointer& task) { return task->exchange.departure()->isGivenUp(); };
    if (auto waiting = takeFirst(mWaiting, isGivenUp)) return waiting;
    const auto running = std::find_if(mRunning.begin(), mRunning.end(), isGivenUp);
    return running == mRunning.end() ? nullptr : takeRunning((*running)->easy.get());
}

TaskPointer UrlEngine::Loop::takeRunning(CURL* easy) {
    curl_multi_remove_handle(mMulti.get(), easy);
    return takeFirst(mRunning, [easy](const auto& task) { return task->easy.get() == easy; });
}

TaskPointer UrlEngine::Loop::takeAny() {
    if (!mRunning.empty()) return takeRunning(mRunning.front()->easy.get());
    if (!mWaiting.empty()) return takeFirst(mWaiting, any);
    return takeSubmitted();
}

int UrlEngine::Loop::millisecondsToNextDeadline() const {
    auto next = mRunning.empty() ? mKept.oldAt() : mNextOverdue;
    for (const auto& task : mWaiting) next = std::min(next, task->resumesAt);
    if (next == Steady::time_point::max()) return INT_MAX;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Steady::now());
    return static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(left.count(), 0, INT_MAX));
}

/// Where memory ran out while OpenSSL looked at an authority's certificate, it takes that for a bad one from then on,
/// and libcurl keeps it for as long as the handle.
void UrlEngine::Loop::renewAfterDistrust() {
    auto renewed = mMulti ? makeMulti() : nullptr;  // none where a completion has destroyed the engine
    if (!renewed) return;
    mKept.use();
    mMulti = std::move(renewed);
    mHaveDistrusted = false;
}

CurlEasy UrlEngine::Loop::makeHandle() const {
    CurlEasy made(curl_easy_init());
    if (made) curl_easy_setopt(made.get(), CURLOPT_SHARE, mTlsSessions.get());
    return made;
}

}  // namespace kavio
