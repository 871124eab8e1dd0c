#pragma once

#include "page.h"

namespace kavio::wallet_gtk {

/// Stores a card, with the issuer's page or without.
class AddCardPage final : public Page {
public:
    explicit AddCardPage(Shell& owner);
    ~AddCardPage() override;
    void onShown() override { focus("number"); }

private:
    Task store();
    Operation<std::shared_ptr<const CreditCard>> operation();
    /// Says what is wrong with the first entry that cannot be right, and goes there.
    bool isRight();
};

}  // namespace kavio::wallet_gtk
