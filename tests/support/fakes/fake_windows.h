#pragma once

#include <kavio/platform/ui.h>
#include <kavio/testing/boundary.h>
#include <kavio/testing/deed.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kavio::test {

/// A scripted user interface with one window, which records what the library does there as a list of short texts. Pages
/// do what the test says: right away with `navigate`, or with `step` what `pages` has for their address or document.
class FakeWindows final : public Windows, public std::enable_shared_from_this<FakeWindows> {
public:
    std::shared_ptr<Window> keyWindow() const override {
        return hasKeyWindow ? std::make_shared<OneWindow>(shared_from_this()) : nullptr;
    }
    std::shared_ptr<TDSecureScene> makeScene() override { return std::make_shared<Scene>(shared_from_this()); }

    bool hasKeyWindow = true;
    /// What goes wrong where a scene is presented.
    std::function<void()> onPresent;
    std::map<std::string, std::vector<Deed>> pages;
    /// "present", "hidden", "shown", "html DOCUMENT", "load URL SECONDS", "dismiss", each with "animated" if that was
    /// asked for.
    std::vector<std::string> log;

    /// Whether a scene is on the screen.
    bool hasScene() const { return !mPresented.empty(); }
    /// Makes the page that the top-most scene shows navigate there; false if nobody is told.
    bool navigate(const std::optional<std::string>& url) const {
        const auto told = hasScene() ? mPresented.back()->delegate.lock() : nullptr;
        if (told) told->onRedirect(url);
        return told != nullptr;
    }
    void pressClose() const {
        if (const auto told = hasScene() ? mPresented.back()->delegate.lock() : nullptr) told->onCloseClicked();
    }
    void pressBack() const { mPresented.back()->view().reload(); }
    void endPageProcess() const { mPresented.back()->view().fail(); }
    /// Lets the page of each scene do the next thing.
    void step() const {
        const auto presented = mPresented;
        for (const auto* scene : presented) {
            if (std::count(mPresented.begin(), mPresented.end(), scene) > 0) scene->view().step(scene->delegate);
        }
    }
    /// What the top-most scene shows: "working", "page", "failed"; "nothing" when there is none.
    std::string shown() const { return hasScene() ? mPresented.back()->view().shown() : "nothing"; }

private:
    void note(std::string_view what, std::string_view more = "") {
        const OutsideLibrary called;
        log.emplace_back(what).append(more);
    }

    class PageView final : public WebView, public std::enable_shared_from_this<PageView> {
    public:
        explicit PageView(FakeWindows& windows) : mWindows(windows) {}
        void setHidden(bool hidden) override {
            mWindows.note(hidden ? "hidden" : "shown");
            mIsHidden = hidden;
        }
        void loadHtml(const std::string& document) override {
            mWindows.note("html ", document);
            begin(document, false);
        }
        void loadUrl(const std::string& url, std::chrono::seconds timeout) override {
            mWindows.note("load " + url + " " + std::to_string(timeout.count()));
            begin(url, true);
        }

        void fail() { mShown = "failed", mHasArrived = false, mNext.clear(); }
        void reload() { mHasArrived ? static_cast<void>(mShown = "page") : begin(mContent, mIsAddress); }
        std::string shown() const { return mIsHidden && mShown == "page" ? "working" : mShown; }
        void step(const std::weak_ptr<TDSecureSceneDelegate>& delegate) {
            if (mNext.empty()) return;
            const auto deed = mNext.front();
            if (deed.kind != Deed::Kind::FRAMES_FOR_EVER) mNext.pop_front();
            const auto load = mLoads;
            const auto self = shared_from_this();
            if (const auto told = delegate.lock()) told->onRedirect(deed.url);
            if (load == mLoads && deed.kind != Deed::Kind::OPEN) follow(deed);
        }
        void close() { ++mLoads, mNext.clear(); }

