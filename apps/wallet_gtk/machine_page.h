#pragma once

#include "page.h"
#include "wording/money.h"

#include <kavio/machine.h>
#include <kavio/payment_method.h>
#include <kavio/product.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kavio::wallet_gtk {

/// What a machine sells, and how to pay for it.
class MachinePage final : public Page {
public:
    MachinePage(Shell& owner, std::shared_ptr<const Machine> machine);
    void onShown() override { keep(load()); }
    void onPaid() override { keep(loadMethods()); }

private:
    Task load();
    Task loadMethods();
    void showProducts(const Products& products);
    void showMethods(const PaymentMethods& methods);
    void update();
    void pay();

    /// What has been chosen would be paid like this; absent while something is missing.
    std::optional<std::int64_t> amount() const;
    std::shared_ptr<const PaymentMethod> method() const;
    wallet::Currency currency() const;
    bool isPrepaid() const;

    const std::shared_ptr<const Machine> mMachine;
    std::shared_ptr<const DepositCard> mWallet;
    std::vector<std::shared_ptr<const PaymentMethod>> mMethods;  // as offered
    std::shared_ptr<const Product> mProduct;                     // null until one is chosen
    bool mSellsByCode = false;
};

}  // namespace kavio::wallet_gtk
