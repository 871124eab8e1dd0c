#include "log_in.h"

#include "command_line/translation.h"
#include "shell.h"
#include "wording/language.h"
#include "wording/text.h"

#include <algorithm>

namespace kavio::wallet_gtk {

namespace {

bool isCountry(const std::string& text) {
    return text.size() == 2 && std::ranges::all_of(text, [](char letter) { return g_ascii_isalpha(letter); });
}

}  // namespace

LogIn::LogIn(Shell& owner) : Page(owner, tr("Log in"), "log_in") {
    setText("country", wallet::ownCountry());
    on(widget("send"), "clicked", [this] { keep(askForCode()); });
    for (const auto* const entry : {"countryCode", "phone", "country"})
        on(widget(entry), "entry-activated", [this] { keep(askForCode()); });
    on(widget("code"), "entry-activated", [this] { keep(verify()); });
    on(widget("logIn"), "clicked", [this] { keep(verify()); });
    on(widget("other"), "clicked", [this] {
        window.sayNothing();
        ask(false);
    });
    ask(false);
}

void LogIn::ask(bool forCode) {
    setVisible("phoneGroup", !forCode);
    setVisible("codeGroup", forCode);
    setText("code", "");
    focus(forCode ? "code" : "phone");
}

std::string LogIn::countryCode() const {
    const auto code = textOf("countryCode");
    return code.starts_with('+') ? code.substr(1) : code;
}

Task LogIn::askForCode() {
    for (const auto* const entry : {"countryCode", "phone", "country"}) {
        const bool isRight = entry == std::string_view("country") ? isCountry(textOf(entry)) : !textOf(entry).empty();
        markWrong(widget(entry), !isRight);
        if (isRight) continue;
        window.say(tr("Enter the phone’s country code, such as 49, its number, and its country, such as DE."));
        focus(entry);
        co_return;
    }
    const Busy busy{window, root()};
    window.sayNothing();
    const auto outcome = co_await kavio().login(countryCode(), textOf("phone"));
    if (!outcome) co_return window.fail(*outcome.result, [this] { keep(askForCode()); });
    ask(true);
    const auto told = tr("A code was sent to +{} {}.", countryCode(), textOf("phone"));
    adw_preferences_group_set_description(widget<AdwPreferencesGroup>("codeGroup"), told.c_str());
}

Task LogIn::verify() {
    const Busy busy{window, root()};
    window.sayNothing();
    const auto outcome = co_await kavio().verify(textOf("code"), textOf("country"), countryCode(), textOf("phone"));
    if (outcome) {
        window.showTabs();
    } else if (const auto cause = outcome.result->cause;
               cause == Cause::REFUSED_BY_SERVICE || cause == Cause::SESSION_REFUSED) {
        const auto said = outcome.result->message ? " (" + wallet::printable(*outcome.result->message) + ")" : "";
        window.say(tr("The code was not accepted. Look at the message on the phone, and enter the code again.") + said);
    } else {
        window.fail(*outcome.result, [this] { keep(verify()); });
    }
}

}  // namespace kavio::wallet_gtk
