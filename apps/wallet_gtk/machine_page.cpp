#include "machine_page.h"

#include "choice.h"
#include "command_line/translation.h"
#include "payments.h"
#include "shell.h"
#include "wording/names.h"
#include "wording/text.h"

#include <algorithm>

namespace kavio::wallet_gtk {

using PaymentType = PaymentMethod::PaymentType;
using wallet::Currency;

MachinePage::MachinePage(Shell& owner, std::shared_ptr<const Machine> machine)
    : Page(owner, wallet::titleOf(*machine), "machine"), mMachine(std::move(machine)) {
    on(widget("method"), "notify::selected", [this] { update(); });
    on(widget("amount"), "changed", [this] { update(); });
    on(widget("pay"), "clicked", [this] { pay(); });
}

Task MachinePage::load() {
    const Busy busy{window};
    const auto outcome = co_await kavio().getMachineProducts(mMachine->id);
    if (!outcome) co_return window.fail(*outcome.result, [this] { keep(load()); });
    showProducts(outcome.payload.value_or(Products{}));
    later([this, weak = alive()] {
        if (!weak.expired()) keep(loadMethods());
    });
}

Task MachinePage::loadMethods() {
    auto& kavio = freeKavio();
    const Busy busy{window};
    const auto outcome = co_await kavio.getPaymentMethods();
    if (!outcome) co_return window.fail(*outcome.result, [this] { keep(loadMethods()); });
    showMethods(outcome.payload.value_or(PaymentMethods{}));
    update();
}

/// Those that the machine takes.
void MachinePage::showMethods(const PaymentMethods& methods) {
    std::vector<std::string> names;
    const auto before = method();
    mMethods.clear();
    for (const auto& method : methods) {
        const auto deposit = std::dynamic_pointer_cast<const DepositCard>(method);
        if (deposit && method->type == PaymentType::KAVIO) mWallet = deposit;
        const auto prepaid = std::dynamic_pointer_cast<const PrepaidCard>(method);
        const bool isTaken = (method->type == PaymentType::KAVIO && mMachine->isWalletAllowed) ||
                             method->type == PaymentType::CREDIT_CARD || (prepaid && prepaid->isActive);
        if (!isTaken) continue;
        mMethods.push_back(method);
        names.push_back(deposit ? wallet::titleOf(*method) + ", " + wallet::balanceText(*deposit)
                                : wallet::titleOf(*method));
    }
    offer(widget<AdwComboRow>("method"), names);
    const auto same = [&](const auto& other) {
        return before && other->id == before->id && other->type == before->type;
    };
    if (const auto kept = std::ranges::find_if(mMethods, same); kept != mMethods.end())
        adw_combo_row_set_selected(widget<AdwComboRow>("method"), static_cast<guint>(kept - mMethods.begin()));
    if (names.empty()) window.say(tr("You have no payment method that this machine takes. Add a card first."));
}

void MachinePage::showProducts(const Products& products) {
    auto* const list = widget<GtkListBox>("products");
    clear(list);
    mSellsByCode = mMachine->supportRemoteVend && !products.empty();
    GtkCheckButton* group = nullptr;
    const auto shownIn = wallet::currencyOfCountry(mMachine->country.value_or(""));
    for (const auto& product : products) {
        auto* const row =
            makeRow(wallet::printable(product->name.value_or(tr("No name"))),
                    product->vendOut ? tr("sold out") : wallet::printable(product->department.value_or("")));
        const auto price = wallet::priceText(*product, shownIn);
        adw_action_row_add_suffix(ADW_ACTION_ROW(row), gtk_label_new(price.c_str()));
        gtk_widget_set_sensitive(row, !product->vendOut);
        if (mSellsByCode && product->codeInMap) {
            auto* const choice = gtk_check_button_new();
            gtk_widget_set_valign(choice, GTK_ALIGN_CENTER);
            gtk_check_button_set_group(GTK_CHECK_BUTTON(choice), group);
            group = GTK_CHECK_BUTTON(choice);
            adw_action_row_add_prefix(ADW_ACTION_ROW(row), choice);
            adw_action_row_set_activatable_widget(ADW_ACTION_ROW(row), choice);
            on(choice, "toggled", [this, choice, product] {
                if (gtk_check_button_get_active(GTK_CHECK_BUTTON(choice)) == FALSE) return;
                mProduct = product;
                window.sayNothing();
                update();
            });
        }
        gtk_list_box_append(list, row);
    }
    setVisible("productGroup", !products.empty());
    setVisible("amount", !mSellsByCode);
}

std::shared_ptr<const PaymentMethod> MachinePage::method() const {
    return chosen(widget<AdwComboRow>("method"), mMethods);
}

bool MachinePage::isPrepaid() const { return method() && method()->type == PaymentType::PREPAID; }

Currency MachinePage::currency() const {
    const auto own = mWallet ? wallet::currencyOf(*mWallet) : Currency{"", 2};
    return (method() ? wallet::currencyFor(*method(), *mMachine, own) : std::nullopt).value_or(own);
}

/// For a prepaid card none is sent: the machine decides what to charge.
std::optional<std::int64_t> MachinePage::amount() const {
    if (!mSellsByCode) return isPrepaid() ? 0 : wallet::smallestUnits(textOf("amount"), currency().digits);
    if (!mProduct || isPrepaid()) return mProduct ? std::optional{std::int64_t{0}} : std::nullopt;
    const auto price = wallet::priceOf(*mProduct);
    return price ? wallet::smallestUnitsOf(*price, currency().digits) : std::nullopt;
}

void MachinePage::update() {
    const auto units = amount();
    const bool isNamed = units && *units > 0;
    const auto label = isNamed ? tr("Pay {}", wallet::moneyText(*units, currency())) : tr("Pay");
    gtk_button_set_label(widget<GtkButton>("pay"), label.c_str());
    gtk_widget_set_sensitive(widget("amount"), !isPrepaid());
    setVisible("note", !mMachine->machineStatus);
}

void MachinePage::pay() {
    const auto units = amount();
    const bool isText = !mSellsByCode && !isPrepaid();
    markWrong(widget("amount"), isText && !units);
    if (mMachine->kavioId == 0)
        return window.say(tr("You cannot pay at this machine: the service gives no number for it."));
    if (!method()) return window.say(tr("Choose how to pay. You can add a card under Wallet."));
    if (mSellsByCode && !mProduct) return window.say(tr("First choose what to buy."));
    if (!units && isText)
        return window.say(tr("That is not an amount such as {}.", wallet::moneyText(150, currency())));
    if (!units) return window.say(tr("The price is not known: choose something else."));

    Purchase purchase{.title = *units > 0 ? tr("{} at {}", wallet::moneyText(*units, currency()), title) : title,
                      .kavioId = mMachine->kavioId,
                      .method = method(),
                      .amount = *units,
                      .products = {},
                      .isTooMuch = false};
    if (const auto* const card = dynamic_cast<const DepositCard*>(method().get()))
        purchase.isTooMuch = card->currency == currency().code && *units > card->balance;
    if (mSellsByCode) {
        purchase.products.push_back(std::make_shared<const RemoteVendProduct>(
            RemoteVendProduct{.codeInMap = *mProduct->codeInMap, .quantity = 1, .pulseLineNumber = 0}));
    }
    window.payments().buy(std::move(purchase));
}

}  // namespace kavio::wallet_gtk
