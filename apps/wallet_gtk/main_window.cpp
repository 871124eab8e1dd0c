#include "main_window.h"

#include "command_line/translation.h"
#include "history_tab.h"
#include "log_in.h"
#include "machines_tab.h"
#include "methods_tab.h"
#include "wording/explain.h"

#include <algorithm>

namespace kavio::wallet_gtk {

MainWindow::MainWindow(GtkApplication* application, Service service)
    : mService(std::move(service)), mPayments(std::make_unique<Payments>(*this, widget<GtkListBox>("payments"))) {
    gtk_window_set_application(mWindow, application);
    addTab<MachinesTab>("machines", "mark-location-symbolic");
    addTab<MethodsTab>("methods", "auth-smartcard-symbolic");
    addTab<HistoryTab>("history", "document-open-recent-symbolic");
    on(widget("tabs"), "notify::visible-child", [this] { onTabChanged(); });
    on(widget("back"), "clicked", [this] {
        sayNothing();
        showTabs();
    });
    on(widget("close"), "clicked", [this] { sayNothing(); });
    on(widget("remedy"), "clicked", [this] {
        const auto work = mRemedy;
        sayNothing();
        mHasTriedAgain = true;
        work();
    });
    mPayments->showThoseInDoubt();
    mKavio = makeKavio();
    mStart.emplace(start());
}

/// The widgets go first: what they call must still be there.
MainWindow::~MainWindow() {
    gtk_window_destroy(mWindow);
    mStart.reset();
}

template <class Tab>
void MainWindow::addTab(const char* name, const char* icon) {
    mTabs.push_back(std::make_unique<Tab>(*this));
    const auto& tab = *mTabs.back();
    adw_view_stack_add_titled_with_icon(widget<AdwViewStack>("tabs"), tab.root(), name, tab.title.c_str(), icon);
}

/// Without a network, the person sees at least what there is.
Task MainWindow::start() {
    const Busy busy{*this};
    const auto outcome = co_await mKavio->isLoggedIn();
    const auto cause = outcome.result->cause;
    if (cause == Cause::NO_SESSION || cause == Cause::SESSION_REFUSED)
        showLogin();
    else
        onTabChanged();
}

std::unique_ptr<AsyncKavio> MainWindow::makeKavio() const {
    return std::make_unique<AsyncKavio>(mService.apiKey, mService.environment);
}

/// The tabs, if there is no page.
void MainWindow::show(std::unique_ptr<Page> page) {
    const bool isPage = page != nullptr;
    if (mAbove && mRemedy) sayNothing();  // the page that goes would be asked to try again
    auto* const pages = widget<GtkStack>("pages");
    const auto before = std::exchange(mAbove, std::move(page));
    if (isPage) gtk_stack_add_child(pages, mAbove->root());
    gtk_stack_set_visible_child(pages, isPage ? mAbove->root() : widget("tabs"));
    if (before) gtk_stack_remove(pages, before->root());
    auto* const switcher = widget<AdwViewSwitcherTitle>("switcher");
    adw_view_switcher_title_set_title(switcher, isPage ? mAbove->title.c_str() : gtk_window_get_title(mWindow));
    adw_view_switcher_title_set_view_switcher_enabled(switcher, !isPage);
    gtk_widget_set_visible(widget("back"), isPage && dynamic_cast<LogIn*>(mAbove.get()) == nullptr);
    if (auto* const now = shown()) now->onShown();
}

void MainWindow::showLogin() {
    later([this] {
        if (dynamic_cast<LogIn*>(mAbove.get()) == nullptr) show(std::make_unique<LogIn>(*this));
    });
}

Page* MainWindow::shown() const {
    if (mAbove) return mAbove.get();
    auto* const child = adw_view_stack_get_visible_child(widget<AdwViewStack>("tabs"));
    const auto tab = std::ranges::find(mTabs, child, [](const auto& page) { return page->root(); });
    return tab == mTabs.end() ? nullptr : tab->get();
}

void MainWindow::onTabChanged() {
    auto* const page = shown();
    if (page == nullptr || mAbove) return;
    sayNothing();
    page->onShown();
}

void MainWindow::refresh() {
    if (auto* const page = shown()) page->onPaid();
}

void MainWindow::fail(const KavioResult& result, std::function<void()> again) {
    if (result.cause == Cause::RELEASED) return;  // the person has gone on to something else
    // The next operation sets the clock.
    if (result.cause == Cause::SIGNATURE_REFUSED && again && !std::exchange(mHasTriedAgain, true)) return later(again);
    mHasTriedAgain = false;
    const auto [problem, advice, remedy] = wallet::explain(result);
    const bool isRepeatable = remedy == wallet::Explanation::Remedy::TRY_AGAIN && again;
    say(advice.empty() ? problem : problem + " " + advice, isRepeatable ? tr("Try again") : "", std::move(again));
    if (remedy == wallet::Explanation::Remedy::LOG_IN) showLogin();
}

void MainWindow::say(const std::string& sentence, const std::string& button, std::function<void()> work) {
    mRemedy = std::move(work);
    gtk_label_set_text(widget<GtkLabel>("noticeText"), sentence.c_str());
    gtk_button_set_label(widget<GtkButton>("remedy"), button.c_str());
    gtk_widget_set_visible(widget("remedy"), !button.empty());
    gtk_accessible_update_property(widget<GtkAccessible>("notice"), GTK_ACCESSIBLE_PROPERTY_LABEL, sentence.c_str(),
                                   -1);
    gtk_widget_set_visible(widget("notice"), TRUE);
}

void MainWindow::sayNothing() {
    mRemedy = nullptr;
    gtk_widget_set_visible(widget("notice"), FALSE);
}

void MainWindow::setBusy(int change) {
    mBusy += change;
    gtk_spinner_set_spinning(widget<GtkSpinner>("spinner"), mBusy > 0);
}

}  // namespace kavio::wallet_gtk
