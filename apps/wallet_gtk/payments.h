#pragma once

#include "page.h"

#include <kavio/unsettled_payment.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace kavio::wallet_gtk {

struct Purchase {
    std::string title;
    std::int64_t kavioId;
    std::shared_ptr<const PaymentMethod> method;
    std::int64_t amount;  // in the currency's smallest unit
    std::vector<std::shared_ptr<const RemoteVendProduct>> products;
    bool isTooMuch;  // for the balance, as far as it is known
};

struct TopUp {
    std::string title;
    std::shared_ptr<const DepositCard> card;
    double amount;  // in whole units of the currency
    std::string chargedCardId;
};

/// A purchase or a top-up as a row: how far it is, what may have become of it, what to do about that.
class Payment : public Page {
public:
    Payment(Shell& owner, const std::string& name);

    void buy(Purchase purchase);
    void topUp(TopUp topUp);
    /// One that an earlier run of the program, or another program, has left.
    void doubt(UnsettledPayment payment);

    bool isUnderWay() const { return mState == State::UNDER_WAY; }
    const std::optional<UnsettledPayment>& inDoubt() const { return mDoubt; }

private:
    enum class State { UNDER_WAY, IN_DOUBT, OVER };

    template <class Payload>
    Task follow(Operation<Payload> operation);
    void begin(bool canBeGivenUp);
    void show(State state, const std::string& sentence);
    void showSteps(Order::Status status);
    void conclude(const KavioResult& last);
    void findOut();
    void forget();
    void removeLater();

    State mState = State::OVER;
    bool mIsTopUp = false;
    bool mIsTooMuch = false;
    std::stop_source mGiveUp;
    std::shared_ptr<const Order> mOrder;
    std::optional<UnsettledPayment> mDoubt;
};

/// All of them: at most one under way, and those that are in doubt or just over.
class Payments {
public:
    Payments(Shell& window, GtkListBox* list) : mWindow(window), mList(list) {}

    /// Not while another is under way, and only if the person insists while one is in doubt.
    void buy(Purchase purchase);
    void topUp(TopUp topUp);
    void remove(const Payment* payment);
    /// Adds a row for each of the store that has none.
    void showThoseInDoubt();

    /// Those of the store that have no row, oldest first.
    std::vector<UnsettledPayment> unknown() const;

private:
    Payment& add(const std::string& title);
    void start(const std::function<void()>& payment);
    bool isUnderWay() const;

    Shell& mWindow;
    GtkListBox* const mList;
    std::vector<std::unique_ptr<Payment>> mPayments;
};

}  // namespace kavio::wallet_gtk
