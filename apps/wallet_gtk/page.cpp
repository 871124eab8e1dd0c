#include "page.h"

#include "main_window.h"

namespace kavio::wallet_gtk {

namespace {

Ref<GtkWidget> retained(GtkWidget* widget) {
    return Ref<GtkWidget>{widget == nullptr ? nullptr : GTK_WIDGET(g_object_ref(widget))};
}

}  // namespace

Ref<GtkBuilder> loadUi(const char* file) {
    const auto path = std::string("/example/kavio/Wallet/") + file + ".ui";
    Ref<GtkBuilder> builder{gtk_builder_new()};
    gtk_builder_set_translation_domain(builder.get(), "kavio-wallet");
    GError* error = nullptr;
    // The files are part of the program: one that cannot be read is a mistake in it.
    if (gtk_builder_add_from_resource(builder.get(), path.c_str(), &error) == FALSE) g_error("%s", error->message);
    return builder;
}

Page::Page(MainWindow& owner, std::string name, const char* file)
    : title(std::move(name)), window(owner), mBuilder(loadUi(file)), mKavio(owner.makeKavio()) {}

void Page::focus(const char* id) const {
    later([wanted = widget(id), weak = alive()] {
        if (!weak.expired()) gtk_widget_grab_focus(wanted);
    });
}

AsyncKavio& Page::freeKavio() {
    if (mKavio->kavio().isBusy()) mKavio = window.makeKavio();
    return *mKavio;
}

Busy::Busy(MainWindow& window, GtkWidget* controls)
    : mWindow(window), mControls(retained(controls)), mFocus(retained(controls ? window.focus() : nullptr)) {
    mWindow.setBusy(+1);
    if (!mControls) return;
    gtk_window_set_focus(mWindow.handle(), nullptr);  // GTK warns of an entry that loses its use first
    gtk_widget_set_sensitive(mControls.get(), FALSE);
}

Busy::~Busy() {
    mWindow.setBusy(-1);
    if (!mControls) return;
    gtk_widget_set_sensitive(mControls.get(), TRUE);
    if (mFocus && gtk_widget_is_ancestor(mFocus.get(), mControls.get())) gtk_widget_grab_focus(mFocus.get());
}

void clear(GtkListBox* list) {
    while (auto* const row = gtk_list_box_get_row_at_index(list, 0)) gtk_list_box_remove(list, GTK_WIDGET(row));
}

GtkWidget* makeRow(const std::string& title, const std::string& subtitle) {
    auto* const row = adw_action_row_new();
    adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row), FALSE);
    adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), title.c_str());
    adw_action_row_set_subtitle(ADW_ACTION_ROW(row), subtitle.c_str());
    return row;
}

void markWrong(GtkWidget* entry, bool isWrong) {
    isWrong ? gtk_widget_add_css_class(entry, "error") : gtk_widget_remove_css_class(entry, "error");
    gtk_accessible_update_state(GTK_ACCESSIBLE(entry), GTK_ACCESSIBLE_STATE_INVALID,
                                isWrong ? GTK_ACCESSIBLE_INVALID_TRUE : GTK_ACCESSIBLE_INVALID_FALSE, -1);
}

}  // namespace kavio::wallet_gtk
