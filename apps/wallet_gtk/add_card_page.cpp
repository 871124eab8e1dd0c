#include "add_card_page.h"

#include "command_line/numbers.h"
#include "command_line/translation.h"
#include "shell.h"
#include "wording/card_fields.h"
#include "wording/explain.h"

#include <kavio/platform/platform.h>

#include <array>
#include <chrono>

namespace kavio::wallet_gtk {

namespace {

using wallet::CardField;

struct Entry {
    const char* widget;
    CardField field;
};
/// In the order in which they are judged.
constexpr std::array entries{Entry{"number", CardField::NUMBER}, Entry{"month", CardField::MONTH},
                             Entry{"year", CardField::YEAR},     Entry{"code", CardField::SECURITY_CODE},
                             Entry{"name", CardField::NAME},     Entry{"address", CardField::ADDRESS}};

std::chrono::year_month thisMonth() {
    const auto now = std::chrono::floor<std::chrono::days>(Platform::current().clock->now());
    const std::chrono::year_month_day today{
        std::chrono::sys_days{std::chrono::duration_cast<std::chrono::days>(now.time_since_epoch())}};
    return today.year() / today.month();
}

}  // namespace

AddCardPage::AddCardPage(Shell& owner) : Page(owner, tr("Add a card"), "add_card") {
    for (const auto& entry : entries) on(widget(entry.widget), "entry-activated", [this] { keep(store()); });
    on(widget("store"), "clicked", [this] { keep(store()); });
}

AddCardPage::~AddCardPage() {
    for (const auto* const entry : {"number", "code"}) setText(entry, "");
}

bool AddCardPage::isRight() {
    wallet::CardJudge judge{thisMonth()};
    bool isRight = true;
    for (const auto& [entry, field] : entries) {
        const auto problem = judge.problemWith(field, wallet::tidied(field, textOf(entry)));
        markWrong(widget(entry), !problem.empty());
        if (problem.empty() || !isRight) continue;
        isRight = false;
        window.say(problem);
        focus(entry);
    }
    return isRight;
}

Operation<std::shared_ptr<const CreditCard>> AddCardPage::operation() {
    const auto entered = [this](const Entry& entry) { return wallet::tidied(entry.field, textOf(entry.widget)); };
    const auto number = [&](const Entry& entry) {
        return command_line::numberFrom<std::int64_t>(entered(entry)).value_or(0);
    };
    const auto& [pan, month, year, code, name, address] = entries;
    if (gtk_switch_get_active(widget<GtkSwitch>("secure")) != FALSE) {
        return kavio().addCreditCardTDSecure({entered(pan), number(month), number(year), number(code)},
                                             {.name = entered(name), .email = entered(address)});
    }
    return kavio().addCreditCard(std::make_shared<const Card>(
        Card{entered(pan), entered(month), entered(year), entered(code), entered(address)}));
}

Task AddCardPage::store() {
    if (!isRight()) co_return;
    const Busy busy{window, root()};
    window.sayNothing();
    const auto outcome = co_await operation();
    if (outcome) {
        window.say(tr("The card was stored."));
        window.showTabs();
    } else if (outcome.result->effect == Effect::UNKNOWN) {
        window.say(wallet::explain(*outcome.result).problem + " " +
                   tr("The card may have been stored anyway: look in the wallet before you add it again."));
    } else {
        window.fail(*outcome.result, [this] { keep(store()); });
    }
}

}  // namespace kavio::wallet_gtk
