#include "command_line/translation.h"
#include "host/device.h"
#include "host/host.h"

#include <kavio/gtk.h>

#include <gtk/gtk.h>

#include <algorithm>
#include <limits>

namespace kavio::wallet {

namespace {

struct Unref {
    void operator()(GtkApplication* application) const { g_object_unref(application); }
};

class WindowHost final : public Host {
public:
    explicit WindowHost(const Options& options) {
        g_application_register(G_APPLICATION(mApplication.get()), nullptr, nullptr);
        install(makeGtkPlatform(mApplication.get(), deviceOptions(options, nullptr)), options);

        auto* const window = gtk_application_window_new(mApplication.get());
        gtk_window_set_title(GTK_WINDOW(window), "kavio-wallet");
        gtk_window_set_default_size(GTK_WINDOW(window), 480, 320);
        gtk_window_set_child(GTK_WINDOW(window), gtk_label_new(tr("Pages of your card's issuer open here.").c_str()));
        gtk_window_present(GTK_WINDOW(window));
    }

    bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) override {
        const auto interval = std::min<std::int64_t>(limit.count(), std::numeric_limits<guint>::max());
        bool isLate = false;
        const auto alarm = g_timeout_add(static_cast<guint>(interval), noteLateness, &isLate);
        while (!isLate && !done()) g_main_context_iteration(nullptr, TRUE);
        if (!isLate) g_source_remove(alarm);
        return done();
    }

private:
    static gboolean noteLateness(gpointer isLate) {
        *static_cast<bool*>(isLate) = true;
        return G_SOURCE_REMOVE;
    }

    // Nameless and not unique, so that it has nothing to do with other runs of the program.
    const std::unique_ptr<GtkApplication, Unref> mApplication{gtk_application_new(nullptr, G_APPLICATION_NON_UNIQUE)};
};

}  // namespace

std::unique_ptr<Host> makeWindowHost(const Options& options, std::string& reason) {
    if (gtk_init_check() == FALSE) {
        reason = tr("there is no display");
        return nullptr;
    }
    return std::make_unique<WindowHost>(options);
}

}  // namespace kavio::wallet
