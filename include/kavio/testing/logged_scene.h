#pragma once

#include <kavio/platform/ui.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kavio::test {

/// What a scene told its controller.
struct SceneLog final : ViewLifecycle, TDSecureSceneDelegate {
    void onViewDidLoad() override {
        events.emplace_back("did load");
        if (onReady) onReady();
    }
    void onViewWillAppear() override { events.emplace_back("will appear"); }
    void onViewDidAppear() override { events.emplace_back("did appear"); }
    void onViewWillDisappear() override { events.emplace_back("will disappear"); }
    void onViewDidDisappear() override { events.emplace_back("did disappear"); }
    void onDidReceiveMemoryWarning() override {}
    void onRedirect(const std::optional<std::string>& url) override {
        urls.push_back(url.value_or("none"));
        if (urls.back().starts_with(loopbackUrl)) ends.push_back(urls.back());
        if (onLoad) onLoad(urls.back());
    }
    void onCloseClicked() override {
        ++closes;
        if (onClose) onClose();
    }
    /// Empty if there was none.
    std::string lastUrl() const { return urls.empty() ? "" : urls.back(); }

    std::vector<std::string> events;                 ///< the steps of the view: "did load", "will appear" …
    std::vector<std::string> urls;                   ///< of each navigation; "none" where it is not known
    std::vector<std::string> ends;                   ///< those that are addresses of this device
    int closes = 0;                                  ///< how often the person wanted to leave
    std::function<void()> onReady;                   ///< called once the view is loaded
    std::function<void(const std::string&)> onLoad;  ///< called at each navigation, with its address
    std::function<void()> onClose;                   ///< called when the person wants to leave
};

/// A scene with whoever it tells.
struct LoggedScene {
    /// A new scene, which tells `log`; presenting it is up to the test.
    explicit LoggedScene(Windows& windows) : LoggedScene(windows.makeScene()) {}
    /// A scene that was made already.
    explicit LoggedScene(std::shared_ptr<TDSecureScene> made) : scene(std::move(made)) {
        scene->lifecycleDelegate = log;
        scene->delegate = log;
    }
    ~LoggedScene() { scene->dismiss(false); }
    LoggedScene(const LoggedScene&) = delete;
    LoggedScene& operator=(const LoggedScene&) = delete;

    /// Shows the page at `url` to the person.
    void show(const std::string& url) const {
        scene->webView()->setHidden(false);
        scene->webView()->loadUrl(url, std::chrono::seconds(60));
    }
    /// Runs an HTML document out of sight.
    void runHidden(const std::string& document) const {
        scene->webView()->setHidden(true);
        scene->webView()->loadHtml(document);
    }

    const std::shared_ptr<SceneLog> log = std::make_shared<SceneLog>();  ///< what the scene has told
    const std::shared_ptr<TDSecureScene> scene;                          ///< dismissed with this object
};

}  // namespace kavio::test
