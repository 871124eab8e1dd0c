#pragma once

// What the suites of windows and of their web view share.

#include <kavio/platform/ui.h>
#include <kavio/testing/deed.h>
#include <kavio/testing/logged_scene.h>

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kavio::test {

/// One implementation, with the application's window on the screen, servers for the pages, and the person.
class WindowsDriver {
public:
    virtual ~WindowsDriver() = default;
    /// The implementation that is judged.
    virtual std::shared_ptr<Windows> windows() = 0;
    /// Lets the main thread and the pages run until `done`; false if that takes too long.
    virtual bool runUntil(const std::function<bool()>& done) = 0;
    /// The address of a page that does `deeds`, of a host that is not the loopback address by name.
    virtual std::string serve(const std::string& path, const std::vector<Deed>& deeds) = 0;
    /// The same as a document for `loadHtml`.
    virtual std::string document(const std::vector<Deed>& deeds) = 0;
    /// The address of a server that is gone.
    virtual std::string nowhere() = 0;
    /// What the top-most scene shows: "working", "page", "failed"; "nothing" when there is none.
    virtual std::string shown() = 0;
    ///@{
    /// The person presses the scene's buttons: the one that closes it, and the one of a page that has failed.
    virtual void pressClose() = 0;
    virtual void pressBack() = 0;
    ///@}
    /// Ends the process that runs the page.
    virtual void endPageProcess() = 0;
};

/// One with a real web view.
class WebViewDriver : public WindowsDriver {
public:
    /// The address of a page with this HTML.
    virtual std::string serveHtml(const std::string& path, const std::string& html) = 0;
    /// The address of a redirect to `location`.
    virtual std::string serveRedirect(const std::string& path, const std::string& location, int status = 302) = 0;
    /// Over TLS, from a server of its own, for which the authority vouches that the application gave.
    virtual std::string serveSecurely(const std::string& html) = 0;
    /// The requests to the latest server of that kind, head and body.
    virtual std::vector<std::string> secureRequests() = 0;
    /// What the bar says: "HOST, SECURITY".
    virtual std::string bar() = 0;
    /// The person presses a key: "Return", "space" or "Escape".
    virtual void pressKey(const std::string& key) = 0;
};

/// The screen that covers all others.
inline std::shared_ptr<ViewController> topMost(const Windows& windows) {
    auto found = windows.keyWindow()->rootViewController();
    while (auto above = found->presentedViewController()) found = above;
    return found;
}

/// What the suites of windows share.
template <class Driver>
class ConformanceWith : public testing::TestWithParam<std::unique_ptr<Driver> (*)()> {
protected:
    std::unique_ptr<LoggedScene> presented() const {
        auto made = std::make_unique<LoggedScene>(*driver->windows());
        topMost(*driver->windows())->present(made->scene, true);
        return made;
    }
    bool becomes(const std::string& shown) const {
        return driver->runUntil([&] { return driver->shown() == shown; });
    }

    using Kind = Deed::Kind;

    const std::unique_ptr<Driver> driver = this->GetParam()();
};

/// The address by which these pages end, with a query to be passed on unchanged.
inline const std::string pageEnd = "http://127.0.0.1/?g1=a%20b&z2=%C3%A9+";

}  // namespace kavio::test
