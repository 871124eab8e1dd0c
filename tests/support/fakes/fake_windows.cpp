#include "support/fakes/fake_windows.h"

#include <utility>

namespace kavio::test {
namespace {

std::string animatedText(bool animated) { return animated ? " animated" : ""; }

}  // namespace

class FakeWindows::PageView final : public WebView {
public:
    explicit PageView(FakeWindows& windows) : mWindows(windows) {}
    void setHidden(bool hidden) override { mWindows.log.emplace_back(hidden ? "hidden" : "shown"); }
    void loadHtml(const std::string& document) override { mWindows.log.push_back("html " + document); }
    void loadUrl(const std::string& url, std::chrono::seconds timeout) override {
        mWindows.log.push_back("load " + url + " " + std::to_string(timeout.count()));
    }

private:
    FakeWindows& mWindows;
};

class FakeWindows::Scene final : public WebScene {
public:
    explicit Scene(std::shared_ptr<FakeWindows> windows) : mWindows(std::move(windows)) {}
    ~Scene() override { dismiss(false); }

    std::shared_ptr<ViewController> presentedViewController() const override { return nullptr; }
    void present(const std::shared_ptr<ViewController>&, bool) override {}
    std::shared_ptr<WebView> webView() const override { return mWebView; }
    void setObserver(std::weak_ptr<SceneObserver> observer) override { mObserver = std::move(observer); }

    void show(bool animated) {
        if (mWindows->mPresented) return;
        mWindows->mPresented = this;
        mWindows->log.push_back("present" + animatedText(animated));
        for (auto event : {ViewEvent::DID_LOAD, ViewEvent::WILL_APPEAR, ViewEvent::DID_APPEAR}) tell(event);
    }
    void dismiss(bool animated) override {
        if (mWindows->mPresented != this) return;
        mWindows->mPresented = nullptr;
        mWindows->log.push_back("dismiss" + animatedText(animated));
        for (auto event : {ViewEvent::WILL_DISAPPEAR, ViewEvent::DID_DISAPPEAR}) tell(event);
    }
    void tell(ViewEvent event) const {
        if (const auto told = mObserver.lock()) told->onViewEvent(event);
    }
    std::shared_ptr<SceneObserver> observer() const { return mObserver.lock(); }

private:
    const std::shared_ptr<FakeWindows> mWindows;
    const std::shared_ptr<PageView> mWebView = std::make_shared<PageView>(*mWindows);
    std::weak_ptr<SceneObserver> mObserver;
};

class FakeWindows::Screen final : public ViewController {
public:
    std::shared_ptr<ViewController> presentedViewController() const override { return presented; }
    /// Only the top-most screen can present.
    void present(const std::shared_ptr<ViewController>& scene, bool animated) override {
        if (!presented) static_cast<Scene&>(*scene).show(animated);
    }
    void dismiss(bool) override {}

    std::shared_ptr<Screen> presented;
};

std::shared_ptr<Window> FakeWindows::keyWindow() const {
    struct OneWindow final : Window {
        std::shared_ptr<ViewController> root;
        std::shared_ptr<ViewController> rootViewController() const override { return root; }
    };
    if (!hasKeyWindow) return nullptr;
    auto window = std::make_shared<OneWindow>();
    const auto screen = std::make_shared<Screen>();
    screen->presented = std::make_shared<Screen>();  // an application's own dialog
    window->root = screen;
    return window;
}

std::shared_ptr<WebScene> FakeWindows::instantiateScene(std::string_view storyboard, std::string_view identifier) {
    if (storyboard != "libKavio" || identifier != "TDSecureScene") return nullptr;
    return std::make_shared<Scene>(shared_from_this());
}

std::shared_ptr<SceneObserver> FakeWindows::observer() const { return mPresented ? mPresented->observer() : nullptr; }

bool FakeWindows::navigate(const std::optional<std::string>& url) const {
    const auto asked = observer();
    return asked && asked->shouldStartLoad(url);
}

void FakeWindows::pressClose() const {
    if (const auto told = observer()) told->onButtonClick();
}

}  // namespace kavio::test
