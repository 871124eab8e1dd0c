#pragma once

#include "support/library_scope.h"

#include <kavio/platform/ui.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kavio::test {

/// A scripted user interface with one window, which records what the library does there as a list of short texts. Pages
/// do what the test says.
class FakeWindows final : public Windows, public std::enable_shared_from_this<FakeWindows> {
public:
    std::shared_ptr<Window> keyWindow() const override {
        return hasKeyWindow ? std::make_shared<OneWindow>() : nullptr;
    }
    std::shared_ptr<TDSecureScene> makeScene() override { return std::make_shared<Scene>(shared_from_this()); }

    bool hasKeyWindow = true;
    /// What goes wrong where a scene is presented.
    std::function<void()> onPresent;
    /// "present", "hidden", "shown", "html DOCUMENT", "load URL SECONDS", "dismiss", each with "animated" if that was
    /// asked for.
    std::vector<std::string> log;

    /// Whether a scene is on the screen.
    bool hasScene() const { return mPresented != nullptr; }
    /// Makes the page that the scene shows navigate there; false if nobody is told.
    bool navigate(const std::optional<std::string>& url) const {
        const auto told = delegate();
        if (told) told->onRedirect(url);
        return told != nullptr;
    }
    void pressClose() const {
        if (const auto told = delegate()) told->onCloseClicked();
    }

private:
    void note(std::string_view what, std::string_view more = "") {
        const OutsideLibrary called;
        log.emplace_back(what).append(more);
    }

    class PageView final : public WebView {
    public:
        explicit PageView(FakeWindows& windows) : mWindows(windows) {}
        void setHidden(bool hidden) override { mWindows.note(hidden ? "hidden" : "shown"); }
        void loadHtml(const std::string& document) override { mWindows.note("html ", document); }
        void loadUrl(const std::string& url, std::chrono::seconds timeout) override {
            mWindows.note("load " + url + " " + std::to_string(timeout.count()));
        }

    private:
        FakeWindows& mWindows;
    };

    class Scene final : public TDSecureScene {
    public:
        explicit Scene(std::shared_ptr<FakeWindows> windows) : mWindows(std::move(windows)) {}
        ~Scene() override { dismiss(false); }

        std::shared_ptr<ViewController> presentedViewController() const override { return nullptr; }
        void present(const std::shared_ptr<ViewController>&, bool) override {}
        std::shared_ptr<WebView> webView() const override { return mWebView; }

        void show(bool animated) {
            if (mWindows->mPresented) return;
            mWindows->mPresented = this;
            mWindows->note(animated ? "present animated" : "present");
            if (mWindows->onPresent) mWindows->onPresent();
            tell(&ViewLifecycle::onViewDidLoad);
            tell(&ViewLifecycle::onViewWillAppear);
            tell(&ViewLifecycle::onViewDidAppear);
        }
        void dismiss(bool animated) override {
            if (mWindows->mPresented != this) return;
            mWindows->mPresented = nullptr;
            mWindows->note(animated ? "dismiss animated" : "dismiss");
            tell(&ViewLifecycle::onViewWillDisappear);
            tell(&ViewLifecycle::onViewDidDisappear);
        }

    private:
        const std::shared_ptr<FakeWindows> mWindows;
        const std::shared_ptr<PageView> mWebView = std::make_shared<PageView>(*mWindows);
    };

    /// Only the top-most screen can present.
    struct Screen final : ViewController {
        explicit Screen(std::shared_ptr<Screen> above = nullptr) : presented(std::move(above)) {}
        std::shared_ptr<ViewController> presentedViewController() const override { return presented; }
        void present(const std::shared_ptr<ViewController>& scene, bool animated) override {
            if (!presented) static_cast<Scene&>(*scene).show(animated);
        }
        void dismiss(bool) override {}

        const std::shared_ptr<Screen> presented;
    };
    /// Shows a dialog of the application above the application's own screen.
    struct OneWindow final : Window {
        std::shared_ptr<ViewController> rootViewController() const override { return root; }
        const std::shared_ptr<Screen> root = std::make_shared<Screen>(std::make_shared<Screen>());
    };

    std::shared_ptr<TDSecureSceneDelegate> delegate() const {
        return mPresented ? mPresented->delegate.lock() : nullptr;
    }

    Scene* mPresented = nullptr;
};

}  // namespace kavio::test
