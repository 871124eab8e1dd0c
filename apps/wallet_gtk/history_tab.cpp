#include "history_tab.h"

#include "command_line/translation.h"
#include "shell.h"
#include "wording/money.h"
#include "wording/names.h"
#include "wording/text.h"

#include <string_view>

namespace kavio::wallet_gtk {

namespace {

constexpr std::int64_t ordersAtOnce = 30;
// What a row keeps for its list.
constexpr const char* dayKey = "day";
constexpr const char* searchedKey = "searched";

const char* kept(gpointer row, const char* key) {
    return static_cast<const char*>(g_object_get_data(G_OBJECT(row), key));
}
void keep(gpointer row, const char* key, const std::string& text) {
    g_object_set_data_full(G_OBJECT(row), key, g_strdup(text.c_str()), g_free);
}

/// For comparing, whatever the case.
std::string folded(const std::string& text) {
    char* const lower = g_utf8_casefold(text.c_str(), -1);
    std::string result = lower;
    g_free(lower);
    return result;
}

GtkWidget* makeOrderRow(const Order& order) {
    const auto amount = order.amount < 0 ? std::string{} : wallet::moneyText(order.amount, order.currency);
    const auto title = wallet::capitalized(wallet::printable(wallet::orderTypeName(order.type)));
    const auto subtitle = wallet::timeOfDay(order.date) + " · " + wallet::statusName(order.status) + " · " +
                          wallet::printable(wallet::paymentSourceName(order.paymentSource)) + " · " +
                          wallet::printable(order.id);
    auto* const row = makeRow(title, subtitle);
    adw_action_row_add_suffix(ADW_ACTION_ROW(row), gtk_label_new(amount.c_str()));
    keep(row, dayKey, wallet::localDay(order.date));
    keep(row, searchedKey, folded(wallet::localTime(order.date) + " " + title + " " + subtitle + " " + amount));
    return row;
}

/// The day stands above the first of its orders.
void setHeading(GtkListBoxRow* row, GtkListBoxRow* before, gpointer /*unused*/) {
    const std::string day = kept(row, dayKey);
    if (before != nullptr && day == kept(before, dayKey)) return gtk_list_box_row_set_header(row, nullptr);
    auto* const heading = gtk_label_new(day.c_str());
    gtk_widget_add_css_class(heading, "heading");
    gtk_label_set_xalign(GTK_LABEL(heading), 0);
    for (const auto set : {gtk_widget_set_margin_start, gtk_widget_set_margin_top}) set(heading, 14);
    gtk_list_box_row_set_header(row, heading);
}

gboolean isSearched(GtkListBoxRow* row, gpointer search) {
    const auto text = folded(gtk_editable_get_text(GTK_EDITABLE(search)));
    return std::string_view{kept(row, searchedKey)}.find(text) != std::string_view::npos;
}

}  // namespace

HistoryTab::HistoryTab(Shell& owner) : Page(owner, tr("History"), "history") {
    auto* const list = widget<GtkListBox>("list");
    gtk_list_box_set_header_func(list, setHeading, nullptr, nullptr);
    gtk_list_box_set_filter_func(list, isSearched, widget("search"), nullptr);
    on(widget("search"), "search-changed", [list] { gtk_list_box_invalidate_filter(list); });
    on(widget("older"), "clicked", [this] { Page::keep(load()); });
}

void HistoryTab::onShown() {
    mOldest = nullptr;
    Page::keep(load());
}

Task HistoryTab::load() {
    auto& kavio = freeKavio();
    const Busy busy{window};
    const auto oldest = mOldest;
    std::optional<Date> before;
    if (oldest) before = oldest->date;
    const auto filter = std::make_shared<const TransactionFilter>(
        TransactionFilter{.limit = ordersAtOnce, .transactionsBefore = before});
    const auto outcome = co_await kavio.getTransactions(filter);
    if (!outcome) co_return window.fail(*outcome.result, [this] { Page::keep(load()); });
    auto* const list = widget<GtkListBox>("list");
    if (!oldest) clear(list);
    const auto orders = outcome.payload.value_or(Orders{});
    for (const auto& order : orders) gtk_list_box_append(list, makeOrderRow(*order));
    if (!orders.empty()) mOldest = orders.back();
    const bool isEmpty = gtk_list_box_get_row_at_index(list, 0) == nullptr;
    setVisible("list", !isEmpty);
    setVisible("nothing", isEmpty);
    setVisible("older", orders.size() >= static_cast<std::size_t>(ordersAtOnce));
}

}  // namespace kavio::wallet_gtk
