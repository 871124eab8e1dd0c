#include "platform/gtk/windows.h"

#include "platform/gtk/secure_scene.h"

namespace kavio {
namespace {

class HostWindow final : public Window {
public:
    explicit HostWindow(GtkWindow* window) : mScreen(std::make_shared<HostScreen>(window)) {}
    std::shared_ptr<ViewController> rootViewController() const override { return mScreen; }

private:
    const std::shared_ptr<HostScreen> mScreen;
};

bool isOnScreen(GtkWindow* window) { return window && gtk_widget_get_mapped(GTK_WIDGET(window)); }

}  // namespace

std::shared_ptr<Window> GtkWindows::keyWindow() const {
    GtkWindow* active = gtk_application_get_active_window(mApplication.get());
    if (isOnScreen(active)) return std::make_shared<HostWindow>(active);
    // Without a window manager no window is ever active: the list begins with the newest.
    for (GList* entry = gtk_application_get_windows(mApplication.get()); entry; entry = entry->next) {
        auto* window = static_cast<GtkWindow*>(entry->data);
        if (isOnScreen(window)) return std::make_shared<HostWindow>(window);
    }
    return nullptr;
}

std::shared_ptr<TDSecureScene> GtkWindows::makeScene() { return GtkScene::make(mAuthorities); }

}  // namespace kavio
