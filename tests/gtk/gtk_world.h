#pragma once

#include "gtk/page_server.h"
#include "support/eventually.h"
#include "support/fakes/fake_device.h"
#include "support/temporary_folder.h"

#include <kavio/gtk.h>
#include <kavio/platform/linux.h>

#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <webkit/webkit.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>

namespace kavio::test {

// One for the whole run, as in a real program.
inline GtkApplication* application() {
    static GtkApplication* made = [] {
        auto* app = gtk_application_new(nullptr, G_APPLICATION_NON_UNIQUE);
        g_application_register(G_APPLICATION(app), nullptr, nullptr);
        return app;
    }();
    return made;
}

inline GtkWidget* findIn(GtkWidget* widget, std::string_view id) {
    const char* name = gtk_buildable_get_buildable_id(GTK_BUILDABLE(widget));
    if (name && name == id) return widget;
    for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child)) {
        if (auto* found = findIn(child, id)) return found;
    }
    return nullptr;
}

inline void xdotool(const std::string& arguments) {
    ASSERT_EQ(std::system(("xdotool " + arguments).c_str()), 0) << arguments;
}

/// A GTK program with one window, and a person in front of it: the real web view on a real X server.
class GtkHost : public testing::Test {
protected:
    explicit GtkHost(UrlSessionConfiguration session)
        : mPlatform([&] {
              LinuxPlatformOptions options;
              options.session = std::move(session);
              options.storeDirectory = mStore.path();
              return makeGtkPlatform(application(), std::move(options));
          }()),
          host(GTK_WINDOW(gtk_application_window_new(application()))) {
        gtk_window_set_default_size(host, 200, 200);
        gtk_window_present(host);
        EXPECT_TRUE(until([this] { return gtk_widget_get_mapped(GTK_WIDGET(host)); }));
    }
    ~GtkHost() override { gtk_window_destroy(host); }

    /// Runs the main loop until `condition` holds; false if that takes too long.
    static bool until(const std::function<bool()>& condition,
                      std::chrono::milliseconds limit = std::chrono::seconds(20)) {
        return eventually(
            [&] {
                // A busy page always has something for the main loop to do.
                for (int i = 0; i < 100 && !condition() && g_main_context_iteration(nullptr, FALSE); ++i) {
                }
                return condition();
            },
            limit);
    }
    /// What the scene shows: "working", "page" or "failed"; "nothing" when there is none.
    static std::string shown() {
        auto* stack = find("stack");
        return stack && gtk_widget_get_mapped(stack) ? gtk_stack_get_visible_child_name(GTK_STACK(stack)) : "nothing";
    }
    /// The text of one of the scene's labels or buttons; empty if it is not visible.
    static std::string text(const char* id) {
        auto* widget = find(id);
        if (!widget || !gtk_widget_get_mapped(widget)) return "";
        return GTK_IS_BUTTON(widget) ? gtk_button_get_label(GTK_BUTTON(widget)) : gtk_label_get_text(GTK_LABEL(widget));
    }
    static GtkWindow* window() { return GTK_WINDOW(find("TDSecureScene")); }
    static std::size_t windowCount() { return g_list_model_get_n_items(gtk_window_get_toplevels()); }
    /// Emits what WebKit emits when it loses a load.
    static void loseLoad(const std::string& url) {
        GError* const error = g_error_new_literal(G_IO_ERROR, G_IO_ERROR_CANCELLED, "Operation was cancelled");
        gboolean isHandled = FALSE;
        g_signal_emit_by_name(find("webView"), "load-failed", WEBKIT_LOAD_STARTED, url.c_str(), error, &isHandled);
        g_error_free(error);
    }
    static void endWebProcess() { webkit_web_view_terminate_web_process(WEBKIT_WEB_VIEW(find("webView"))); }
    /// Runs `script` in the page that is shown, once that has loaded completely.
    static void runInPage(const std::string& script) {
        EXPECT_TRUE(
            until([] { return shown() == "page" && !webkit_web_view_is_loading(WEBKIT_WEB_VIEW(find("webView"))); }));
        webkit_web_view_evaluate_javascript(WEBKIT_WEB_VIEW(find("webView")), script.c_str(), -1, nullptr, nullptr,
                                            nullptr, nullptr, nullptr);
    }
    /// The person at the screen.
    static void click(const char* id) {
        auto* widget = find(id);
        ASSERT_TRUE(widget);
        ASSERT_TRUE(until([=] { return gtk_widget_get_mapped(widget) && gtk_widget_get_width(widget) > 0; }));
        double x = 0;
        double y = 0;
        gtk_widget_translate_coordinates(widget, GTK_WIDGET(gtk_widget_get_root(widget)),
                                         gtk_widget_get_width(widget) / 2.0, gtk_widget_get_height(widget) / 2.0, &x,
                                         &y);
        xdotool("mousemove " + std::to_string(static_cast<int>(x)) + " " + std::to_string(static_cast<int>(y)) +
                " click 1");
    }
    static void press(const std::string& key) {
        EXPECT_TRUE(until([] { return window() && gtk_window_is_active(window()); }));
        xdotool("key " + key);
    }

    PageServer server;

private:
    static GtkWidget* find(std::string_view id) {
        GListModel* toplevels = gtk_window_get_toplevels();
        for (guint i = 0; i < g_list_model_get_n_items(toplevels); ++i) {
            auto* window = static_cast<GtkWidget*>(g_list_model_get_item(toplevels, i));
            g_object_unref(window);  // the list still holds it
            if (auto* found = findIn(window, id)) return found;
        }
        return nullptr;
    }

    const TemporaryFolder mStore;
    const InstalledPlatform mPlatform;

protected:
    GtkWindow* host;
};

}  // namespace kavio::test
