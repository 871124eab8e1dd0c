#pragma once

#include <kavio/async.h>

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <string>

namespace kavio::wallet_gtk {

class Page;
class Payments;

/// What pages have around them.
class Shell {
public:
    virtual ~Shell() = default;

    virtual GtkWindow* handle() const = 0;
    virtual std::unique_ptr<AsyncKavio> makeKavio() const = 0;
    virtual Payments& payments() = 0;

    /// Shows the page in place of the tabs, until `showTabs`.
    virtual void push(std::unique_ptr<Page> page) = 0;
    /// As soon as whatever is being done now is over. The tab that is there fetches anew what it shows.
    virtual void showTabs() = 0;
    virtual void showLogin() = 0;
    /// Has the page that is there show what is different after a payment.
    virtual void refresh() = 0;

    /// Says what failed. `again` does it once more, where that makes sense.
    virtual void fail(const KavioResult& result, std::function<void()> again = nullptr) = 0;
    /// Says something until the person has read it, with a button if there is a text for it.
    virtual void say(const std::string& sentence, const std::string& button = {},
                     std::function<void()> work = nullptr) = 0;
    virtual void sayNothing() = 0;

    /// How many more things are under way.
    virtual void setBusy(int change) = 0;
};

}  // namespace kavio::wallet_gtk
