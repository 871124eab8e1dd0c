#include "platform/gtk/screens.h"

#include "platform/gtk/secure_scene.h"

namespace kavio {

std::shared_ptr<ViewController> screenAbove(GtkWindow* window) {
    GListModel* toplevels = gtk_window_get_toplevels();
    for (guint i = 0; i < g_list_model_get_n_items(toplevels); ++i) {
        const ObjectPointer<GtkWindow> other(static_cast<GtkWindow*>(g_list_model_get_item(toplevels, i)));
        if (gtk_window_get_transient_for(other.get()) == window && gtk_widget_get_visible(GTK_WIDGET(other.get()))) {
            return std::make_shared<HostScreen>(other.get());
        }
    }
    return nullptr;
}

void HostScreen::present(const std::shared_ptr<ViewController>& scene, bool) {
    if (const auto shown = std::dynamic_pointer_cast<GtkScene>(scene)) shown->showAbove(mWindow.get());
}

}  // namespace kavio
