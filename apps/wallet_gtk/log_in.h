#pragma once

#include "page.h"

namespace kavio::wallet_gtk {

/// Asks for the phone's number, and then for the code that was sent to it.
class LogIn final : public Page {
public:
    explicit LogIn(Shell& owner);
    void onShown() override { focus("countryCode"); }

private:
    Task askForCode();
    Task verify();
    void ask(bool forCode);
    std::string countryCode() const;
};

}  // namespace kavio::wallet_gtk
