#include "payments.h"

#include "command_line/translation.h"
#include "shell.h"
#include "wording/explain.h"
#include "wording/money.h"
#include "wording/names.h"

#include <algorithm>
#include <array>

namespace kavio::wallet_gtk {

namespace {

std::shared_ptr<const Order> orderOf(const std::shared_ptr<const Order>& order) { return order; }
std::shared_ptr<const Order> orderOf(const Settlement& settlement) { return settlement.order; }
std::shared_ptr<const Order> orderOf(const std::optional<std::int64_t>& /*balance*/) { return nullptr; }

/// How many of the three steps a purchase has behind it.
std::size_t stepsOf(Order::Status status) {
    if (status == Order::Status::AUTHORIZED) return 2;
    return status == Order::Status::COMPLETED || status == Order::Status::FREE_TRANSACTION ? 3 : 1;
}

/// With a prepaid card the machine decides what to charge.
std::string titleOf(const UnsettledPayment& payment) {
    const auto amount = wallet::moneyText(payment.amount, payment.currency);
    if (payment.kind == UnsettledPayment::Kind::DEPOSIT) return tr("Top-up of {}", amount);
    const auto machine = payment.kavioId.value_or(0);
    const bool isOpen = payment.paymentType == PaymentMethod::PaymentType::PREPAID || !payment.currency;
    return isOpen ? tr("Purchase at machine {}", machine) : tr("{} at machine {}", amount, machine);
}

}  // namespace

Payment::Payment(Shell& owner, const std::string& name) : Page(owner, name, "payment") {
    gtk_label_set_text(widget<GtkLabel>("title"), name.c_str());
    on(widget("findOut"), "clicked", [this] { findOut(); });
    on(widget("giveUp"), "clicked", [this] { mGiveUp.request_stop(); });
    on(widget("forget"), "clicked", [this] { forget(); });
    on(widget("dismiss"), "clicked", [this] { removeLater(); });
}

void Payment::buy(Purchase purchase) {
    mIsTooMuch = purchase.isTooMuch;
    begin(true);
    keep(follow(kavio().placeOrder(purchase.kavioId, purchase.method, purchase.amount, purchase.products,
                                   mGiveUp.get_token())));
}

void Payment::topUp(TopUp topUp) {
    mIsTopUp = true;
    begin(false);
    keep(follow(kavio().deposit(topUp.card, topUp.amount, topUp.chargedCardId)));
}

void Payment::doubt(UnsettledPayment payment) {
    mIsTopUp = payment.kind == UnsettledPayment::Kind::DEPOSIT;
    mDoubt = std::move(payment);
    show(State::IN_DOUBT, tr("It is not certain whether this was paid."));
}

void Payment::findOut() {
    begin(false);
    keep(follow(kavio().settlePayment(mDoubt->id)));
}

void Payment::forget() {
    kavio().kavio().forgetPayment(mDoubt->id);
    removeLater();
}

void Payment::removeLater() {
    later([&payments = window.payments(), row = this] { payments.remove(row); });
}

void Payment::begin(bool canBeGivenUp) {
    show(State::UNDER_WAY, tr("One moment, please."));
    setVisible("giveUp", canBeGivenUp);
}

template <class Payload>
Task Payment::follow(Operation<Payload> operation) {
    const Busy busy{window};
    std::shared_ptr<const KavioResult> last;
    while (const auto report = co_await operation.next()) {
        last = report->result;
        setVisible("giveUp", false);
        if (const auto order = orderOf(report->payload)) {
            mOrder = order;
            showSteps(order->status);
            show(State::UNDER_WAY, wallet::statusSentence(*order));
        }
    }
    if (last) conclude(*last);
    window.refresh();
}

/// The last report says how certain it is.
void Payment::conclude(const KavioResult& last) {
    const bool isOrder = mOrder != nullptr;
    const bool isSuccess = last.type == ResultType::SUCCESS;
    if (isSuccess && mIsTopUp) return show(State::OVER, tr("The top-up was made."));
    if (isOrder && isFinal(mOrder->status)) {
        const bool isBalance = mOrder->status == Order::Status::CANCELED && mIsTooMuch;
        return show(State::OVER,
                    wallet::statusSentence(*mOrder) + (isBalance ? " " + tr("The balance is too small.") : ""));
    }
    if (last.cause == Cause::NOT_MADE)
        return show(State::OVER, tr("The service does not know this payment: nothing was paid."));
    if (last.cause == Cause::CANCELED_BY_PERSON)
        return show(State::OVER, tr("Canceled before it was sent: nothing was paid."));
    const auto why =
        isSuccess || last.cause == Cause::NOT_CERTAIN ? std::string{} : wallet::explain(last).problem + " ";
    if (!isSuccess && last.effect == Effect::NONE && !isOrder && !mDoubt)
        return show(State::OVER, why + tr("Nothing was paid."));
    if (const auto unknown = window.payments().unknown(); !mDoubt && !unknown.empty()) mDoubt = unknown.back();
    if (!mDoubt) return show(State::OVER, why + tr("Check the history before you pay again."));
    show(State::IN_DOUBT, why + (last.cause == Cause::NOT_CERTAIN
                                     ? tr("It is not certain yet what became of this. Try again in a few minutes.")
                                     : tr("It is not certain whether this was paid: find out before you pay again.")));
    setVisible("forget", last.cause == Cause::NOT_CERTAIN);
}

void Payment::show(State state, const std::string& sentence) {
    mState = state;
    if (state == State::OVER) mDoubt.reset();
    gtk_label_set_text(widget<GtkLabel>("sentence"), sentence.c_str());
    // Screen readers listen for the name of what reports something.
    gtk_accessible_update_property(widget<GtkAccessible>("sentence"), GTK_ACCESSIBLE_PROPERTY_LABEL, sentence.c_str(),
                                   -1);
    setVisible("spinner", state == State::UNDER_WAY);
    setVisible("findOut", state == State::IN_DOUBT);
    setVisible("dismiss", state == State::OVER);
    for (const auto* const button : {"giveUp", "forget"}) setVisible(button, false);
}

void Payment::showSteps(Order::Status status) {
    setVisible("steps", true);
    const std::array names{wallet::statusName(Order::Status::CREATED), wallet::statusName(Order::Status::AUTHORIZED),
                           wallet::statusName(isFinal(status) ? status : Order::Status::COMPLETED)};
    const std::array labels{"placed", "approved", "ended"};
    for (std::size_t step = 0; step < labels.size(); ++step) {
        const bool isDone = step < stepsOf(status);
        const auto text = (isDone ? "✓ " : "") + names[step];
        gtk_label_set_text(widget<GtkLabel>(labels[step]), text.c_str());
        const std::array<const char*, 2> classes{isDone ? "success" : "dim-label", nullptr};
        gtk_widget_set_css_classes(widget(labels[step]), const_cast<const char**>(classes.data()));
    }
}

void Payments::buy(Purchase purchase) {
    start([this, purchase = std::move(purchase)] { add(purchase.title).buy(purchase); });
}

void Payments::topUp(TopUp topUp) {
    start([this, topUp = std::move(topUp)] {
        add(topUp.title).topUp(topUp);
        mWindow.showTabs();
    });
}

/// Nobody should pay twice because they did not see the first payment.
void Payments::start(const std::function<void()>& payment) {
    if (isUnderWay()) return mWindow.say(tr("Another payment is still under way. Wait until it has ended."));
    if (std::ranges::any_of(mPayments, [](const auto& row) { return row->inDoubt().has_value(); })) {
        return mWindow.say(tr("A payment is in doubt: find out what became of it first, or pay anyway."),
                           tr("Pay anyway"), payment);
    }
    mWindow.sayNothing();
    payment();
}

Payment& Payments::add(const std::string& title) {
    mPayments.push_back(std::make_unique<Payment>(mWindow, title));
    gtk_list_box_append(mList, mPayments.back()->root());
    gtk_widget_set_visible(GTK_WIDGET(mList), TRUE);
    return *mPayments.back();
}

void Payments::remove(const Payment* payment) {
    const auto row = std::ranges::find(mPayments, payment, &std::unique_ptr<Payment>::get);
    if (row == mPayments.end()) return;  // by the first of two clicks
    gtk_list_box_remove(mList, payment->root());
    mPayments.erase(row);
    gtk_widget_set_visible(GTK_WIDGET(mList), !mPayments.empty());
}

std::vector<UnsettledPayment> Payments::unknown() const {
    auto payments = mWindow.makeKavio()->kavio().unsettledPayments();
    std::erase_if(payments, [&](const auto& payment) {
        return std::ranges::any_of(mPayments,
                                   [&](const auto& row) { return row->inDoubt() && row->inDoubt()->id == payment.id; });
    });
    return payments;
}

void Payments::showThoseInDoubt() {
    if (isUnderWay()) return;  // it is in the store, too
    for (auto& payment : unknown()) {
        auto& row = add(titleOf(payment));
        row.doubt(std::move(payment));
    }
}

bool Payments::isUnderWay() const {
    return std::ranges::any_of(mPayments, [](const auto& payment) { return payment->isUnderWay(); });
}

}  // namespace kavio::wallet_gtk
