#include "gtk/gtk_world.h"

#include "support/eventually.h"

#include <kavio/gtk.h>

#include <webkit/webkit.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <utility>

namespace kavio::test {
namespace {

// One for the whole run, as in a real program.
GtkApplication* application() {
    static GtkApplication* made = [] {
        auto* app = gtk_application_new(nullptr, G_APPLICATION_NON_UNIQUE);
        g_application_register(G_APPLICATION(app), nullptr, nullptr);
        return app;
    }();
    return made;
}

Platform makePlatform(UrlSessionConfiguration session, const TemporaryFolder& store) {
    LinuxPlatformOptions options;
    options.storeDirectory = store.path();
    options.session = std::move(session);
    return makeGtkPlatform(application(), std::move(options));
}

GtkWidget* findIn(GtkWidget* widget, std::string_view id) {
    const char* name = gtk_buildable_get_buildable_id(GTK_BUILDABLE(widget));
    if (name && name == id) return widget;
    for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child)) {
        if (auto* found = findIn(child, id)) return found;
    }
    return nullptr;
}

void xdotool(const std::string& arguments) { ASSERT_EQ(std::system(("xdotool " + arguments).c_str()), 0) << arguments; }

}  // namespace

std::vector<std::string> SceneLog::loopbacks() const {
    std::vector<std::string> found;
    std::copy_if(urls.begin(), urls.end(), std::back_inserter(found),
                 [](const auto& url) { return url.starts_with("http://127.0.0.1"); });
    return found;
}

GtkHost::GtkHost(UrlSessionConfiguration session)
    : mPlatform(makePlatform(std::move(session), mStore)), host(GTK_WINDOW(gtk_application_window_new(application()))) {
    gtk_window_set_default_size(host, 200, 200);
    gtk_window_present(host);
    EXPECT_TRUE(until([this] { return gtk_widget_get_mapped(GTK_WIDGET(host)); }));
}

GtkHost::~GtkHost() { gtk_window_destroy(host); }

bool GtkHost::until(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    return eventually(
        [&] {
            // A busy page always has something for the main loop to do.
            for (int i = 0; i < 100 && !condition() && g_main_context_iteration(nullptr, FALSE); ++i) {
            }
            return condition();
        },
        limit);
}

GtkWidget* GtkHost::find(std::string_view id) {
    GListModel* toplevels = gtk_window_get_toplevels();
    for (guint i = 0; i < g_list_model_get_n_items(toplevels); ++i) {
        auto* window = static_cast<GtkWidget*>(g_list_model_get_item(toplevels, i));
        g_object_unref(window);  // the list goes on holding it
        if (auto* found = findIn(window, id)) return found;
    }
    return nullptr;
}

std::string GtkHost::shown() {
    auto* stack = find("stack");
    return stack && gtk_widget_get_mapped(stack) ? gtk_stack_get_visible_child_name(GTK_STACK(stack)) : "nothing";
}

std::string GtkHost::text(const char* id) {
    auto* widget = find(id);
    if (!widget || !gtk_widget_get_mapped(widget)) return "";
    return GTK_IS_BUTTON(widget) ? gtk_button_get_label(GTK_BUTTON(widget)) : gtk_label_get_text(GTK_LABEL(widget));
}

std::size_t GtkHost::windowCount() { return g_list_model_get_n_items(gtk_window_get_toplevels()); }

void GtkHost::endWebProcess() { webkit_web_view_terminate_web_process(WEBKIT_WEB_VIEW(find("webView"))); }

void GtkHost::runInPage(const std::string& script) {
    EXPECT_TRUE(
        until([] { return shown() == "page" && !webkit_web_view_is_loading(WEBKIT_WEB_VIEW(find("webView"))); }));
    webkit_web_view_evaluate_javascript(WEBKIT_WEB_VIEW(find("webView")), script.c_str(), -1, nullptr, nullptr, nullptr,
                                        nullptr, nullptr);
}

void GtkHost::click(const char* id) {
    auto* widget = find(id);
    ASSERT_TRUE(widget);
    ASSERT_TRUE(until([=] { return gtk_widget_get_mapped(widget) && gtk_widget_get_width(widget) > 0; }));
    double x = 0;
    double y = 0;
    gtk_widget_translate_coordinates(widget, GTK_WIDGET(gtk_widget_get_root(widget)),
                                     gtk_widget_get_width(widget) / 2.0, gtk_widget_get_height(widget) / 2.0, &x, &y);
    xdotool("mousemove " + std::to_string(static_cast<int>(x)) + " " + std::to_string(static_cast<int>(y)) +
            " click 1");
}

void GtkHost::press(const std::string& key) {
    EXPECT_TRUE(until([] { return window() && gtk_window_is_active(window()); }));
    xdotool("key " + key);
}

GtkWorld::GtkWorld()
    : GtkHost([] {
          static const TemporaryFolder folder;
          const auto file = folder.path() / "authority.pem";
          std::ofstream(file) << authority().certificate();
          return UrlSessionConfiguration{file, ""};
      }()) {
    renew();
}

GtkWorld::~GtkWorld() { scene->dismiss(false); }

const CertificateAuthority& GtkWorld::authority() {
    static const CertificateAuthority authority;
    return authority;
}

void GtkWorld::renew() {
    if (scene) scene->dismiss(false);
    log = std::make_shared<SceneLog>();
    scene = Platform::current().windows->instantiateScene("libKavio", "TDSecureScene");
    scene->setObserver(log);
}

void GtkWorld::present() { Platform::current().windows->keyWindow()->rootViewController()->present(scene, true); }

void GtkWorld::showPage(const std::string& html) {
    server.servePage("/page", html);
    scene->webView()->setHidden(false);
    scene->webView()->loadUrl(server.url("/page"), std::chrono::seconds(60));
    present();
}

void GtkWorld::runHidden(const std::string& html) {
    scene->webView()->setHidden(true);
    scene->webView()->loadHtml(html);
    present();
}

}  // namespace kavio::test
