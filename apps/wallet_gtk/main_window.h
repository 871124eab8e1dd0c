#pragma once

#include "page.h"
#include "payments.h"
#include "shell.h"

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
class MainWindow final : public Shell {
public:
    MainWindow(GtkApplication* application, Service service);
    ~MainWindow() override;
    MainWindow(const MainWindow&) = delete;
    MainWindow& operator=(const MainWindow&) = delete;

    void present() const { gtk_window_present(mWindow); }
    GtkWindow* handle() const override { return mWindow; }
    std::unique_ptr<AsyncKavio> makeKavio() const override;
    Payments& payments() override { return *mPayments; }
    void push(std::unique_ptr<Page> page) override {
        sayNothing();
        show(std::move(page));
    }
    void showTabs() override {
        later([this] { show(nullptr); });
    }
    void showLogin() override;
    void refresh() override;
    void fail(const KavioResult& result, std::function<void()> again) override;
    void say(const std::string& sentence, const std::string& button, std::function<void()> work) override;
    void sayNothing() override;
    void setBusy(int change) override;

private:
    template <class T = GtkWidget>
    T* widget(const char* id) const {
        return reinterpret_cast<T*>(gtk_builder_get_object(mBuilder.get(), id));
    }
    template <class Tab>
    void addTab(const char* name, const char* icon);
    Task start();
    Page* shown() const;
    void show(std::unique_ptr<Page> page);
    void onTabChanged();

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
