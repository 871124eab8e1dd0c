#include "world.h"

#include "mishaps.h"
#include "questions.h"
#include "traffic.h"

#include <algorithm>
#include <array>
#include <functional>
#include <random>

namespace kavio::simulate {
namespace {

using namespace std::chrono_literals;
using test::Device;
using test::Fate;
using test::ServiceFault;
using Environment = Kavio::EnvironmentType;

/// Orders at the first ones end well, at the others in every way that there is.
constexpr std::array<std::int64_t, 12> machines{42100107, 42100178, 42100107, 42100178, 42100107, 42102343,
                                                42102488, 42102833, 42102904, 42102973, 42103042, 1234};
struct Facade {
    std::shared_ptr<Ledger> ledger;
    std::unique_ptr<Kavio> kavio;
};

std::string cardOf(const Facade& facade) {
    for (const auto& method : facade.ledger->methods)
        if (method->type == PaymentMethod::PaymentType::CREDIT_CARD) return method->id;
    return "no card";
}

/// One run: the device, up to two facades, and what the person has asked for.
class World {
public:
    World(const Schedule& schedule, Listener listen)
        : mSchedule(schedule), mListen(std::move(listen)), mDevice({.seed = schedule.seed}) {
        mDevice.network().observe(
            [this](const auto& request, const auto& reply) { mTraffic.note(mDevice, request, reply); });
        if (!mDevice.logIn()) throw Violation("the simulation works", "nobody can log in");
    }

    void run() {
        for (const auto& step : mSchedule.steps) {
            pass(step.after);
            perform(step);
            pass(0ms);
        }
        calmDown();
        settleAll();
        checkMoney();
        letGo();
    }

private:
    /// Lets time pass, and checks what must hold after each piece of work.
    void pass(std::chrono::milliseconds time) {
        const auto end = mDevice.time().uptime() + time;
        mDevice.time().runUntil(
            [this] {
                for (const auto& facade : mFacades)
                    if (facade.kavio) facade.ledger->check();
                return false;
            },
            end - mDevice.time().uptime());
    }
    Facade& facade(int number) {
        auto& facade = mFacades[std::size_t(number)];
        if (!facade.kavio) open(facade, Environment::TEST);
        return facade;
    }
    void open(Facade& facade, Environment environment) {
        facade.ledger = std::make_shared<Ledger>(mDevice.time(), mPayments, mListen);
        facade.ledger->onLoggedOut = [this] { mTraffic.noteLogout(mDevice); };
        facade.kavio = std::make_unique<Kavio>(facade.ledger, "key", environment);
    }

    void perform(const Step& step);
    void ask(Facade& facade, const Question& question, std::int64_t value);
    bool personDoes(const Step& step);       // whether it is for the person to do
    bool applicationDoes(const Step& step);  // whether it is for the application to do
    void goWrong(Kind kind, std::int64_t value);
    void restoreNetwork();

    void buy(Facade& facade, std::int64_t machine, PaymentMethod::PaymentType type, const std::string& id);
    void deposit(Facade& facade);
    void askOrder(Facade& facade);
    void forget(Facade& facade, std::size_t number);
    void pay(Facade& facade, bool isDeposit, const std::function<void(Kavio&, std::int64_t amount)>& call);
    void settle(Facade& facade, std::size_t number);
    std::optional<std::size_t> paymentOf(const UnsettledPayment& unsettled) const;
    void silence(Facade& facade);
    void destroy(Facade& facade);
    void killProgram();

    void calmDown();
    void settleAll();
    void checkMoney();
    void checkJournal(const Kavio& kavio) const;
    void letGo();
    std::size_t madeAtService(const Payment& payment) const;

