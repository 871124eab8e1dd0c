#include "platform/gtk/secure_scene.h"

#include "platform/gtk/texts.h"

#include <webkit/webkit.h>

#include <array>
#include <string>
#include <utility>

void kavio_gtk_register_resource();  // in the storyboard's generated source

namespace kavio {
namespace {

// Of a widget and all in it. The page keeps its own direction.
void setDirection(GtkWidget* widget, GtkTextDirection direction) {
    gtk_widget_set_direction(widget, direction);
    for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child)) {
        if (!WEBKIT_IS_WEB_VIEW(child)) setDirection(child, direction);
    }
}

constexpr const char* storyboard = "/kavio/storyboards/libKavio.ui";
constexpr const char* identifier = "TDSecureScene";

// The objects of the scene; null when they cannot be loaded.
ObjectPointer<GtkBuilder> loadScene() {
    // A resource that registers itself would be dropped where the library is linked statically.
    static const bool registered = (kavio_gtk_register_resource(), GtkWebView::registerTypes(), true);
    static_cast<void>(registered);
    // Session and context are not part of the scene's tree, and a window of another name would stay around unseen.
    std::array<const char*, 4> objects{"session", "context", identifier, nullptr};
    ObjectPointer<GtkBuilder> builder(gtk_builder_new());
    GError* error = nullptr;
    if (gtk_builder_add_objects_from_resource(builder.get(), storyboard, objects.data(), &error)) return builder;
    g_warning("kavio: %s", error->message);
    g_error_free(error);
    return nullptr;
}

ObjectPointer<GdkMonitor> monitorOf(GtkWindow* window) {
    GdkDisplay* display = gtk_widget_get_display(GTK_WIDGET(window));
    GdkSurface* surface = gtk_native_get_surface(GTK_NATIVE(window));
    GdkMonitor* monitor = surface ? gdk_display_get_monitor_at_surface(display, surface) : nullptr;
    if (monitor) return retained(monitor);
    return ObjectPointer<GdkMonitor>(
        static_cast<GdkMonitor*>(g_list_model_get_item(gdk_display_get_monitors(display), 0)));
}

void coverMonitor(GtkWindow* window, GdkMonitor* monitor) {
    // Without a window manager nobody makes a window full screen, so its own size has to do.
    GdkRectangle area{};
    if (monitor) gdk_monitor_get_geometry(monitor, &area);
    if (area.width > 0) gtk_window_set_default_size(window, area.width, area.height);
    gtk_window_fullscreen(window);
}

}  // namespace

std::shared_ptr<GtkScene> GtkScene::make(const std::filesystem::path& authorities) {
    auto builder = loadScene();
    auto* window = builder ? gtk_builder_get_object(builder.get(), identifier) : nullptr;
    if (!window || !GTK_IS_WINDOW(window)) return nullptr;
    std::shared_ptr<GtkScene> scene(new GtkScene(std::move(builder), GTK_WINDOW(window)));
    scene->translate();
    scene->connect(authorities);
    scene->onPageChanged({});
    return scene;
}

GtkScene::GtkScene(ObjectPointer<GtkBuilder> builder, GtkWindow* window)
    : mBuilder(std::move(builder)), mWindow(window) {}

// Told to screen readers that look at the object, and to those that listen for changes. Relations to labels would not
// be: GTK tells nobody that a name has changed with its label.
void GtkScene::describe(const char* id, GtkAccessibleProperty property, const char* text) const {
    gtk_accessible_update_property(widget<GtkAccessible>(id), property, text, -1);
}

void GtkScene::translate() {
    auto* close = widget<GtkWidget>("close");
    const auto closeTip = sceneText(gtk_widget_get_tooltip_text(close));
    gtk_button_set_label(GTK_BUTTON(close), sceneText(gtk_button_get_label(GTK_BUTTON(close))).c_str());
    gtk_widget_set_tooltip_text(close, closeTip.c_str());
    describe("close", GTK_ACCESSIBLE_PROPERTY_LABEL, closeTip.c_str());
    gtk_window_set_title(mWindow, sceneText(gtk_window_get_title(mWindow)).c_str());
    for (const auto* label : {"title", "failed", "failedHint"})
        setText(label, gtk_label_get_text(widget<GtkLabel>(label)));
    describe("failedPage", GTK_ACCESSIBLE_PROPERTY_LABEL, textOf("failed"));
    describe("failedPage", GTK_ACCESSIBLE_PROPERTY_DESCRIPTION, textOf("failedHint"));
    // Whoever translated them: the texts say themselves which way they run.
    setDirection(GTK_WIDGET(mWindow),
                 isRightToLeft(gtk_window_get_title(mWindow)) ? GTK_TEXT_DIR_RTL : GTK_TEXT_DIR_LTR);
    describe("progress", GTK_ACCESSIBLE_PROPERTY_LABEL, sceneText("One moment, please…").c_str());
}

void GtkScene::connect(const std::filesystem::path& authorities) {
    // Takes Escape before the page does, which could keep it for itself.
    GtkEventController* keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    mConnections.connect<&GtkScene::onKeyPressed>(keys, "key-pressed", this);
    gtk_widget_add_controller(GTK_WIDGET(mWindow), keys);
    mConnections.connect<&GtkScene::onCloseClicked>(widget<GtkButton>("close"), "clicked", this);
    mConnections.connect<&GtkScene::onBackClicked>(widget<GtkButton>("back"), "clicked", this);
    mConnections.connect<&GtkScene::onCloseRequest>(mWindow, "close-request", this);
    mConnections.connect<&GtkScene::onUnrealized>(mWindow, "unrealize", this);
    mWebView = GtkWebView::make(widget<GtkWidget>("webView"), authorities);
    mWebView->observer = weak_from_this();
}

