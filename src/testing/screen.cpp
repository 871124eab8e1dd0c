#include <kavio/testing/boundary.h>
#include <kavio/testing/screen.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <utility>

namespace kavio::test {

class Screen::PageView final : public WebView, public std::enable_shared_from_this<PageView> {
public:
    PageView(Screen& screen, const std::weak_ptr<TDSecureSceneDelegate>& delegate)
        : mScreen(screen), mDelegate(delegate) {}
    void setHidden(bool hidden) override {
        mScreen.note(hidden ? "hidden" : "shown");
        mIsHidden = hidden;
    }
    void loadHtml(const std::string& document) override {
        mScreen.note("html ", document);
        begin(document, false);
    }
    void loadUrl(const std::string& url, std::chrono::seconds timeout) override {
        mScreen.note("load " + url + " " + std::to_string(timeout.count()));
        begin(url, true);
    }

    void fail() { change("failed"), mHasArrived = false, mNext.clear(); }
    void reload() { mHasArrived ? change("page") : begin(mContent, mIsAddress); }
    std::string shown() const { return mIsHidden && mShown == "page" ? "working" : mShown; }
    std::string content() const { return mHasArrived ? mContent : ""; }
    void step() {
        if (mNext.empty()) return;
        const auto deed = mNext.front();
        if (deed.kind != Deed::Kind::FRAMES_FOR_EVER) mNext.pop_front();
        const auto load = mLoads;
        const auto self = shared_from_this();
        navigate(deed.url);
        if (load == mLoads && deed.kind != Deed::Kind::OPEN) follow(deed);
        actSoon();
    }
    bool navigate(const std::optional<std::string>& url) const {
        const auto told = mDelegate.lock();
        if (told) told->onRedirect(url);
        return told != nullptr;
    }
    void close() { ++mLoads, mNext.clear(); }

private:
    void begin(const std::string& content, bool isAddress) {
        const OutsideLibrary called;
        close();
        mContent = content, mIsAddress = isAddress, mHasArrived = false, mHasEnded = false, mShown = "working";
        if (isAddress)
            mNext.push_back({Deed::Kind::GO, content});
        else if (const auto deeds = find(content, false))
            arrive(content, *deeds);
        actSoon();
    }
    std::optional<std::vector<Deed>> find(const std::string& content, bool isAddress) const {
        const auto found = mScreen.pages.find(content);
        if (found != mScreen.pages.end()) return found->second;
        if (mScreen.browse) return mScreen.browse(content, isAddress);
        return isAddress ? std::nullopt : std::optional<std::vector<Deed>>(std::in_place);
    }
    void change(const std::string& shown) {
        if (!mHasEnded) mShown = shown;
    }
    void follow(const Deed& deed) {
        if (deed.url.starts_with(loopbackUrl)) {
            change("working");
            mHasEnded = true;
            return;
        }
        const bool isPage = deed.kind == Deed::Kind::GO;
        if (const auto deeds = find(deed.url, true)) return isPage ? arrive(deed.url, *deeds) : append(*deeds);
        if (isPage && deed.url.starts_with("http")) change("failed");
    }
    void arrive(const std::string& content, const std::vector<Deed>& deeds) {
        mNext.clear();
        mContent = content, mHasArrived = true, change("page");
        append(deeds);
    }
    void append(const std::vector<Deed>& deeds) { mNext.insert(mNext.end(), deeds.begin(), deeds.end()); }
    void actSoon() {
        if (!mScreen.mTimeline || mNext.empty() || std::exchange(mIsWaiting, true)) return;
        mScreen.mTimeline->post(Lane::MAIN, std::chrono::milliseconds(1), [weak = weak_from_this()] {
            const auto self = weak.lock();
            if (!self) return;
            self->mIsWaiting = false;
            self->step();
        });
    }

    Screen& mScreen;
    const std::weak_ptr<TDSecureSceneDelegate>& mDelegate;  // the scene's
    std::string mContent;
    std::string mShown = "working";
    bool mIsAddress = false;
    bool mIsHidden = false;
    bool mHasArrived = false;
    bool mHasEnded = false;   // by going to the loopback address
    bool mIsWaiting = false;  // for its next deed
    int mLoads = 0;
    std::deque<Deed> mNext;
};

class Screen::Scene final : public TDSecureScene, public std::enable_shared_from_this<Scene> {
public:
    explicit Scene(std::shared_ptr<Screen> screen)
        : mScreen(std::move(screen)), mWebView(std::make_shared<PageView>(*mScreen, delegate)) {}
    ~Scene() override { dismiss(false); }