    const Schedule& mSchedule;
    const Listener mListen;
    Device mDevice;
    Traffic mTraffic;
    std::vector<Payment> mPayments;
    std::array<Facade, 2> mFacades;
    std::mt19937_64 mLateness{7};
    bool mIsDiskUnreliable = false;  // a write may have failed
    bool mHasLostWrites = false;     // and then the program was killed
};

void World::perform(const Step& step) {
    if (const auto* question = questionOf(step.kind)) return ask(facade(step.facade), *question, step.value);
    if (!personDoes(step) && !applicationDoes(step)) goWrong(step.kind, step.value);
}

void World::ask(Facade& facade, const Question& question, std::int64_t value) {
    facade.ledger->perform(*facade.kavio, question.callback, std::nullopt,
                           [&](Kavio& kavio) { question.ask(kavio, value); });
}

bool World::personDoes(const Step& step) {
    switch (step.kind) {
        case Kind::BUY:
            buy(facade(step.facade), machines[std::size_t(step.value)], PaymentMethod::PaymentType::KAVIO, "0");
            return true;
        case Kind::BUY_BY_CARD: {
            auto& buying = facade(step.facade);
            buy(buying, machines[std::size_t(step.value)], PaymentMethod::PaymentType::CREDIT_CARD, cardOf(buying));
            return true;
        }
        case Kind::DEPOSIT:
            deposit(facade(step.facade));
            return true;
        case Kind::ASK_ORDER:
            askOrder(facade(step.facade));
            return true;
        case Kind::SETTLE:
            settle(facade(step.facade), std::size_t(step.value));
            return true;
        case Kind::FORGET:
            forget(facade(step.facade), std::size_t(step.value));
            return true;
        case Kind::LOG_IN:
            ask(facade(step.facade), login, 0);
            pass(1s);
            ask(facade(step.facade), verify, 0);
            return true;
        case Kind::CLOSE_PAGE:
            mDevice.screen().pressClose();
            return true;
        case Kind::ANSWER_CHALLENGE:
            mDevice.answerChallenge(step.value == 0 ? "1234" : "0000");
            return true;
        default:
            return false;
    }
}

bool World::applicationDoes(const Step& step) {
    switch (step.kind) {
        case Kind::RELEASE: {
            auto& released = facade(step.facade);
            silence(released);
            released.kavio->release(released.kavio.get());
            pass(5s);
            destroy(released);
            return true;
        }
        case Kind::DESTROY:
            destroy(facade(step.facade));
            return true;
        case Kind::SWITCH_SERVICE: {
            auto& switched = facade(step.facade);
            destroy(switched);
            open(switched, step.value == 0 ? Environment::TEST : Environment::TESTS);
            return true;
        }
        case Kind::DROP_DELEGATE: {
            auto& dropped = facade(step.facade);
            // What is under way goes on, but there is nobody to tell.
            dropped.ledger->silence();
            dropped.ledger = std::make_shared<Ledger>(mDevice.time(), mPayments);
            dropped.ledger->silence();
            return true;
        }
        case Kind::KILL_PROGRAM:
            killProgram();
            return true;
        default:
            return false;
    }
}

void World::goWrong(Kind kind, std::int64_t value) {
    auto& network = mDevice.network();
    switch (kind) {
        case Kind::CUT:
            return network.cut();
        case Kind::RESTORE:
            return restoreNetwork();
        case Kind::FATE:
            return network.next(fate(value));
        case Kind::SLOWNESS:
            return network.usually([time = std::chrono::milliseconds(value)](const auto&) {
                return Fate{.connecting = time / 3, .there = time, .back = time};
            });
        case Kind::LATENESS:
            mDevice.time().lateness = [this, most = std::uint64_t(value + 1)](test::Lane lane) {
                return lane == test::Lane::MAIN ? 0ms : std::chrono::milliseconds(mLateness() % most);
            };
            return;
        case Kind::FAULT:
            return mDevice.service().add(fault(value));
        case Kind::CLOCK_OFFSET:
            return mDevice.service().setClockOffset(std::chrono::seconds(value - 30));
        case Kind::END_SESSIONS:
            return mDevice.service().endSessions();
        case Kind::WALL_CLOCK:
            return mDevice.time().setWallClock(mDevice.time().now() +
                                               std::chrono::seconds(value % 2 == 1 ? -value : value));
        case Kind::ROOM_ON_DISK:
            return mDevice.stores().refuseWrites(false);
        case Kind::FULL_DISK:
            mIsDiskUnreliable = true;
            return mDevice.stores().refuseWrites();
        case Kind::FAILING_WRITE:
            mIsDiskUnreliable = true;
            return mDevice.stores().decideWrites([left = value]() mutable { return left-- != 0; });
        default:
            throw std::logic_error("a step that nobody takes");
    }
}

void World::restoreNetwork() {
    for (auto& payment : mPayments) payment.hasNeverLeft = payment.isGivenUpUnsent;
    mDevice.network().restore();
}

void World::buy(Facade& facade, std::int64_t machine, PaymentMethod::PaymentType type, const std::string& id) {
    const auto method = std::make_shared<PaymentMethod>(id, "", type);
    pay(facade, false, [&](Kavio& kavio, std::int64_t amount) { kavio.placeOrder(machine, method, amount, {}); });
}

void World::deposit(Facade& facade) {
    const auto wallet = std::make_shared<DepositCard>("0", "", PaymentMethod::PaymentType::KAVIO, 0, "EUR", 2);
    pay(facade, true,
        [&](Kavio& kavio, std::int64_t amount) { kavio.deposit(wallet, double(amount) / 100, cardOf(facade)); });
}

void World::askOrder(Facade& facade) {
    const auto id = facade.ledger->lastOrder;
    facade.ledger->perform(*facade.kavio, Callback::ORDER, std::nullopt, [&](Kavio& kavio) { kavio.getOrder(id); });
}

void World::forget(Facade& facade, std::size_t number) {
    const auto unsettled = facade.kavio->unsettledPayments();
    if (number >= unsettled.size() || !facade.kavio->forgetPayment(unsettled[number].id)) return;
    if (const auto payment = paymentOf(unsettled[number])) mPayments[*payment].isForgotten = true;
}

void World::pay(Facade& facade, bool isDeposit, const std::function<void(Kavio&, std::int64_t)>& call) {
    const auto number = std::int64_t(mPayments.size());
    mPayments.push_back({.amount = isDeposit ? 20'000 + 100 * number : 101 + number,
                         .isDeposit = isDeposit,
                         .hasNeverLeft = !isDeposit && mDevice.network().isCut()});
    const auto payment = mPayments.size() - 1;
    if (facade.kavio->isBusy()) mPayments[payment].isGivenUpUnsent = true;  // refused: it must never be made
    facade.ledger->perform(*facade.kavio, isDeposit ? Callback::DEPOSIT : Callback::PLACE_ORDER, payment,
                           [&](Kavio& kavio) { call(kavio, mPayments[payment].amount); });
}

std::optional<std::size_t> World::paymentOf(const UnsettledPayment& unsettled) const {
    const bool isDeposit = unsettled.kind == UnsettledPayment::Kind::DEPOSIT;
    for (std::size_t i = 0; i < mPayments.size(); ++i)
        if (mPayments[i].amount == unsettled.amount && mPayments[i].isDeposit == isDeposit) return i;
    return std::nullopt;
}

void World::settle(Facade& facade, std::size_t number) {
    const auto unsettled = facade.kavio->unsettledPayments();
    if (number >= unsettled.size()) return;
    const auto& payment = unsettled[number];
    const auto known = paymentOf(payment);
    if (!known) throw Violation("the journal is true", "a payment that nobody made");
    const auto callback = payment.kind == UnsettledPayment::Kind::DEPOSIT ? Callback::DEPOSIT : Callback::PLACE_ORDER;
    facade.ledger->perform(
        *facade.kavio, callback, known, [&](Kavio& kavio) { kavio.settlePayment(payment.id); }, true);
}

/// The application lets go of a facade. A purchase that cannot have left yet must never be made then; a deposit, which
/// does not wait for a network, goes on.
void World::silence(Facade& facade) {
    for (const auto waiting : facade.ledger->silence())
        if (mPayments[waiting].hasNeverLeft && !mPayments[waiting].told) mPayments[waiting].isGivenUpUnsent = true;
}

void World::destroy(Facade& facade) {
    silence(facade);
    facade.kavio.reset();
    const bool isAnotherUp = std::ranges::any_of(mFacades, [](const auto& other) { return other.kavio != nullptr; });
    if (!isAnotherUp && mDevice.screen().hasScene()) throw Violation("a page goes with its facade", "it is still up");
}

void World::killProgram() {
    mHasLostWrites = mHasLostWrites || mIsDiskUnreliable;
    std::vector<std::unique_ptr<Kavio>> killed;
    for (auto& facade : mFacades) {
        if (!facade.kavio) continue;
        silence(facade);
        killed.push_back(std::move(facade.kavio));
    }
    mDevice.killProgram(std::move(killed));
    checkJournal(*facade(0).kavio);
}

std::size_t World::madeAtService(const Payment& payment) const {
    const auto orders = mDevice.service().orders();
    return std::size_t(std::ranges::count_if(orders, [&](const auto& order) {
        return order.amount == payment.amount && (order.machine == 0) == payment.isDeposit;
    }));
}

/// What the service has and nobody has been told of is written down.
void World::checkJournal(const Kavio& kavio) const {
    const auto unsettled = kavio.unsettledPayments();
    for (const auto& payment : mPayments) {
        if (payment.isForgotten || payment.isSettledUnheard ||
            payment.told.value_or(Effect::UNKNOWN) != Effect::UNKNOWN)
            continue;
        if (madeAtService(payment) == 0) continue;
        const bool isWritten = std::ranges::any_of(unsettled, [&](const auto& written) {
            const auto known = paymentOf(written);
            return known && &mPayments[*known] == &payment;
        });
        if (!isWritten && !mTraffic.hasAnsweredPayment(payment.amount))
            throw Violation("no payment is lost", "a payment of " + std::to_string(payment.amount));
    }
}

void World::calmDown() {
    mDevice.time().lateness = nullptr;
    mDevice.network().clearFates();
    mDevice.service().clearFaults();
    mDevice.service().setClockOffset(0s);
    mDevice.stores().refuseWrites(false);
    restoreNetwork();
    pass(2min);
    while (mDevice.screen().hasScene()) {
        mDevice.screen().pressClose();
        pass(1s);
    }
    pass(3min);
    for (const auto& facade : mFacades)
        if (facade.kavio) facade.ledger->checkEnd();
}

/// A person with a session finds out what became of everything that is still in doubt.
void World::settleAll() {
    for (auto& facade : mFacades) {
        if (facade.kavio) silence(facade);
        facade.kavio.reset();
    }
    // With a clock that is wrong, the first attempt only finds that out.
    if (!mDevice.logIn() && !mDevice.logIn()) throw Violation("all is well again", "nobody can log in");
    auto& settling = facade(0);
    checkJournal(*settling.kavio);
    for (int round = 0; round < 3; ++round) {
        for (std::size_t skipped = 0; skipped < settling.kavio->unsettledPayments().size();) {
            const auto before = settling.kavio->unsettledPayments().size();
            settle(settling, skipped);
            pass(70s);
            if (settling.kavio->unsettledPayments().size() == before) ++skipped;
        }
        pass(4min);
    }
    settling.ledger->checkEnd();
}

void World::checkMoney() {
    for (const auto& payment : mPayments) {
        const auto made = madeAtService(payment);
        const auto what = "a " + std::string(payment.isDeposit ? "deposit" : "purchase") + " of " +
                          std::to_string(payment.amount) + ", told " +
                          (payment.told ? std::string(name(*payment.told)) : "nothing") + ", made " +
                          std::to_string(made) + " times";
        if (made > 1) throw Violation("paid at most once", what);
        if (made > 0 && payment.isGivenUpUnsent) throw Violation("given up before it left", what);
        if (made > 0 && payment.told == Effect::NONE) throw Violation("NONE means nothing", what);
        if (made == 0 && payment.told == Effect::DONE) throw Violation("DONE means done", what);
    }
    if (mDevice.service().orders().size() > mPayments.size())
        throw Violation("nothing is paid unasked", std::to_string(mDevice.service().orders().size()) + " orders");

    auto& asking = facade(0);
    perform({.kind = Kind::ASK_METHODS});
    pass(1s);
    asking.ledger->checkEnd();
    const auto& methods = asking.ledger->methods;
    const auto shown = methods.empty() ? nullptr : std::dynamic_pointer_cast<const DepositCard>(methods.front());
    if (!shown || shown->balance != mDevice.service().balance())
        throw Violation("the wallet agrees with the service", "the balance differs");
    const auto unsettled = asking.kavio->unsettledPayments();
    for (const auto& left : unsettled) {
        const auto known = paymentOf(left);
        if (known && left.status && isFinal(*left.status))
            throw Violation("what is over is struck off", "a payment of " + std::to_string(left.amount));
    }
}

/// Everything ends: nothing may be left.
void World::letGo() {
    // A token whose end could not be written comes back with the program.
    if (!mHasLostWrites) mTraffic.check(mDevice);
    for (auto& facade : mFacades) {
        if (facade.kavio) silence(facade);
        facade.kavio.reset();
    }
    mDevice.letPass(5min);
    if (mDevice.network().open() > 0) throw Violation("nothing is left", "requests");
    for (const auto lane : {test::Lane::MAIN, test::Lane::SERIAL, test::Lane::CONCURRENT, test::Lane::NETWORK})
        if (mDevice.time().waiting(lane) > 0) throw Violation("nothing is left", "work");
    if (mDevice.screen().hasScene()) throw Violation("nothing is left", "a scene");
    if (mDevice.screen().preparedScene() != "gone") throw Violation("nothing is left", "a prepared scene");
}

}  // namespace

std::optional<Failure> run(const Schedule& schedule, const Listener& listen) {
    try {
        World(schedule, listen).run();
        return std::nullopt;
    } catch (const Violation& violation) {
        return Failure{violation.rule, violation.what()};
    }
}

}  // namespace kavio::simulate
