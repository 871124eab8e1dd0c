#include "methods_tab.h"

#include "add_card_page.h"
#include "command_line/translation.h"
#include "shell.h"
#include "top_up_page.h"
#include "wording/money.h"
#include "wording/names.h"
#include "wording/text.h"

namespace kavio::wallet_gtk {

namespace {

GtkWidget* makeButton(const std::string& label, std::function<void()> onClicked) {
    auto* const button = gtk_button_new_with_label(label.c_str());
    gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
    on(button, "clicked", std::move(onClicked));
    return button;
}

}  // namespace

MethodsTab::MethodsTab(Shell& owner) : Page(owner, tr("Wallet"), "methods") {
    on(widget("add"), "clicked", [this] { window.push(std::make_unique<AddCardPage>(window)); });
    on(widget("logOut"), "clicked", [this] { keep(logOut()); });
}

Task MethodsTab::load() {
    auto& kavio = freeKavio();
    const Busy busy{window};
    const auto outcome = co_await kavio.getPaymentMethods();
    if (!outcome) co_return window.fail(*outcome.result, [this] { keep(load()); });
    show(outcome.payload.value_or(PaymentMethods{}));
}

void MethodsTab::show(const PaymentMethods& methods) {
    mMethods = methods;
    for (const auto* const list : {"wallet", "cards", "prepaid"}) clear(widget<GtkListBox>(list));
    for (const auto& method : methods) {
        const auto deposit = std::dynamic_pointer_cast<const DepositCard>(method);
        if (deposit)
            addDeposit(widget<GtkListBox>(method->type == PaymentMethod::PaymentType::KAVIO ? "wallet" : "prepaid"),
                       deposit);
        else
            addCard(*method);
    }
    for (const auto* const list : {"wallet", "cards", "prepaid"})
        setVisible(list, gtk_list_box_get_row_at_index(widget<GtkListBox>(list), 0) != nullptr);
}

void MethodsTab::addDeposit(GtkListBox* list, const std::shared_ptr<const DepositCard>& card) {
    const auto* const prepaid = dynamic_cast<const PrepaidCard*>(card.get());
    const bool isActive = prepaid == nullptr || prepaid->isActive;
    auto* const row = makeRow(wallet::titleOf(*card), isActive ? wallet::balanceText(*card) : tr("not active"));
    if (isActive) {
        adw_action_row_add_suffix(ADW_ACTION_ROW(row), makeButton(tr("Top up"), [this, card] {
                                      window.push(std::make_unique<TopUpPage>(window, card, mMethods));
                                  }));
    }
    gtk_list_box_append(list, row);
}

void MethodsTab::addCard(const PaymentMethod& card) {
    auto* const row = makeRow(wallet::titleOf(card), "");
    adw_action_row_add_suffix(ADW_ACTION_ROW(row),
                              makeButton(tr("Remove"), [this, id = card.id, name = wallet::titleOf(card)] {
                                  window.say(tr("Remove {}?", name), tr("Remove"), [this, id] { keep(remove(id)); });
                              }));
    gtk_list_box_append(widget<GtkListBox>("cards"), row);
}

Task MethodsTab::remove(std::string id) {
    auto& kavio = freeKavio();
    const auto outcome = co_await kavio.removeCard(id);
    if (!outcome) co_return window.fail(*outcome.result, [this, id] { keep(remove(id)); });
    const auto left = co_await kavio.getPaymentMethods();
    if (left) show(left.payload.value_or(PaymentMethods{}));
}

Task MethodsTab::logOut() {
    auto& kavio = freeKavio();
    const Busy busy{window, root()};
    const auto outcome = co_await kavio.logout();
    if (!outcome) co_return window.fail(*outcome.result, [this] { keep(logOut()); });
    window.showLogin();
}

}  // namespace kavio::wallet_gtk
