#pragma once

#include "platform/gtk/web_view.h"

#include <filesystem>
#include <string_view>

namespace kavio {

/// A scene of the storyboard, in its own window.
class GtkScene final : public TDSecureScene, public PageObserver, public std::enable_shared_from_this<GtkScene> {
public:
    /// Null when the storyboard cannot be loaded.
    static std::shared_ptr<GtkScene> make(const std::filesystem::path& authorities);
    ~GtkScene() override;

    std::shared_ptr<WebView> webView() const override { return mWebView; }
    std::shared_ptr<ViewController> presentedViewController() const override;
    void present(const std::shared_ptr<ViewController>& scene, bool animated) override;
    void dismiss(bool animated) override;
    void showAbove(GtkWindow* parent);
    /// Starts what its first page will run in.
    void prepare() const { mWebView->prepare(); }

    void onNavigation(const std::optional<std::string>& url) override;
    void onPageChanged(const Page& page) override;

private:
    GtkScene(ObjectPointer<GtkBuilder> builder, GtkWindow* window);
    void translate();
    void connect(const std::filesystem::path& authorities);
    template <class Widget>
    Widget* widget(const char* id) const {
        return reinterpret_cast<Widget*>(gtk_builder_get_object(mBuilder.get(), id));
    }
    void uncover(GtkWidget* shown);
    void describe(const char* id, GtkAccessibleProperty property, const char* text) const;
    const char* textOf(const char* label) const { return gtk_label_get_text(widget<GtkLabel>(label)); }
    void setText(const char* label, const char* text) const;

    void onCloseClicked() { askToClose(); }
    gboolean onCloseRequest();
    gboolean onKeyPressed(guint key, guint code, int modifiers);
    /// The host application has destroyed the window, perhaps with all its windows: to the library, the person left.
    void onUnrealized();
    void askToClose();
    void onBackClicked() { mWebView->goBack(); }

    ObjectPointer<GtkBuilder> mBuilder;
    GtkWindow* mWindow;
    std::shared_ptr<GtkWebView> mWebView;
    bool mIsShown = false;
    guint mAskingAgain = 0;   // a timer
    std::string_view mFocus;  // which widget was given it
    SignalConnections mConnections;
};

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
