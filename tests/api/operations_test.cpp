#include "support/sample_replies.h"
#include "support/world.h"

#include <gmock/gmock.h>

namespace kavio::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string failedToSend = "failed to send request, error: scripted failure";

// Every way in which a request can fail, and the result that stands for it.
struct Failure {
    const char* name;
    Answer answer;
    ResultType type;
    std::optional<std::string> message;
};

const std::vector<Failure> failures{
    {"refused with a message", {400, R"({"message":"M"})"}, ResultType::BAD_INPUT, "M"},
    {"refused session", {401, R"({"message":"M"})"}, ResultType::ACCESS_DENIED, "Your session token is expaired"},
    {"between the special statuses", {402, R"({"message":"M"})"}, ResultType::FAILURE, "M"},
    {"session not acceptable", {406, "{}"}, ResultType::FAILURE, "Your session token is expaired"},
    {"refused signature", {417, "{}"}, ResultType::FAILURE, "invalid_signature"},
    {"too old", {426, "{}"}, ResultType::FAILURE, "Upgrade version is required"},
    {"last before the server errors", {499, "plain text"}, ResultType::FAILURE, "plain text"},
    {"first server error", {500, R"({"message":"M"})"}, ResultType::SERVER_ERROR, "M"},
    {"last server error without a body", {599, ""}, ResultType::SERVER_ERROR, std::nullopt},
    {"past the server errors", {600, "{}"}, ResultType::FAILURE, "{}"},
    {"a body that is no text", {503, "\xff\xfe"}, ResultType::SERVER_ERROR, "\uFFFD\uFFFD"},
    {"not JSON", {200, "<html>"}, ResultType::BAD_INPUT, std::nullopt},
    {"no bytes", {200, ""}, ResultType::BAD_INPUT, std::nullopt},
    {"no network", UrlError::notConnectedToInternet, ResultType::NETWORK_FAILED, failedToSend},
    {"connection lost", UrlError::networkConnectionLost, ResultType::NETWORK_FAILED, failedToSend},
    {"timed out", UrlError::timedOut, ResultType::FAILURE, failedToSend},
    {"untrusted", UrlError::serverCertificateUntrusted, ResultType::FAILURE, failedToSend},
};

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
     [](World& world) { world.kavio().addCreditCard(std::make_shared<Card>("4", "1", "30", "7", "a@b")); }},
    {"onDeposit",
     [](World& world) {
         const auto type = PaymentMethod::PaymentType::KAVIO;
         world.kavio().deposit(std::make_shared<DepositCard>("0", "501", type, 0, "EUR", 2), 10, "L1");
     }},
    {"onGetMachines", [](World& world) { world.kavio().getMachines(nullptr); }},
    {"onGetMachineProducts", [](World& world) { world.kavio().getMachineProducts(7); }},
    {"onGetTransactions", [](World& world) { world.kavio().getTransactions(nullptr); }},
};

// Every operation now passes its own checks: a challenge is kept and a session is stored.
void prepare(World& world) {
    world.kavio().login("49", "501");
    world.answer({200, replies::challenge});
    world.store().set("session_token", std::string("t1"));
    world.delegate().reports.clear();
}

using Loss = void (*)(World&);
const std::vector<Loss> losses{[](World& world) { world.destroyFacade(); },
                               [](World& world) { world.destroyDelegate(); },
                               [](World& world) { world.kavio().release(&world.kavio()); }};

TEST(EveryOperation, ReportsEachFailureOnceOnTheMainThreadAndIsIdleAgain) {
    for (const auto& operation : operations) {
        for (const auto& failure : failures) {
            SCOPED_TRACE(std::string(operation.callback) + ": " + failure.name);
            World world;
            prepare(world);
            operation.start(world);
            EXPECT_THAT(world.reports(), IsEmpty());
            world.answer(failure.answer);
            ASSERT_THAT(world.reports(), ElementsAre(Report{operation.callback, failure.type, failure.message}));
            EXPECT_EQ(world.delegate().threads.back(), std::this_thread::get_id());
            EXPECT_FALSE(world.isBusy());
        }
    }
}

TEST(EveryOperation, IsRefusedWhileAnotherIsUnderWay) {
    for (const auto& operation : operations) {
        SCOPED_TRACE(operation.callback);
        World world;
        prepare(world);
        world.kavio().login("49", "502");
        operation.start(world);
        const Report busy{operation.callback, ResultType::BUSY};
        ASSERT_THAT(world.reports(), ElementsAre(busy)) << "reported before the call returns";
        world.answer({200, replies::challenge});
        EXPECT_THAT(world.reports(), ElementsAre(busy, Report{"onLogin", ResultType::SUCCESS}));
    }
}

// A refusal is reported before the call returns, so the facade may go away under the operation that is refused.
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

}  // namespace
}  // namespace kavio::test
