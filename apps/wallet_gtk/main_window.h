#pragma once

#include "page.h"
#include "payments.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kavio::wallet_gtk {

/// Which service to use.
struct Service {
    std::string apiKey = "demo-key";
    Kavio::EnvironmentType environment = Kavio::EnvironmentType::TEST;
};

/// The window: a bar, what failed, the payments, and below them the pages.
class MainWindow {
public:
    MainWindow(GtkApplication* application, Service service);
    ~MainWindow();
    MainWindow(const MainWindow&) = delete;
    MainWindow& operator=(const MainWindow&) = delete;

    void present() const { gtk_window_present(mWindow); }
    GtkWindow* handle() const { return mWindow; }
    std::unique_ptr<AsyncKavio> makeKavio() const;
    Payments& payments() { return *mPayments; }

    /// Shows the page in place of the tabs, until `showTabs`.
    void push(std::unique_ptr<Page> page);
    /// As soon as whatever is being done now is over. The tab that is there fetches anew what it shows.
    void showTabs();
    void showLogin();
    /// Has the page that is there show what is different after a payment.
    void refresh();

    /// Says what failed. `again` does it once more, where that makes sense.
    void fail(const KavioResult& result, std::function<void()> again = nullptr);
    /// Says something until the person has read it, with a button if there is a text for it.
    void say(const std::string& sentence, const std::string& button = {}, std::function<void()> work = nullptr);
    void sayNothing();

    /// How many more things are under way.
    void setBusy(int change);
    GtkWidget* focus() const { return gtk_window_get_focus(mWindow); }

private:
    template <class T = GtkWidget>
    T* widget(const char* id) const {
        return reinterpret_cast<T*>(gtk_builder_get_object(mBuilder.get(), id));
    }
    template <class Tab>
    void addTab(const char* name, const char* icon);
    Task start();
    Page* shown() const;
    void onTabChanged();
    void updateBar();

    const Service mService;
    const Ref<GtkBuilder> mBuilder = loadUi("window");
    GtkWindow* const mWindow = widget<GtkWindow>("window");
    std::vector<std::unique_ptr<Page>> mTabs;
    std::unique_ptr<Page> mAbove;  // null while the tabs are there
    std::unique_ptr<Payments> mPayments;
    std::function<void()> mRemedy;
    bool mHasTriedAgain = false;
    int mBusy = 0;
    std::unique_ptr<AsyncKavio> mKavio;
    std::optional<Task> mStart;
};

}  // namespace kavio::wallet_gtk
