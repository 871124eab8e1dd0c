#include "gtk/gtk_world.h"

#include "support/eventually.h"

#include <kavio/gtk.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

// All that is needed of a header that takes seconds to compile.
extern "C" void webkit_web_view_terminate_web_process(GtkWidget* view);

namespace kavio::test {
namespace {

// One for the whole run, as in a real program.
GtkApplication* application(const CertificateAuthority& authority) {
    static GtkApplication* made = [&authority] {
        static const TemporaryFolder folder;
        auto* app = gtk_application_new(nullptr, G_APPLICATION_NON_UNIQUE);
        g_application_register(G_APPLICATION(app), nullptr, nullptr);
        LinuxPlatformOptions options;
        options.storeDirectory = folder.path();
        options.session.certificateAuthorities = folder.path() / "authority.pem";
        std::ofstream(options.session.certificateAuthorities) << authority.certificate();
        Platform::install(makeGtkPlatform(app, options));
        return app;
    }();
    return made;
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

GtkWorld::GtkWorld() : host(GTK_WINDOW(gtk_application_window_new(application(authority())))) {
    gtk_window_set_default_size(host, 200, 200);
    gtk_window_present(host);
    EXPECT_TRUE(until([this] { return gtk_widget_get_mapped(GTK_WIDGET(host)); }));
    renew();
}

const CertificateAuthority& GtkWorld::authority() {
    static const CertificateAuthority authority;
    return authority;
}

GtkWorld::~GtkWorld() {
    scene->dismiss(false);
    gtk_window_destroy(host);
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

bool GtkWorld::until(const std::function<bool()>& condition) {
    return eventually([&] {
        while (g_main_context_iteration(nullptr, FALSE)) {
        }
        return condition();
    });
}

GtkWidget* GtkWorld::find(std::string_view id) {
    GListModel* toplevels = gtk_window_get_toplevels();
    for (guint i = 0; i < g_list_model_get_n_items(toplevels); ++i) {
        auto* window = static_cast<GtkWidget*>(g_list_model_get_item(toplevels, i));
        g_object_unref(window);  // the list goes on holding it
        if (auto* found = findIn(window, id)) return found;
    }
    return nullptr;
}

std::string GtkWorld::shown() const {
    auto* stack = find("stack");
    return stack && gtk_widget_get_mapped(stack) ? gtk_stack_get_visible_child_name(GTK_STACK(stack)) : "nothing";
}

std::string GtkWorld::text(const char* id) const {
    auto* widget = find(id);
    if (!widget || !gtk_widget_get_mapped(widget)) return "";
    return GTK_IS_BUTTON(widget) ? gtk_button_get_label(GTK_BUTTON(widget)) : gtk_label_get_text(GTK_LABEL(widget));
}

std::size_t GtkWorld::windowCount() { return g_list_model_get_n_items(gtk_window_get_toplevels()); }

void GtkWorld::endWebProcess() { webkit_web_view_terminate_web_process(find("webView")); }

void GtkWorld::click(const char* id) const {
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

void GtkWorld::press(const std::string& key) const {
    EXPECT_TRUE(until([this] { return window() && gtk_window_is_active(window()); }));
    xdotool("key " + key);
}

}  // namespace kavio::test
