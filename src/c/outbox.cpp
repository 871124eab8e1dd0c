#include "c/outbox.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace kavio::c {

Outbox::Outbox() : mDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (mDescriptor < 0) throw std::system_error(errno, std::generic_category(), "no descriptor for the session");
}

Outbox::~Outbox() { ::close(mDescriptor); }

void Outbox::put(std::string line) {
    const std::lock_guard lock(mMutex);
    if (mIsClosed) return;
    mLines.push_back(std::move(line));
    if (mLines.size() == 1) raise();
    mChanged.notify_one();
}

void Outbox::close() {
    const std::lock_guard lock(mMutex);
    mLines.clear();
    if (!std::exchange(mIsClosed, true)) raise();
    mChanged.notify_all();
}

bool Outbox::isClosed() const {
    const std::lock_guard lock(mMutex);
    return mIsClosed;
}

// Neither can fail: the count is at most 2.

void Outbox::raise() const { ::eventfd_write(mDescriptor, 1); }

void Outbox::lower() const {
    eventfd_t count = 0;
    ::eventfd_read(mDescriptor, &count);
}

}  // namespace kavio::c
