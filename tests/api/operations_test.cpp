#include "support/sample_replies.h"
#include "support/world.h"

#include <gmock/gmock.h>

namespace kavio::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Operation {
    const char* callback;
    void (*start)(World&);
};

const std::vector<Operation> operations{
    {"onLogin", [](World& world) { world.kavio().login("49", "501"); }},
    {"onVerify", [](World& world) { world.kavio().verify("1", "DE", "49", "501"); }},
    {"onCheckIsUserLogin", [](World& world) { world.kavio().isLoggedIn(); }},
    {"onLogout", [](World& world) { world.kavio().logout(); }},
    {"onGetOrder", [](World& world) { world.kavio().getOrder("77"); }},
    {"onPlaceOrder",
     [](World& world) {
         const auto wallet = std::make_shared<PaymentMethod>("0", "501", PaymentMethod::PaymentType::KAVIO);
         world.kavio().placeOrder(1, wallet, 150, {});
     }},
    {"onGetPaymentMethods", [](World& world) { world.kavio().getPaymentMethods(); }},
    {"onRemoveCard", [](World& world) { world.kavio().removeCard("L1"); }},
    {"onAddCreditCard",
     [](World& world) {
         world.kavio().addCreditCard(std::make_shared<Card>(Card{"4", "1", "30", "7", "a@b"}));
     }},
    {"onDeposit",
     [](World& world) {
         const auto type = PaymentMethod::PaymentType::KAVIO;
         world.kavio().deposit(std::make_shared<DepositCard>("0", "501", type, 0, "EUR", 2), 10, "L1");
     }},
    {"onGetMachines", [](World& world) { world.kavio().getMachines(nullptr); }},
    {"onGetMachineProducts", [](World& world) { world.kavio().getMachineProducts(7); }},
    {"onGetTransactions", [](World& world) { world.kavio().getTransactions(nullptr); }},
};

// Lets every operation pass its own checks: a challenge is kept and a session is stored.
void prepare(World& world) {
    world.kavio().login("49", "501");
    world.answer({200, replies::challenge});
    world.store().set("session_token", std::string("t1"));
    world.delegate().reports.clear();
}

// A refusal is reported before the call returns, so the facade may be destroyed during the refused operation.
TEST(EveryOperation, IsSilentOnceFacadeOrDelegateIsGoneAlsoInsideItsRefusal) {
    for (const auto lose : losses) {
        for (const auto& operation : operations) {
            SCOPED_TRACE(operation.callback);
            World world;
            prepare(world);
            operation.start(world);
            lose(world);
            world.answer({503, "{}"});
            EXPECT_THAT(world.reports(), IsEmpty());

            World refusing;
            prepare(refusing);
            refusing.kavio().login("49", "502");
            const auto sent = refusing.sent().size();
            refusing.delegate().onReport = [&](const Report&) { lose(refusing); };
            operation.start(refusing);
            EXPECT_THAT(refusing.reports(), ElementsAre(Report{operation.callback, ResultType::BUSY}));
            EXPECT_EQ(refusing.sent().size() + refusing.sentInBackground().size(), sent);
        }
    }
}

TEST(EveryOperation, MayStartTheNextFromItsCallbackAndDestroyTheFacade) {
    for (const auto& operation : operations) {
        SCOPED_TRACE(operation.callback);
        World world;
        prepare(world);
        world.delegate().onReport = [&](const Report& report) {
            if (report.type == ResultType::SERVER_ERROR) world.kavio().login("49", "503");
            if (report.type == ResultType::SUCCESS) world.destroyFacade();
        };
        operation.start(world);
        world.answer({503, "{}"});
        world.answer({200, replies::challenge});
        EXPECT_THAT(world.reports(), ElementsAre(Report{operation.callback, ResultType::SERVER_ERROR, "{}"},
                                                 Report{"onLogin", ResultType::SUCCESS}));
    }
}

TEST(EveryOperation, EndsNoneThatHasBegunSinceItWasReleased) {
    for (const auto& operation : operations) {
        SCOPED_TRACE(operation.callback);
        World world;
        prepare(world);
        operation.start(world);
        world.kavio().release(&world.kavio());
        world.kavio().login("49", "502");
        world.answer({503, "{}"});
        const auto sent = world.sent().size();
        world.kavio().login("49", "503");
        EXPECT_EQ(world.sent().size(), sent);
    }
}

}  // namespace
}  // namespace kavio::test
