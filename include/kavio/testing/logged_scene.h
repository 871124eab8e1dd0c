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
    std::string lastUrl() const { return urls.empty() ? "" : urls.back(); }

    std::vector<std::string> events;
    std::vector<std::string> urls;
    std::vector<std::string> ends;  // those that are addresses of this device
    int closes = 0;
    std::function<void()> onReady;
    std::function<void(const std::string&)> onLoad;
    std::function<void()> onClose;
};

/// A scene with whoever it tells.
struct LoggedScene {
    explicit LoggedScene(Windows& windows) : LoggedScene(windows.makeScene()) {}
    explicit LoggedScene(std::shared_ptr<TDSecureScene> made) : scene(std::move(made)) {
        scene->lifecycleDelegate = log;
        scene->delegate = log;
    }
    ~LoggedScene() { scene->dismiss(false); }
    LoggedScene(const LoggedScene&) = delete;
    LoggedScene& operator=(const LoggedScene&) = delete;

    void show(const std::string& url) const {
        scene->webView()->setHidden(false);
        scene->webView()->loadUrl(url, std::chrono::seconds(60));
    }
    void runHidden(const std::string& document) const {
        scene->webView()->setHidden(true);
        scene->webView()->loadHtml(document);
    }

    const std::shared_ptr<SceneLog> log = std::make_shared<SceneLog>();
    const std::shared_ptr<TDSecureScene> scene;
};

}  // namespace kavio::test