    std::shared_ptr<ViewController> presentedViewController() const override {
        const auto& all = mScreen->mPresented;
        const auto next = std::find(all.begin(), all.end(), this);
        return next == all.end() || next + 1 == all.end() ? nullptr : (*(next + 1))->shared_from_this();
    }
    void present(const std::shared_ptr<ViewController>& scene, bool animated) override {
        if (!presentedViewController()) static_cast<Scene&>(*scene).show(animated);
    }
    std::shared_ptr<WebView> webView() const override { return mWebView; }
    std::shared_ptr<PageView> view() const { return mWebView; }

    void show(bool animated) {
        if (!mWebView || mIsShown) return;
        mIsShown = true;
        mScreen->mPresented.push_back(this);
        mScreen->note(animated ? "present animated" : "present");
        if (mScreen->onPresent) mScreen->onPresent();
        tell(&ViewLifecycle::onViewDidLoad);
        tell(&ViewLifecycle::onViewWillAppear);
        tell(&ViewLifecycle::onViewDidAppear);
    }
    void dismiss(bool animated) override {
        if (!mWebView) return;
        mWebView->close();
        mWebView.reset();
        if (std::erase(mScreen->mPresented, this) == 0) return;
        mScreen->note(animated ? "dismiss animated" : "dismiss");
        tell(&ViewLifecycle::onViewWillDisappear);
        tell(&ViewLifecycle::onViewDidDisappear);
    }

private:
    const std::shared_ptr<Screen> mScreen;
    std::shared_ptr<PageView> mWebView;
    bool mIsShown = false;
};

Screen::Screen(std::shared_ptr<Timeline> timeline) : mTimeline(std::move(timeline)) {}
Screen::~Screen() = default;

std::shared_ptr<Window> Screen::keyWindow() const {
    /// A screen of the application. Only the top-most one can present.
    struct ApplicationScreen final : ViewController {
        explicit ApplicationScreen(std::function<std::shared_ptr<ViewController>()> above)
            : presented(std::move(above)) {}
        std::shared_ptr<ViewController> presentedViewController() const override { return presented(); }
        void present(const std::shared_ptr<ViewController>& scene, bool animated) override {
            if (!presented()) static_cast<Scene&>(*scene).show(animated);
        }
        void dismiss(bool) override {}

        const std::function<std::shared_ptr<ViewController>()> presented;
    };
    /// Shows a dialog of the application above the application's own screen, and the first scene above that.
    struct OneWindow final : Window {
        explicit OneWindow(std::shared_ptr<const Screen> screen)
            : dialog(std::make_shared<ApplicationScreen>([screen]() -> std::shared_ptr<ViewController> {
                  return screen->hasScene() ? screen->mPresented.front()->shared_from_this() : nullptr;
              })),
              root(std::make_shared<ApplicationScreen>([above = dialog] { return above; })) {}
        std::shared_ptr<ViewController> rootViewController() const override { return root; }
        const std::shared_ptr<ViewController> dialog;
        const std::shared_ptr<ViewController> root;
    };
    return hasKeyWindow ? std::make_shared<OneWindow>(shared_from_this()) : nullptr;
}

std::shared_ptr<TDSecureScene> Screen::makeScene() { return std::make_shared<Scene>(shared_from_this()); }
std::shared_ptr<TDSecureScene> Screen::prepareScene() {
    auto scene = std::make_shared<Scene>(shared_from_this());
    mPrepared = scene;
    return scene;
}

void Screen::note(std::string_view what, std::string_view more) {
    const OutsideLibrary called;
    log.emplace_back(what).append(more);
}

Screen::Scene* Screen::top() const { return mPresented.empty() ? nullptr : mPresented.back(); }
bool Screen::hasScene() const { return top() != nullptr; }
std::string Screen::preparedScene() const {
    const auto prepared = mPrepared.lock();
    if (!prepared) return "gone";
    return std::count(mPresented.begin(), mPresented.end(), prepared.get()) > 0 ? "presented" : "waiting";
}
std::string Screen::content() const { return hasScene() ? top()->view()->content() : ""; }
std::string Screen::shown() const { return hasScene() ? top()->view()->shown() : "nothing"; }
bool Screen::navigate(const std::optional<std::string>& url) { return hasScene() && top()->view()->navigate(url); }
void Screen::pressClose() {
    if (const auto told = hasScene() ? top()->delegate.lock() : nullptr) told->onCloseClicked();
}
void Screen::pressBack() {
    if (hasScene()) top()->view()->reload();
}
void Screen::endPageProcess() {
    if (hasScene()) top()->view()->fail();
}
void Screen::forget() {
    mPrepared.reset();
    for (auto* scene : std::exchange(mPresented, {})) scene->lifecycleDelegate.reset(), scene->delegate.reset();
}
void Screen::step() {
    const auto presented = mPresented;
    for (const auto* scene : presented) {
        if (std::count(mPresented.begin(), mPresented.end(), scene) > 0) scene->view()->step();
    }
}

}  // namespace kavio::test