GtkScene::~GtkScene() { dismiss(false); }

std::shared_ptr<ViewController> GtkScene::presentedViewController() const {
    return mWindow ? screenAbove(mWindow) : nullptr;
}

void GtkScene::present(const std::shared_ptr<ViewController>& scene, bool animated) {
    if (mWindow) HostScreen(mWindow).present(scene, animated);
}

void GtkScene::showAbove(GtkWindow* parent) {
    if (!mWindow || mIsShown) return;
    mIsShown = true;
    gtk_window_set_application(mWindow, gtk_window_get_application(parent));
    gtk_window_set_transient_for(mWindow, parent);
    gtk_window_set_modal(mWindow, TRUE);
    coverMonitor(mWindow, monitorOf(parent).get());

    tell(&ViewLifecycle::onViewDidLoad);
    if (mWindow) tell(&ViewLifecycle::onViewWillAppear);
    if (!mWindow) return;  // dismissed by whoever was told
    gtk_window_present(mWindow);
    tell(&ViewLifecycle::onViewDidAppear);
}

void GtkScene::dismiss(bool) {
    GtkWindow* window = std::exchange(mWindow, nullptr);
    if (!window) return;
    g_clear_handle_id(&mAskingAgain, g_source_remove);
    mConnections.clear();
    mWebView->close();
    if (mIsShown) tell(&ViewLifecycle::onViewWillDisappear);
    gtk_window_destroy(window);
    if (mIsShown) tell(&ViewLifecycle::onViewDidDisappear);
    // Everything goes, although somebody may hold the scene for a while.
    mWebView.reset();
    mBuilder.reset();
}

void GtkScene::onNavigation(const std::optional<std::string>& url) {
    if (const auto told = delegate.lock()) told->onRedirect(url);
}

void GtkScene::onPageChanged(const Page& page) {
    if (!mWindow) return;
    const bool hasFailed = page.phase == Page::Phase::FAILED;
    const bool isShown = page.phase == Page::Phase::SHOWN && !page.isHidden;
    setText("working", page.isHidden ? "Your card is being checked…" : "One moment, please…");
    for (const auto* id : {"workingPage", "spinner"}) describe(id, GTK_ACCESSIBLE_PROPERTY_LABEL, textOf("working"));
    gtk_button_set_label(widget<GtkButton>("back"), sceneText(page.hasArrived ? "Back" : "Try again").c_str());

    const bool hasHost = isShown && !page.host.empty();
    gtk_widget_set_visible(widget<GtkWidget>("address"), hasHost);
    gtk_label_set_text(widget<GtkLabel>("host"), page.host.c_str());
    gtk_widget_set_tooltip_text(widget<GtkWidget>("host"), page.host.c_str());
    setText("security", page.isSecure ? "Secure connection" : "The connection is not secure");
    std::array<const char*, 2> style{page.isSecure ? "caption" : "caption-heading", nullptr};
    gtk_widget_set_css_classes(widget<GtkWidget>("security"), style.data());
    describe("webView", GTK_ACCESSIBLE_PROPERTY_LABEL, hasHost ? page.host.c_str() : textOf("title"));
    describe("webView", GTK_ACCESSIBLE_PROPERTY_DESCRIPTION, hasHost ? textOf("security") : "");

    // Nothing that acts has the focus unless the person gives it: a key pressed on the way decides nothing.
    const char* focus = isShown ? "webView" : hasFailed ? "failedPage" : "workingPage";
    if (std::exchange(mFocus, focus) != focus) uncover(widget<GtkWidget>(focus));
    auto* progress = widget<GtkProgressBar>("progress");
    gtk_progress_bar_set_fraction(progress, page.progress);
    gtk_widget_set_visible(GTK_WIDGET(progress), page.progress > 0 && !hasFailed && !page.isHidden);
}

// The page runs under the cover, too, but neither the person nor a screen reader gets at it there.
void GtkScene::uncover(GtkWidget* shown) {
    auto* view = widget<GtkWidget>("webView");
    const bool isShown = shown == view;
    gtk_widget_set_sensitive(view, isShown);
    gtk_accessible_update_state(GTK_ACCESSIBLE(view), GTK_ACCESSIBLE_STATE_HIDDEN, !isShown, -1);
    // What has the focus loses it before it goes; otherwise the focus would pass through a button.
    if (!isShown) gtk_widget_set_visible(gtk_widget_get_parent(shown), TRUE);
    gtk_widget_grab_focus(shown);
    for (auto* covering : {widget<GtkWidget>("workingPage"), widget<GtkWidget>("failedPage")}) {
        gtk_widget_set_visible(gtk_widget_get_parent(covering), covering == shown);
    }
}

void GtkScene::setText(const char* label, const char* text) const {
    gtk_label_set_text(widget<GtkLabel>(label), sceneText(text).c_str());
}

void GtkScene::askToClose() {
    const auto self = weak_from_this().lock();  // whoever is asked may let go of it
    if (const auto asked = delegate.lock()) asked->onCloseClicked();
}

void GtkScene::onUnrealized() {
    askToClose();
    if (!mWindow || mAskingAgain) return;
    // Where there was no memory to answer, nobody else is left to ask.
    mAskingAgain = g_timeout_add(
        100,
        [](gpointer self) -> gboolean {
            guarded([&] { static_cast<GtkScene*>(self)->askToClose(); });
            return G_SOURCE_CONTINUE;  // until it is dismissed
        },
        this);
}

gboolean GtkScene::onCloseRequest() {
    askToClose();
    return TRUE;  // the window goes when the scene is dismissed
}

gboolean GtkScene::onKeyPressed(guint key, guint, int) {
    if (key != GDK_KEY_Escape) return FALSE;
    askToClose();
    return TRUE;
}

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
