#include "top_up_page.h"

#include "choice.h"
#include "command_line/translation.h"
#include "payments.h"
#include "shell.h"
#include "wording/money.h"
#include "wording/names.h"

namespace kavio::wallet_gtk {

TopUpPage::TopUpPage(Shell& owner, std::shared_ptr<const DepositCard> card, const PaymentMethods& methods)
    : Page(owner, tr("Top up"), "top_up"), mCard(std::move(card)) {
    std::vector<std::string> names;
    for (const auto& method : methods) {
        if (method->type != PaymentMethod::PaymentType::CREDIT_CARD) continue;
        mCharged.push_back(method);
        names.push_back(wallet::titleOf(*method));
    }
    offer(widget<AdwComboRow>("charged"), names);
    const auto balance = tr("{}: {}", wallet::titleOf(*mCard), wallet::balanceText(*mCard));
    adw_preferences_group_set_description(widget<AdwPreferencesGroup>("group"), balance.c_str());
    on(widget("topUp"), "clicked", [this] { topUp(); });
    on(widget("amount"), "entry-activated", [this] { topUp(); });
}

void TopUpPage::topUp() {
    const auto currency = wallet::currencyOf(*mCard);
    const auto units = wallet::smallestUnits(textOf("amount"), currency.digits);
    const auto amount = units ? wallet::wholeUnits(*units, currency.digits) : std::nullopt;
    const auto charged = chosen(widget<AdwComboRow>("charged"), mCharged);
    markWrong(widget("amount"), !amount);
    if (!amount) return window.say(tr("That is not an amount such as {}.", wallet::moneyText(2000, currency)));
    if (!charged) return window.say(tr("There is no card to charge. Add one first."));
    window.payments().topUp({tr("Top-up of {}", wallet::moneyText(*units, currency)), mCard, *amount, charged->id});
}

}  // namespace kavio::wallet_gtk
