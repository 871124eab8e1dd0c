#pragma once

#include <kavio/export.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

// What the library needs from a device's user interface. Everything here is called, and calls back, on the main thread.

namespace kavio {

/// A view that runs web pages: the card issuer's, and whatever those lead to. None of them is trusted.
///
/// - A page may run scripts, submit forms, navigate and load frames. Each navigation is offered to the scene's observer
///   before it starts, even one that a frame of a secure page makes to "http://127.0.0.1", which ends the page. None is
///   held up by that.
/// - A navigation belongs to the load that brought its page. As soon as `loadHtml` or `loadUrl` is called, or the scene
///   is dismissed, even inside `onRedirect`, nothing of the page before is offered, followed or shown any more: it
///   might go to the loopback address late or again and again, and that would end the next page.
/// - Every page runs and paints as one that is seen, also while it is hidden or under way: its document is visible from
///   the first script on, and animations, timers and lazy content go on. But the person, the keyboard and screen
///   readers get at it only once it is shown.
/// - Only http, https, about, data and blob addresses are followed: no file is read, no other program is started. The
///   page that went elsewhere stays.
/// - Nothing outlives the scene: no cookie, cache entry or other data is kept, nothing is downloaded, and no script
///   runs.
/// - An invalid certificate fails the page, and nobody is asked whether to go on. Where the application has named
///   authorities of its own, pages, frames and forms reach a server that they vouch for like any other, even if the
///   first thing sent to it is a form.
/// - There is no window but the scene's: what the person opens in a new one opens in the view itself. What a script
///   opens goes no further, and is offered if it came from a click or key press by the person.
/// - There are no dialogs, whether for a script, a file or a password, and none holds the page up. No permission is
///   granted, for example for the camera, microphone or position, and no page goes full screen by itself.
/// - The bar names the page that is there, never one that is still on its way: its host in ASCII, and whether the
///   connection is secure, which it is if the page and all that it shows came over https.
/// - Nothing that acts has the focus while no page is shown: no key does anything except leave the scene.
/// - A page that crashes takes nothing with it: the scene stays, and offers to try again.
class KAVIO_API WebView {
public:
    virtual ~WebView() = default;
    /// A hidden view still runs its page; the person sees that something is under way.
    virtual void setHidden(bool hidden) = 0;
    /// Shows an HTML document that has no address: relative links lead nowhere, and it shares no data with any site.
    virtual void loadHtml(const std::string& document) = 0;
    /// Shows the page at an absolute URL, with the device's usual caching. A page fails if nothing of it has arrived
    /// within `timeout`. A failure is shown to the person and reported to nobody else.
    virtual void loadUrl(const std::string& url, std::chrono::seconds timeout) = 0;
};

/// Told what happens to a scene's view, after the platform's own handling of it.
class KAVIO_API ViewLifecycle {
public:
    virtual ~ViewLifecycle() = default;
    ///@{
    /// The view is made, or is about to be seen, is seen, is about to go, or has gone.
    virtual void onViewDidLoad() = 0;
    virtual void onViewWillAppear() = 0;
    virtual void onViewDidAppear() = 0;
    virtual void onViewWillDisappear() = 0;
    virtual void onViewDidDisappear() = 0;
    ///@}
    /// The device is short of memory.
    virtual void onDidReceiveMemoryWarning() = 0;
};

/// How the address begins by which a page says that it has ended: this very device, where nothing has to answer. From
/// then on the page is out of the person's sight, whatever else it does, until the next load. Any other navigation is
/// the page's own affair.
inline constexpr const char* loopbackUrl = "http://127.0.0.1";

/// Told what the page of a secure scene and the person in front of it do.
class KAVIO_API TDSecureSceneDelegate {
public:
    virtual ~TDSecureSceneDelegate() = default;
    /// A navigation of the page last loaded is about to start: of the page, of a frame in it or into a new window,
    /// including the first load and each redirect. Called once for each, before its request goes out. The URL is absent
    /// where the platform does not know it.
    virtual void onRedirect(const std::optional<std::string>& url) = 0;
    /// The person wants to leave, by the scene's close button or whatever else the device has for that. The scene stays
    /// until it is dismissed.
    virtual void onCloseClicked() = 0;
};

/// One screen. A window shows a stack of them, each presented by the one below.
class KAVIO_API ViewController {
public:
    virtual ~ViewController() = default;
    /// Null when this screen is the top-most.
    virtual std::shared_ptr<ViewController> presentedViewController() const = 0;
    /// Shows `scene`, of the same platform, full screen and modally above this screen. The first time, the scene has
    /// told its `lifecycleDelegate` that its view is loaded by the time this returns. Does nothing when the scene is
    /// already shown.
    virtual void present(const std::shared_ptr<ViewController>& scene, bool animated) = 0;
    /// Takes the screen away if it is shown; it is never shown again. `onViewWillDisappear` has been called by the
    /// time this returns, and nothing but `onViewDidDisappear` is called afterwards. A screen that nobody holds any
    /// more is dismissed.
    virtual void dismiss(bool animated) = 0;
};

/// One screen of the library. Its delegate may load another page or dismiss it inside any of these calls.
class KAVIO_API AbstractScene : public ViewController {
public:
    /// Told of each step; nobody if it is gone.
    std::weak_ptr<ViewLifecycle> lifecycleDelegate;

protected:
    /// Calls `event` of the lifecycle delegate, if there is one.
    void tell(void (ViewLifecycle::*event)()) const {
        if (const auto told = lifecycleDelegate.lock()) ((*told).*event)();
    }
};

/// The screen that runs the card issuer's pages: a web view under a bar that has a close button and names the host of
/// the page.
class KAVIO_API TDSecureScene : public AbstractScene {
public:
    /// Told of navigations and of the close button; nobody if it is gone.
    std::weak_ptr<TDSecureSceneDelegate> delegate;

    /// Null once the scene is dismissed.
    virtual std::shared_ptr<WebView> webView() const = 0;
    /// If `hidden`, `content` is an HTML document. Otherwise it is a page's address; what is not a URL loads nothing.
    void load(const std::string& content, bool hidden) const;
};

/// A window of the host application.
class KAVIO_API Window {
public:
    virtual ~Window() = default;
    /// Null when the window shows nothing.
    virtual std::shared_ptr<ViewController> rootViewController() const = 0;
};

/// The host application's windows, and the library's own screens.
class KAVIO_API Windows {
public:
    virtual ~Windows() = default;
    /// The window that the person is using; null if there is none.
    virtual std::shared_ptr<Window> keyWindow() const = 0;
    /// A new scene for the card issuer's pages; null when it cannot be made.
    virtual std::shared_ptr<TDSecureScene> makeScene() = 0;
    /// The same, made before it is known whether a page will come: what takes a page long to start, such as a process,
    /// starts now. Until the scene is presented, the person sees nothing of it, and nothing is asked of the network. It
    /// is often let go unused, and leaves nothing behind then. Null where nothing is to be gained.
    virtual std::shared_ptr<TDSecureScene> prepareScene() { return nullptr; }
};

}  // namespace kavio
