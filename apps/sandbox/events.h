#pragma once

#include "backend.h"
#include "bell.h"
#include "journal.h"
#include "secrets.h"

#include <httplib.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace kavio::sandbox {

/// What one reader of the events has been told so far. Nothing is kept for a reader: whoever reads slowly is told later
/// how things are by then.
class Reader {
public:
    Reader(Backend& backend, const Journal& journal, Secrets secrets);
    /// What has changed since the last time, as server-sent events; at first, how everything is.
    std::string news();

private:
    void tell(std::string_view event, const nlohmann::json& data);
    /// Tells about something of which there is only one, if it is not as it was.
    void tellIfNew(std::string_view event, const nlohmann::json& data);
    void tellOrders(const World& world);

    Backend& mBackend;
    const Journal& mJournal;
    const Secrets mSecrets;
    bool mIsStarted = false;
    std::uint64_t mResets = 0;
    std::uint64_t mChange = 0;  // the journal's last one
    std::map<std::string_view, std::string> mTold;
    std::map<std::int64_t, std::string> mStatuses;  // by order
    std::string mNews;
};

/// The streams of events.
class Events {
public:
    Events(Backend& backend, const Journal& journal, Bell& bell) : mBackend(backend), mJournal(journal), mBell(bell) {}
    /// Answers with a stream that ends when the reader leaves, reads too slowly, or the bell is closed.
    void stream(Secrets secrets, httplib::Response& response);

private:
    Backend& mBackend;
    const Journal& mJournal;
    Bell& mBell;
    std::atomic<int> mReaders = 0;
};

}  // namespace kavio::sandbox
