#include "support/fakes/fake_url_session.h"

#include "support/temporary_folder.h"

#include <fstream>

namespace kavio::test {

void FakeBackgroundUrlSession::onEventsDelivered(std::function<void()> handler) {
    const std::lock_guard lock(mMutex);
    mEventsDelivered = std::move(handler);
}

bool FakeBackgroundUrlSession::answer(int status, std::string_view body) {
    const TemporaryFolder folder;
    const auto file = folder.path() / "reply";
    std::ofstream(file, std::ios::binary) << body;
    return complete(DownloadReply{status, file});
}

bool FakeBackgroundUrlSession::answerWithUnreadableFile(int status) {
    const TemporaryFolder folder;
    return complete(DownloadReply{status, folder.path() / "missing"});
}

bool FakeBackgroundUrlSession::complete(Outcome outcome) {
    if (!mTasks.complete(std::move(outcome))) return false;
    std::unique_lock lock(mMutex);
    const auto handler = mEventsDelivered;
    lock.unlock();
    if (mTasks.open() == 0 && handler) std::thread(handler).join();
    return true;
}

}  // namespace kavio::test
