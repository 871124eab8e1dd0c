#pragma once

#include <kavio/export.h>
#include <kavio/platform/device.h>
#include <kavio/platform/key_value_store.h>
#include <kavio/platform/queues.h>
#include <kavio/platform/ui.h>
#include <kavio/platform/url_session.h>

#include <memory>

namespace kavio {

/// Everything the library needs from a device. Only `windows` may be null.
struct KAVIO_API Platform {
    std::shared_ptr<UrlSession> urlSession;                      ///< carries out everything but purchases
    std::shared_ptr<BackgroundUrlSession> backgroundUrlSession;  ///< carries out purchases
    std::shared_ptr<KeyValueStores> keyValueStores;              ///< where the library keeps its state
    std::shared_ptr<MainQueue> mainQueue;                        ///< where reports are made
    std::shared_ptr<WorkQueue> serialQueue;                      ///< runs one piece of work at a time
    std::shared_ptr<WorkQueue> concurrentQueue;                  ///< runs work side by side
    std::shared_ptr<Bundle> mainBundle;                          ///< the application's
    std::shared_ptr<Bundle> libraryBundle;                       ///< the library's own
    ///@{
    /// The device's own.
    std::shared_ptr<Locale> locale;
    std::shared_ptr<DateFormatter> dateFormatter;
    std::shared_ptr<RegularExpression> regularExpression;
    std::shared_ptr<Characters> characters;
    std::shared_ptr<Digest> digest;
    std::shared_ptr<Base64> base64;
    std::shared_ptr<Uuid> uuid;
    std::shared_ptr<Clock> clock;
    ///@}
    /// Null on a device without windows: what needs one reports that it could not start.
    std::shared_ptr<Windows> windows;

    /// The process's platform. If none was installed, the one that the library was built for is made on first use. A
    /// library built for none (KAVIO_PLATFORM=none) then ends the program, with a message on standard error. Safe from
    /// any thread.
    static Platform& current();
    /// Replaces the platform that `current` gives. A host calls it before it uses anything else in the library; false
    /// when it is too late for that.
    static bool install(Platform platform);
};

}  // namespace kavio
