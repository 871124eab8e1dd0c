#include "platform/gtk/secure_scene.h"

#include <kavio/gtk.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <thread>
#include <utility>

namespace kavio {
namespace {

using Work = std::function<void()>;

void attach(GSource* source, Work work) {
    // An idle source's own priority comes after drawing, so with an animated page the work would never run.
    g_source_set_priority(source, G_PRIORITY_DEFAULT);
    g_source_set_callback(
        source,
        [](gpointer data) -> gboolean {
            guarded([&] { (*static_cast<Work*>(data))(); });
            return G_SOURCE_REMOVE;
        },
        new Work(std::move(work)), [](gpointer data) { delete static_cast<Work*>(data); });
    g_source_attach(source, nullptr);
    g_source_unref(source);
}

// A timer of GLib's lasts 49 days at most; a longer delay takes several.
void attachAfter(std::chrono::milliseconds delay, Work work) {
    constexpr std::chrono::milliseconds longest(std::numeric_limits<guint>::max());
    if (delay > longest) {
        return attachAfter(longest, [rest = delay - longest, work = std::move(work)] { attachAfter(rest, work); });
    }
    const auto wait = std::max(delay, std::chrono::milliseconds(0)).count();
    attach(g_timeout_source_new(static_cast<guint>(wait)), std::move(work));
}

/// The queue of a GLib main context, the default one. The thread that makes it is the main thread.
class GlibMainQueue final : public MainQueue {
public:
    void post(std::function<void()> work) override { attach(g_idle_source_new(), std::move(work)); }

    void postAfter(std::chrono::milliseconds delay, std::function<void()> work) override {
        attachAfter(delay, std::move(work));
    }

    bool isMainThread() const override { return std::this_thread::get_id() == mMainThread; }

private:
    const std::thread::id mMainThread = std::this_thread::get_id();
};

class HostWindow final : public Window {
public:
    explicit HostWindow(GtkWindow* window) : mScreen(std::make_shared<HostScreen>(window)) {}
    std::shared_ptr<ViewController> rootViewController() const override { return mScreen; }

private:
    const std::shared_ptr<HostScreen> mScreen;
};

bool isOnScreen(GtkWindow* window) { return window && gtk_widget_get_mapped(GTK_WIDGET(window)); }

/// The windows of the host's application.
class GtkWindows final : public Windows {
public:
    GtkWindows(GtkApplication* application, std::filesystem::path authorities)
        : mApplication(retained(application)), mAuthorities(std::move(authorities)) {}

    std::shared_ptr<Window> keyWindow() const override {
        GtkWindow* active = gtk_application_get_active_window(mApplication.get());
        if (isOnScreen(active)) return std::make_shared<HostWindow>(active);
        // Without a window manager no window is ever active: the list begins with the newest.
        for (GList* entry = gtk_application_get_windows(mApplication.get()); entry; entry = entry->next) {
            auto* window = static_cast<GtkWindow*>(entry->data);
            if (isOnScreen(window)) return std::make_shared<HostWindow>(window);
        }
        return nullptr;
    }

    std::shared_ptr<TDSecureScene> makeScene() override { return GtkScene::make(mAuthorities); }

    std::shared_ptr<TDSecureScene> prepareScene() override {
        auto scene = GtkScene::make(mAuthorities);
        if (scene) scene->prepare();
        return scene;
    }

private:
    const ObjectPointer<GtkApplication> mApplication;
    const std::filesystem::path mAuthorities;
};

}  // namespace

Platform makeGtkPlatform(GtkApplication* application, LinuxPlatformOptions options) {
    auto authorities = options.session.certificateAuthorities;
    if (!authorities.empty()) authorities = std::filesystem::absolute(authorities);  // GIO takes no other path
    if (!options.mainQueue) options.mainQueue = std::make_shared<GlibMainQueue>();
    auto platform = makeLinuxPlatform(std::move(options));
    platform.windows = std::make_shared<GtkWindows>(application, std::move(authorities));
    return platform;
}

}  // namespace kavio
