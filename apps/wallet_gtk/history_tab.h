#pragma once

#include "page.h"

#include <kavio/order.h>

#include <memory>

namespace kavio::wallet_gtk {

/// Past orders, day by day.
class HistoryTab final : public Page {
public:
    explicit HistoryTab(MainWindow& owner);
    void onShown() override;
    void onPaid() override { onShown(); }

private:
    /// Those before the oldest one that is there, or the latest ones.
    Task load();

    std::shared_ptr<const Order> mOldest;
};

}  // namespace kavio::wallet_gtk
