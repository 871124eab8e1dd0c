#pragma once

#include "page.h"

#include <kavio/payment_method.h>

#include <memory>
#include <string>

namespace kavio::wallet_gtk {

/// What the person can pay with: the wallet, cards and prepaid cards.
class MethodsTab final : public Page {
public:
    explicit MethodsTab(Shell& owner);
    void onShown() override { keep(load()); }
    void onPaid() override { keep(load()); }

private:
    Task load();
    Task remove(std::string id);
    Task logOut();
    void show(const PaymentMethods& methods);
    void addDeposit(GtkListBox* list, const std::shared_ptr<const DepositCard>& card);
    void addCard(const PaymentMethod& card);

    PaymentMethods mMethods;
};

}  // namespace kavio::wallet_gtk
