#include "failing/application.h"

#include "failing/machine.h"
#include "platform/linux/url_session_libraries.h"
#include "storage/kavio_user_defaults.h"

#include <kavio/platform/linux.h>
#include <kavio/user_defaults.h>

#include <exception>
#include <map>
#include <new>
#include <utility>
#include <vector>

namespace kavio::test {
namespace {

using namespace std::chrono_literals;

/// Longer than any time-out of the library.
constexpr auto longestOperation = 100s;
/// What is paid when the machine is sound again.
constexpr int another = 1;

std::shared_ptr<const PaymentMethod> card(const Json& task) {
    return std::make_shared<const PaymentMethod>(task.at("card"), "4242", PaymentMethod::PaymentType::CREDIT_CARD);
}
std::shared_ptr<const DepositCard> wallet() {
    return std::make_shared<const DepositCard>("0", "", PaymentMethod::PaymentType::KAVIO, 0, "EUR", 2);
}

/// Each operation follows if the one before has succeeded. Everything that it is called with is made before that, by
/// the application.
using Course = std::vector<std::function<void(Kavio&)>>;
Course courseOf(const std::string& operation, const Json& task) {
    if (operation == "login") {
        return {[](Kavio& kavio) { kavio.login("49", "151234567"); },
                [](Kavio& kavio) { kavio.verify("123456", "DE", "49", "151234567"); }};
    }
    if (operation == "purchase") {
        return {[method = card(task), amount = task.at("amount").get<int>()](Kavio& kavio) {
            kavio.placeOrder(42100107, method, amount, {});
        }};
    }
    if (operation == "deposit") {
        return {[to = wallet(), amount = task.at("amount").get<double>(), id = task.at("card").get<std::string>()](
                    Kavio& kavio) mutable { kavio.deposit(to, amount, std::move(id)); }};
    }
    return {[](Kavio& kavio) { kavio.isLoggedIn(); }};
}

/// Whether the facade became idle after each.
bool carryOut(Application& application, Course course) {
    const auto& outcomes = application.delegate->reports;
    for (auto& operation : course) {
        const auto before = outcomes.size();
        application.call(operation);
        if (!application.runUntilIdle(longestOperation)) return false;
        if (outcomes.size() == before || outcomes.back().type != ResultType::SUCCESS) break;
    }
    return true;
}

}  // namespace

void Application::start() {
    if (!mHasPlatform) makePlatform();
    if (!kavio) makeFacade();
}

void Application::makePlatform() {
    LinuxPlatformOptions options{
        .session = {mTask.at("authority").get<std::string>(), mTask.at("address")},
        .storeDirectory = mTask.at("store").get<std::string>(),
        .mainQueue = mQueue,
        .onStoreDamaged = [this](const auto&,
                                 const auto& setAside) { ++(setAside.empty() ? storesUnusable : storesSetAside); },
    };
    const InLibrary entered;
    mHasPlatform = Platform::install(makeLinuxPlatform(std::move(options)));
}

void Application::makeFacade() {
    std::weak_ptr<KavioDelegate> told = delegate;
    const InLibrary entered;
    kavio = std::make_unique<Kavio>(std::move(told), "key", Kavio::EnvironmentType::TEST);
}

bool Application::runUntilIdle(std::chrono::milliseconds limit) {
    const std::function<bool()> isIdle = [this] { return !kavio->isBusy(); };
    const InLibrary entered;
    return mQueue->runUntil(isIdle, limit);
}

void failingApplication(const Json& task, const Tell& tell) {
    Application application(task);
    auto& heard = *application.delegate;
    heard.onReport = [&](const Report& report) {
        tell({{"report", report.callback + ' ' + std::string(name(report.type)) + ' ' + heard.outcomes.back() + ' ' +
                             report.payload}});
    };
    const std::string operation = task.at("operation");
    const bool fromTheStart = operation == "start";
    Json told{{"thrown", "nothing"}};
    auto course = courseOf(operation, task);
    if (!fromTheStart) {
        application.start();
        prepareOpenssl();  // waits until a session has done it
    }
    bool isOver = false;
    beginToFail(Call(task.at("call").get<int>()), task.at("number"), task.at("lasts"));
    try {
        if (fromTheStart) application.start();
        isOver = carryOut(application, std::move(course));
    } catch (const std::bad_alloc&) {
        if (application.kavio) told["thrown"] = "for want of memory";
    } catch (const std::exception& exception) {
        told["thrown"] = exception.what();
    }
    told["calls"] = stopFailing();
    told["failures"] = failures();
    if (!application.kavio) {
        try {
            application.start();
        } catch (const std::bad_alloc&) {  // OpenSSL does not get over it
            return tell({{"calls", told["calls"]}, {"failures", failures()}, {"cannotStart", true}});
        }
        isOver = carryOut(application, courseOf(operation, task));
    }
    told["isOver"] = isOver;
    told["unusable"] = application.storesUnusable.load();
    tell(told);
    auto again = task;
    again["amount"] = another;
    carryOut(application, courseOf(operation, again));
    tell({{"setAside", application.storesSetAside.load()}});
}

void laterApplication(const Json& task, const Tell& tell) {
    Application application(task);
    application.start();
    auto& heard = *application.delegate;
    application.call([](Kavio& kavio) { kavio.isLoggedIn(); });
    application.runUntilIdle(longestOperation);
    tell({{"session", heard.outcomes.at(0)}});
    userDefaults()->remove(keys::serverExpiredTime);  // the clock has been set
    for (const auto& payment : application.kavio->unsettledPayments()) {
        heard.forget();
        application.call([&](Kavio& kavio) { kavio.settlePayment(payment.id); });
        application.runUntilIdle(longestOperation);
        tell({{"settled", payment.amount}, {"outcome", heard.outcomes.empty() ? "none" : heard.outcomes.front()}});
    }
    tell({{"setAside", application.storesSetAside.load()},
          {"unusable", application.storesUnusable.load()},
          {"left", application.kavio->unsettledPayments().size()}});
}

}  // namespace kavio::test
