#pragma once

#include "platform/gtk/glib_callback.h"

#include <kavio/platform/ui.h>

#include <gtk/gtk.h>

namespace kavio {

/// The visible window that is transient for `window`, as a screen; null when there is none.
std::shared_ptr<ViewController> screenAbove(GtkWindow* window);

/// A window of the host application. The library presents on it but never takes it away.
class HostScreen final : public ViewController {
public:
    explicit HostScreen(GtkWindow* window) : mWindow(retained(window)) {}

    std::shared_ptr<ViewController> presentedViewController() const override { return screenAbove(mWindow.get()); }
    void present(const std::shared_ptr<ViewController>& scene, bool animated) override;
    void dismiss(bool) override {}

private:
    const ObjectPointer<GtkWindow> mWindow;
};

}  // namespace kavio
