#include "c/engine.h"
#include "c/outbox.h"
#include "c/session.h"
#include "driver/json.h"
#include "driver/line_reader.h"

#include <kavio/kavio_c.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <future>
#include <new>

// The thread of the caller hands everything to the main thread, and shares only the outbox with it. Whoever is inside a
// function holds the outbox, so that a session can be destroyed while others wait in `kavio_receive`.
struct kavio_session {
    std::shared_ptr<kavio::c::Outbox> outbox;
    std::shared_ptr<kavio::MainQueue> mainQueue;
    std::shared_ptr<kavio::c::Session> session;
};

namespace kavio::c {

namespace {

/// A copy that `kavio_free` releases.
char* copyOf(const std::string& text) {
    auto* const copy = static_cast<char*>(std::malloc(text.size() + 1));
    if (copy == nullptr) throw std::bad_alloc();
    std::memcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

/// Does work on the main thread, and waits until it is done.
void doOnMainThread(MainQueue& mainQueue, const std::function<void()>& work) {
    const auto done = std::make_shared<std::promise<void>>();  // shared: waking us is not the last that it does
    mainQueue.post([&work, done] {
        try {
            work();
            done->set_value();
        } catch (...) {
            done->set_exception(std::current_exception());
        }
    });
    done->get_future().get();
}

std::unique_ptr<kavio_session> create(const char* options) {
    auto outbox = std::make_shared<Outbox>();
    const auto start = startWith(options);
    const auto session = std::make_shared<Session>(start.mainQueue, outbox);
    auto result = std::make_unique<kavio_session>(kavio_session{std::move(outbox), start.mainQueue, session});
    doOnMainThread(*start.mainQueue, [&] { session->begin(start.options); });
    return result;
}

int receive(const kavio_session& from, int milliseconds, char** line, std::size_t* length) {
    const auto outbox = from.outbox;
    std::optional<std::chrono::milliseconds> limit;
    if (milliseconds >= 0) limit = std::chrono::milliseconds{milliseconds};
    const auto taken = outbox->take(limit, [&](const std::string& text) {
        *line = copyOf(text);
        if (length != nullptr) *length = text.size();
    });
    switch (taken) {
        case Outbox::Taken::LINE:
            return KAVIO_OK;
        case Outbox::Taken::NOTHING:
            return KAVIO_TIMEOUT;
        case Outbox::Taken::CLOSED:
            break;
    }
    return KAVIO_CLOSED;
}

/// The function's value, or what stands for an exception.
template <class Function>
int guarded(const Function& function) {
    try {
        return function();
    } catch (...) {  // whatever else is thrown, only for want of memory
        return KAVIO_NO_MEMORY;
    }
}

}  // namespace

}  // namespace kavio::c

using namespace kavio::c;  // NOLINT(google-build-using-namespace): what follows is in no namespace

int kavio_create(const char* options, kavio_session** session, char** error) {
    if (error != nullptr) *error = nullptr;
    if (session == nullptr) return KAVIO_INVALID;
    *session = nullptr;
    if (options == nullptr) return KAVIO_INVALID;
    return guarded([&] {
        try {
            *session = create(options).release();
            return KAVIO_OK;
        } catch (const std::bad_alloc&) {
            return KAVIO_NO_MEMORY;
        } catch (const std::exception& problem) {
            if (error != nullptr)
                *error = copyOf(kavio::driver::lineOf({{"event", "error"}, {"message", problem.what()}}));
            return KAVIO_FAILED;
        }
    });
}

int kavio_send(kavio_session* session, const char* line, size_t length) {
    if (session == nullptr || line == nullptr) return KAVIO_INVALID;
    if (session->outbox->isClosed()) return KAVIO_CLOSED;
    return guarded([&] {
        // No more than shows that the line is too long.
        std::string text{line, std::min(length, kavio::driver::LineReader::maximumBytes + 1)};
        session->mainQueue->post([to = session->session, text = std::move(text)] { to->take(text); });
        return KAVIO_OK;
    });
}

int kavio_receive(kavio_session* session, int milliseconds, char** line, size_t* length) {
    if (line == nullptr) return KAVIO_INVALID;
    *line = nullptr;
    if (session == nullptr) return KAVIO_INVALID;
    return guarded([&] { return receive(*session, milliseconds, line, length); });
}

int kavio_descriptor(kavio_session* session) { return session == nullptr ? -1 : session->outbox->descriptor(); }

int kavio_close(kavio_session* session) {
    if (session == nullptr) return KAVIO_INVALID;
    session->outbox->close();
    return guarded([&] {
        doOnMainThread(*session->mainQueue, [&] { session->session->end(); });
        return KAVIO_OK;
    });
}

void kavio_destroy(kavio_session* session) {
    if (session == nullptr) return;
    kavio_close(session);
    delete session;
}

void kavio_free(char* line) { std::free(line); }

const char* kavio_version() { return KAVIO_VERSION; }
const char* kavio_build() { return KAVIO_BUILD_NUMBER; }
int kavio_abi() { return KAVIO_ABI; }
