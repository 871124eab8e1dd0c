#pragma once

#include "gtk/page_server.h"
#include "support/installed_platform.h"

#include <kavio/gtk.h>
#include <kavio/platform/linux.h>
#include <kavio/testing/authority.h>
#include <kavio/testing/eventually.h>
#include <kavio/testing/temporary_folder.h>

#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <unistd.h>
#include <webkit/webkit.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
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

/// An authority that the application gives to the library.
inline const Authority& applicationAuthority() {
    static const Authority authority;
    return authority;
}
inline UrlSessionConfiguration trustingTheApplicationAuthority() {
    static const TemporaryFolder folder;
    const auto file = folder.path() / "authority.pem";
    std::ofstream(file) << applicationAuthority().pem();
    return {file, ""};
}

/// A GTK program with one window, and a person in front of it: the real web view on a real X server.
class GtkWorld {
public:
    explicit GtkWorld(UrlSessionConfiguration session)
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
    ~GtkWorld() { gtk_window_destroy(host); }
    GtkWorld(const GtkWorld&) = delete;
    GtkWorld& operator=(const GtkWorld&) = delete;

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
        if (!isVisible("webView")) return "nothing";
        return isVisible("workingPage") ? "working" : isVisible("failedPage") ? "failed" : "page";
    }
    /// The text of one of the scene's labels or buttons; empty if it is not visible.
    static std::string text(const char* id) {
        auto* widget = find(id);
        if (!widget || !gtk_widget_get_mapped(widget)) return "";
        return GTK_IS_BUTTON(widget) ? gtk_button_get_label(GTK_BUTTON(widget)) : gtk_label_get_text(GTK_LABEL(widget));
    }
    static bool isVisible(const char* id) {
        auto* widget = find(id);
        return widget && gtk_widget_get_mapped(widget);
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
    /// Kills the process of the only page, as a lack of memory would. A newer one may be starting for the next page.
    static void endWebProcess() {
        const auto all = webProcesses();
        ASSERT_FALSE(all.empty());
        ::kill(all.begin()->first, SIGKILL);
    }
    /// The processes that pages run in or may run in next, each with whether it is busy; the oldest is the first.
    static std::map<pid_t, bool> webProcesses() { return processes("WebKitWeb"); }
    /// Those of WebKit whose name begins so.
    static std::map<pid_t, bool> processes(std::string_view beginning) {
        std::map<pid_t, bool> found;
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            std::string name;
            std::string state;
            pid_t process = 0;
            pid_t parent = 0;
            std::ifstream(entry.path() / "stat") >> process >> name >> state >> parent;
            if (parent == ::getpid() && name.starts_with("(" + std::string(beginning)) && state != "Z")
                found[process] = state == "R";
        }
        return found;
    }
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
    // In the top-most window that has it.
    static GtkWidget* find(std::string_view id) {
        GListModel* toplevels = gtk_window_get_toplevels();
        GtkWidget* topMost = nullptr;
        for (guint i = 0; i < g_list_model_get_n_items(toplevels); ++i) {
            auto* window = static_cast<GtkWidget*>(g_list_model_get_item(toplevels, i));
            g_object_unref(window);  // the list still holds it
            auto* found = findIn(window, id);
            auto* below = topMost ? gtk_widget_get_root(topMost) : nullptr;
            if (found && (!below || gtk_window_get_transient_for(GTK_WINDOW(window)) == GTK_WINDOW(below)))
                topMost = found;
        }
        return topMost;
    }

    const TemporaryFolder mStore;
    const InstalledPlatform mPlatform;

public:
    GtkWindow* const host;
};

/// A test in that program.
class GtkHost : public testing::Test, protected GtkWorld {
protected:
    using GtkWorld::GtkWorld;
};

}  // namespace kavio::test
