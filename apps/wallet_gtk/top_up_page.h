#pragma once

#include "page.h"

#include <kavio/payment_method.h>

#include <memory>
#include <vector>

namespace kavio::wallet_gtk {

/// Adds money from a stored card to the wallet or a prepaid card.
class TopUpPage final : public Page {
public:
    TopUpPage(Shell& owner, std::shared_ptr<const DepositCard> card, const PaymentMethods& methods);
    void onShown() override { focus("amount"); }

private:
    void topUp();

    const std::shared_ptr<const DepositCard> mCard;
    std::vector<std::shared_ptr<const PaymentMethod>> mCharged;  // as offered
};

}  // namespace kavio::wallet_gtk