    private:
        void begin(const std::string& content, bool isAddress) {
            const OutsideLibrary called;
            close();
            mContent = content, mIsAddress = isAddress, mHasArrived = false, mShown = "working";
            if (isAddress) return mNext.push_back({Deed::Kind::GO, content});
            arrive(content);
        }
        void follow(const Deed& deed) {
            if (deed.url.starts_with("http://127.0.0.1")) return static_cast<void>(mShown = "working");
            const bool isFound = mWindows.pages.contains(deed.url);
            if (deed.kind == Deed::Kind::GO && isFound) return arrive(deed.url);
            if (deed.kind == Deed::Kind::GO && deed.url.starts_with("http"))
                return static_cast<void>(mShown = "failed");
            if (isFound) append(deed.url);
        }
        void arrive(const std::string& content) {
            mNext.clear();
            mHasArrived = true, mShown = "page";
            append(content);
        }
        void append(const std::string& content) {
            const auto& deeds = mWindows.pages[content];
            mNext.insert(mNext.end(), deeds.begin(), deeds.end());
        }

        FakeWindows& mWindows;
        std::string mContent;
        std::string mShown = "working";
        bool mIsAddress = false;
        bool mIsHidden = false;
        bool mHasArrived = false;
        int mLoads = 0;
        std::deque<Deed> mNext;
    };

    class Scene final : public TDSecureScene, public std::enable_shared_from_this<Scene> {
    public:
        explicit Scene(std::shared_ptr<FakeWindows> windows) : mWindows(std::move(windows)) {}
        ~Scene() override { dismiss(false); }

        std::shared_ptr<ViewController> presentedViewController() const override {
            const auto& all = mWindows->mPresented;
            const auto next = std::find(all.begin(), all.end(), this);
            return next == all.end() || next + 1 == all.end() ? nullptr : (*(next + 1))->shared_from_this();
        }
        void present(const std::shared_ptr<ViewController>& scene, bool animated) override {
            if (!presentedViewController()) static_cast<Scene&>(*scene).show(animated);
        }
        std::shared_ptr<WebView> webView() const override { return mWebView; }
        PageView& view() const { return *mWebView; }

        void show(bool animated) {
            if (!mWebView || mIsShown) return;
            mIsShown = true;
            mWindows->mPresented.push_back(this);
            mWindows->note(animated ? "present animated" : "present");
            if (mWindows->onPresent) mWindows->onPresent();
            tell(&ViewLifecycle::onViewDidLoad);
            tell(&ViewLifecycle::onViewWillAppear);
            tell(&ViewLifecycle::onViewDidAppear);
        }
        void dismiss(bool animated) override {
            if (!mWebView) return;
            mWebView->close();
            mWebView.reset();
            if (std::erase(mWindows->mPresented, this) == 0) return;
            mWindows->note(animated ? "dismiss animated" : "dismiss");
            tell(&ViewLifecycle::onViewWillDisappear);
            tell(&ViewLifecycle::onViewDidDisappear);
        }

    private:
        const std::shared_ptr<FakeWindows> mWindows;
        std::shared_ptr<PageView> mWebView = std::make_shared<PageView>(*mWindows);
        bool mIsShown = false;
    };

    /// A screen of the application. Only the top-most one can present.
    struct Screen final : ViewController {
        explicit Screen(std::function<std::shared_ptr<ViewController>()> above) : presented(std::move(above)) {}
        std::shared_ptr<ViewController> presentedViewController() const override { return presented(); }
        void present(const std::shared_ptr<ViewController>& scene, bool animated) override {
            if (!presented()) static_cast<Scene&>(*scene).show(animated);
        }
        void dismiss(bool) override {}

        const std::function<std::shared_ptr<ViewController>()> presented;
    };
    /// Shows a dialog of the application above the application's own screen, and the first scene above that.
    struct OneWindow final : Window {
        explicit OneWindow(std::shared_ptr<const FakeWindows> windows)
            : dialog(std::make_shared<Screen>([windows]() -> std::shared_ptr<ViewController> {
                  return windows->hasScene() ? windows->mPresented.front()->shared_from_this() : nullptr;
              })),
              root(std::make_shared<Screen>([above = dialog] { return above; })) {}
        std::shared_ptr<ViewController> rootViewController() const override { return root; }
        const std::shared_ptr<ViewController> dialog;
        const std::shared_ptr<ViewController> root;
    };

    std::vector<Scene*> mPresented;  // each above the one before
};

}  // namespace kavio::test
