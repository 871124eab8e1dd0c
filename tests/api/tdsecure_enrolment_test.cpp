#include "memory.h"
#include "models/json/json_value.h"
#include "support/world.h"

#include <kavio/testing/screen.h>

#include <gmock/gmock.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace kavio::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

const TDSPaymentCard card{.number = "4111", .month = 7, .year = 2039, .securityCode = 12};

// What the service and the issuer can answer. No answer is right everywhere. A reply is known by its members, not by
// its number, which only has to be a valid one.
const std::map<std::string, Answer> replies{
    {"frictionless", {200, R"({"type":1,"locator":"L"})"}},
    {"fingerprint", {200, R"({"type":4,"page":"https://acs.example/f","id":"I","url":"U","message":"M"})"}},
    {"fingerprint without URL", {200, R"({"type":2,"page":"no URL","id":"I"})"}},
    {"challenge", {200, R"({"type":3,"url":"https://acs.example/c","id":"I"})"}},
    {"challenge without URL", {200, R"({"type":3,"url":"no URL","id":"I"})"}},
    {"error", {200, R"({"type":1,"locator":7,"message":"M"})"}},
    {"locator", {200, R"({"result":3,"locator":"L","url":"U","message":"M"})"}},
    {"another challenge", {200, R"({"result":2,"url":"https://acs.example/d"})"}},
    {"locator error", {200, R"({"result":3,"message":"M"})"}},
    {"no kind", {200, R"({"type":5,"result":5,"locator":"L"})"}},
    {"null", {200, "null"}},
    {"page", {200, "<html>"}},
    {"no text", {200, "\xff"}},
    {"refusal", {401, ""}},
};

std::vector<std::string> words(const std::string& text) {
    std::vector<std::string> found;
    for (std::size_t at = 0; at < text.size();) {
        const auto end = std::min(text.find("; ", at), text.size());
        found.push_back(text.substr(at, end - at));
        at = end + 2;
    }
    return found;
}

/// The library with a scripted service, issuer and person. What it does is recorded as a list of short texts.
class Enrolment : public World {
public:
    /// After the events of `path`.
    explicit Enrolment(const std::string& path = "") {
        Platform::current().windows = windows;
        playAll(path);
    }

    /// Plays `event` and returns everything that followed from it.
    std::vector<std::string> play(const std::string& event) {
        windows->log.clear();
        const auto sentBefore = sent().size();
        const auto reportsBefore = reports().size();
        start(event);
        auto seen = windows->log;
        const auto asked = paths();
        for (auto i = sentBefore; i < asked.size(); ++i) {
            seen.push_back("ask " + asked[i].substr(asked[i].rfind('/') + 1, 10));
        }
        for (auto i = reportsBefore; i < reports().size(); ++i) {
            seen.push_back(std::string(name(reports()[i].type)) + " " + reports()[i].message.value_or("-"));
            EXPECT_EQ(reports()[i].callback + reports()[i].payload, "onAddCreditCardnone");
        }
        return seen;
    }
    void playAll(const std::string& path) {
        for (const auto& event : words(path)) play(event);
    }
    /// The body of the last request.
    JsonValue body() const { return JsonValue::parse(sent().back().body.value_or("null")); }

    const std::shared_ptr<Screen> windows = std::make_shared<Screen>();

private:
    void start(const std::string& event) {
        if (event == "call") return kavio().addCreditCardTDSecure(card, {.name = "Jo", .email = "jo@a.example"});
        if (event == "close") return windows->pressClose();
        if (event == "navigation") return static_cast<void>(windows->navigate("https://acs.example/next"));
        if (event == "redirect") return static_cast<void>(windows->navigate("http://127.0.0.1/?z2=0"));
        if (event == "no window") return static_cast<void>(windows->hasKeyWindow = false);
        if (event == "release") return kavio().release(&kavio());
        if (event == "destroy") return destroyFacade();
        if (event == "drop delegate") return destroyDelegate();
        if (device().network().open(Network::Session::ORDINARY) > 0) answer(replies.at(event));
    }
};

/// Another facade, which shares the screen.
struct Neighbour {
    void enrol() { kavio->addCreditCardTDSecure(card, {}); }
    const std::vector<Report>& reports() const { return delegate->reports; }

    const std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
    std::unique_ptr<Kavio> kavio = std::make_unique<Kavio>(delegate, "key", Kavio::EnvironmentType::TEST);
};

struct State {
    const char* name;
    std::string path;
    std::map<std::string, std::string> expected;  // by event
    std::string toOtherReplies = "";              // "$" stands for the reply; all other events change nothing
};

const std::string cannotParse = "SERVER_ERROR failed to parse server reponse";
const std::string cannotStart = "FAILURE failed to start 3DS authentication";
const std::string expired = "ACCESS_DENIED Your session token is expaired";

// For a state that waits for a JSON reply; `before` happens ahead of each report.
std::map<std::string, std::string> waiting(std::map<std::string, std::string> own, const std::string& before = "") {
    own.insert({{"call", "BUSY -"},
                {"page", before + "BAD_INPUT -"},
                {"no text", before + "BAD_INPUT -"},
                {"refusal", before + expired}});
    return own;
}

std::vector<State> states() {
    const std::string present = "present animated; ";
    const std::string dismiss = "dismiss animated; ";
    const std::map<std::string, std::string> idle{{"call", "ask addCard"}};
    const std::map<std::string, std::string> shown{
        {"call", "BUSY -"}, {"redirect", "ask getLocator"}, {"close", dismiss + "FAILURE canceled by user"}};
    const std::map<std::string, std::string> adding{{"frictionless", "SUCCESS -"},
                                                    {"fingerprint", "ask f?threeDSM"},
                                                    {"fingerprint without URL", "SERVER_ERROR invalid URL"},
                                                    {"challenge", present + "shown; load https://acs.example/c 60"},
                                                    {"challenge without URL", present + "shown"},
                                                    {"error", "SERVER_ERROR M"}};
    auto addingUnseen = adding;
    addingUnseen["challenge"] = addingUnseen["challenge without URL"] = cannotStart;
    const auto locating = [](const std::string& before, const std::string& another) {
        return waiting({{"locator", before + "SUCCESS -"},
                        {"locator error", before + "SERVER_ERROR error: M"},
                        {"another challenge", another}},
                       before);
    };
    const std::string another = "shown; load https://acs.example/d 60";
    auto locatingShown = locating(dismiss, another);
    locatingShown["close"] = "dismiss animated";
    return {
        {"idle", "", idle},
        {"adding", "call", waiting(adding), cannotParse},
        {"adding, without a window", "no window; call", waiting(addingUnseen), cannotParse},
        {"fetching", "call; fingerprint",
         waiting({{"page", present + "hidden; html <html>"}, {"no text", cannotStart}}), present + "hidden; html $"},
        {"fetching, without a window", "call; fingerprint; no window",
         waiting({{"page", cannotStart}, {"no text", cannotStart}}), cannotStart},
        {"fingerprint", "call; fingerprint; page", shown},
        {"challenge", "call; challenge; navigation", shown},
        {"challenge after a fingerprint", "call; fingerprint; page; redirect; another challenge", shown},
        {"challenge after a closed fingerprint", "call; fingerprint; page; redirect; close; another challenge", shown},
        {"locating", "call; challenge; redirect", locatingShown, dismiss + cannotParse},
        {"locating, closed", "call; challenge; redirect; close", locating("", present + another), cannotParse},
        {"locating, without a window", "call; challenge; redirect; close; no window",
         locating("", cannotStart + " page"), cannotParse},
        {"canceled", "call; challenge; close", idle},
        {"enrolled", "call; challenge; redirect; locator", idle},
    };
}

std::vector<std::string> events() {
    std::vector<std::string> all{"call", "close", "navigation", "redirect"};
    for (const auto& [name, reply] : replies) all.push_back(name);
    return all;
}

const Report enrolled{"onAddCreditCard", ResultType::SUCCESS};
const Report canceled{"onAddCreditCard", ResultType::FAILURE, "canceled by user"};
const Report takenDown{"onAddCreditCard", ResultType::FAILURE};

TEST(TDSecureEnrolment, DoesInEachStateWhatEachEventAsksFor) {
    for (const auto& state : states()) {
        for (const auto& event : events()) {
            SCOPED_TRACE(std::string(state.name) + ", then " + event);
            Enrolment enrolment(state.path);
            const auto reply = replies.find(event);
            auto expected = reply == replies.end() ? "" : state.toOtherReplies;
            if (const auto at = expected.find('$'); at != std::string::npos)
                expected.replace(at, 1, reply->second.body);
            if (const auto own = state.expected.find(event); own != state.expected.end()) expected = own->second;
            EXPECT_EQ(enrolment.play(event), words(expected));
        }
    }
}

TEST(TDSecureEnrolment, PreparesTheSceneOfItsFirstPageAndLetsItGoWhereThereIsNone) {
    const std::vector<std::pair<std::string, std::string>> courses{
        {"", "gone"},
        {"call", "waiting"},
        {"call; frictionless", "gone"},
        {"call; error", "gone"},
        {"call; release", "gone"},
        {"call; destroy", "gone"},
        {"call; drop delegate", "waiting"},
        {"call; drop delegate; error", "gone"},
        {"call; fingerprint", "waiting"},
        {"call; fingerprint; no text", "gone"},
        {"call; fingerprint; page", "presented"},
        {"call; fingerprint; page; redirect; close; another challenge", "gone"},
        {"call; challenge", "presented"},
        {"no window; call; challenge", "gone"},
        {"call; challenge; close", "gone"},
        {"call; challenge; close; call", "waiting"},
    };
    for (const auto& [path, expected] : courses) {
        SCOPED_TRACE(path);
        Enrolment enrolment(path);
        EXPECT_EQ(enrolment.windows->preparedScene(), expected);
    }
}

TEST(TDSecureEnrolment, IsSilentOnceFacadeOrDelegateIsGone) {
    for (const auto& state : states()) {
        for (const std::string end : {"release", "destroy", "drop delegate"}) {
            SCOPED_TRACE(std::string(state.name) + ", then " + end);
            Enrolment enrolment(state.path);
            const auto reports = enrolment.reports();
            const bool hadScene = enrolment.windows->hasScene();
            enrolment.play(end);
            EXPECT_EQ(enrolment.windows->hasScene(), hadScene && end == "drop delegate");
            for (const auto& event : events()) {
                if (event != "call") enrolment.play(event);
                EXPECT_FALSE(end != "drop delegate" && enrolment.windows->hasScene()) << event;
            }
            EXPECT_EQ(enrolment.reports(), reports);
        }
    }
}

TEST(TDSecureEnrolment, MayLoseItsFacadeOrBeginAgainInItsReport) {
    for (const std::string path : {"call; challenge; close", "call; challenge; redirect; locator", "call; error"}) {
        for (const std::string next : {"release", "destroy", "call"}) {
            SCOPED_TRACE(testing::Message() << path << ", then " << next);
            Enrolment enrolment;
            enrolment.delegate().onReport = [&](const Report&) { enrolment.play(next); };
            enrolment.playAll(path);
            EXPECT_EQ(enrolment.reports().size(), 1U);
            EXPECT_FALSE(enrolment.windows->hasScene());
            EXPECT_EQ(enrolment.device().network().open(Network::Session::ORDINARY), next == "call" ? 1U : 0U);
        }
    }
}

TEST(TDSecureEnrolment, LeavesThePageOfAnotherFacadeAlone) {
    for (const std::string path : {"", "call; challenge; close", "call; challenge; redirect; locator"}) {
        SCOPED_TRACE(path);
        Enrolment enrolment(path);  // looks on
        const auto reports = enrolment.reports();
        Neighbour other;
        const auto show = [&] {
            other.enrol();
            enrolment.play("challenge");
        };

        show();
        EXPECT_THAT(enrolment.play("redirect"), ElementsAre("ask getLocator"));
        EXPECT_THAT(enrolment.play("locator"), ElementsAre("dismiss animated"));
        show();
        EXPECT_THAT(enrolment.play("close"), ElementsAre("dismiss animated"));
        EXPECT_EQ(enrolment.reports(), reports);
        EXPECT_THAT(other.reports(), ElementsAre(enrolled, canceled));
        show();
        EXPECT_THAT(enrolment.play("release"), IsEmpty());
        other.kavio->release(other.kavio.get());
        EXPECT_FALSE(enrolment.windows->hasScene());
    }
}

TEST(TDSecureEnrolment, HearsOfItsPageWhenAnotherFacadeIsReleasedTooOften) {
    Enrolment enrolment;
    Neighbour other;
    enrolment.playAll("call; challenge");
    other.kavio->release(other.kavio.get());
    EXPECT_TRUE(enrolment.windows->hasScene());
    other.kavio->release(other.kavio.get());
    EXPECT_FALSE(enrolment.windows->hasScene());
    EXPECT_FALSE(enrolment.kavio().isBusy());
    EXPECT_THAT(enrolment.reports(), ElementsAre(takenDown));
    EXPECT_THAT(enrolment.outcomes(), ElementsAre("UNKNOWN PAGE_NOT_SHOWN"));
}

TEST(TDSecureEnrolment, ClosesItsOwnPageAndNoOther) {
    Enrolment enrolment;
    Neighbour other;
    enrolment.playAll("call; challenge");
    other.enrol();
    enrolment.playAll("redirect; close; challenge");
    EXPECT_THAT(enrolment.play("locator"), ElementsAre("SUCCESS -"));
    EXPECT_THAT(enrolment.play("close"), ElementsAre("dismiss animated"));
    EXPECT_THAT(other.reports(), ElementsAre(canceled));

    enrolment.playAll("call; release; call");
    EXPECT_THAT(enrolment.play("challenge"), IsEmpty()) << "of the one that was released";
    EXPECT_THAT(enrolment.play("challenge"), Contains("present animated"));
}

const std::string loadChallenge = "present animated; shown; load https://acs.example/c 60";

TEST(TDSecureEnrolment, TakesThePlaceOfThePageThatAnotherFacadeHasUp) {
    for (const auto& [path, seen, reports] : std::vector<std::tuple<std::string, std::string, std::vector<Report>>>{
             {"call; challenge", "dismiss animated; " + loadChallenge + "; FAILURE -", {takenDown}},
             {"call; challenge; redirect", "", {enrolled}},
         }) {
        SCOPED_TRACE(path);
        Enrolment enrolment;
        Neighbour other;
        enrolment.playAll(path);
        other.enrol();
        if (seen.empty()) {
            EXPECT_THAT(enrolment.play("locator"), ElementsAre("dismiss animated", "SUCCESS -"));
            EXPECT_EQ(enrolment.play("challenge"), words(loadChallenge));
        } else {
            EXPECT_EQ(enrolment.play("challenge"), words(seen));
        }
        EXPECT_THAT(enrolment.play("redirect"), ElementsAre("ask getLocator"));
        enrolment.play("locator");
        EXPECT_FALSE(enrolment.windows->hasScene());
        EXPECT_EQ(enrolment.reports(), reports);
        EXPECT_EQ(enrolment.outcomes().front(), seen.empty() ? "DONE NONE" : "UNKNOWN PAGE_NOT_SHOWN");
        EXPECT_THAT(other.reports(), ElementsAre(enrolled));
    }
}

TEST(TDSecureEnrolment, LeavesAPageUpWhereThereIsNoWindowForItsOwn) {
    Enrolment enrolment("call; challenge; no window");
    Neighbour other;
    other.enrol();
    EXPECT_THAT(enrolment.play("challenge"), IsEmpty());
    EXPECT_THAT(other.reports(),
                ElementsAre(Report{"onAddCreditCard", ResultType::FAILURE, "failed to start 3DS authentication"}));
    EXPECT_THAT(enrolment.play("close"), ElementsAre("dismiss animated", "FAILURE canceled by user"));
    EXPECT_THAT(enrolment.outcomes(), ElementsAre("UNKNOWN CANCELED_BY_PERSON"));
}

TEST(TDSecureEnrolment, ShowsItsPageAfterAFacadeThatWentWithItsOwn) {
    for (const std::string path : {"call; challenge", "call; challenge; redirect"}) {
        for (const std::string end : {"release", "destroy"}) {
            SCOPED_TRACE(testing::Message() << path << ", then " << end);
            Enrolment enrolment;
            Neighbour other;
            enrolment.playAll(path);
            EXPECT_THAT(enrolment.play(end), ElementsAre("dismiss animated"));
            enrolment.play("locator");
            other.enrol();
            EXPECT_EQ(enrolment.play("challenge"), words(loadChallenge));
            EXPECT_THAT(enrolment.play("redirect"), ElementsAre("ask getLocator"));
            EXPECT_THAT(enrolment.play("locator"), ElementsAre("dismiss animated"));
            EXPECT_THAT(other.reports(), ElementsAre(enrolled));
        }
    }
}

TEST(TDSecureEnrolment, MayLoseItsFacadeWhereItTakesThePlaceOfAPage) {
    Enrolment enrolment("call; challenge");
    Neighbour other;
    other.enrol();
    enrolment.delegate().onReport = [&](const Report&) { other.kavio.reset(); };
    EXPECT_THAT(enrolment.play("challenge"), ElementsAre("dismiss animated", "FAILURE -"));
    EXPECT_THAT(other.reports(), IsEmpty());
}

TEST(TDSecureEnrolment, EndsWhereItsPageCannotBePresented) {
    Enrolment enrolment;
    enrolment.play("call");
    enrolment.windows->onPresent = [] { throw std::bad_alloc(); };
    EXPECT_THAT(enrolment.play("challenge"),
                ElementsAre("present animated", "dismiss animated", "FAILURE out of memory"));
    // Nor is there any memory to take the page away.
    enrolment.windows->onPresent = [] {
        failAllocation(1);
        throw std::bad_alloc();
    };
    enrolment.play("call");
    const auto outcome = [&] {
        const InLibrary entered;
        return enrolment.play("challenge");
    }();
    EXPECT_TRUE(stopFailing());
    EXPECT_THAT(outcome, ElementsAre("present animated", "FAILURE out of memory"));
    EXPECT_THAT(enrolment.play("close"), ElementsAre("dismiss animated"));
    enrolment.windows->onPresent = nullptr;
    EXPECT_THAT(enrolment.play("call"), ElementsAre("ask addCard"));
    EXPECT_EQ(enrolment.play("challenge"), words(loadChallenge));
}

TEST(TDSecureEnrolment, EndsAPageAtTheLoopbackAddressOnlyAndHoldsNothingUp) {
    Enrolment enrolment("call; challenge");
    for (const std::optional<std::string> url : {"https://127.0.0.1/?z2=0", "HTTP://127.0.0.1/", " http://127.0.0.1/"})
        EXPECT_TRUE(enrolment.windows->navigate(url));
    EXPECT_TRUE(enrolment.windows->navigate(std::nullopt));
    EXPECT_EQ(enrolment.sent().size(), 1U);
    EXPECT_TRUE(enrolment.windows->navigate("http://127.0.0.10/"));
    EXPECT_EQ(enrolment.sent().size(), 2U);
}

TEST(TDSecureEnrolment, WaitsForThePersonAsLongAsItTakes) {
    // Also while the device sleeps. The service's time is known for a day.
    for (const auto& [hours, next] : std::map<int, std::string>{{1, "ask getLocator"}, {25, "ask time?"}}) {
        SCOPED_TRACE(hours);
        Enrolment enrolment("call; challenge; navigation");
        enrolment.windows->log.clear();
        enrolment.advance(std::chrono::hours(hours));
        EXPECT_THAT(enrolment.windows->log, IsEmpty());
        EXPECT_THAT(enrolment.reports(), IsEmpty());
        EXPECT_THAT(enrolment.play("redirect"), ElementsAre(next));
        if (next == "ask time?") enrolment.answer({503, ""});
        EXPECT_THAT(enrolment.play("locator"), ElementsAre("dismiss animated", "SUCCESS -"));
    }
}

TEST(TDSecureEnrolment, TellsTheServiceOfTheCardAndTheIssuerOfTheTransaction) {
    for (const auto& [holder, encoded] : std::vector<std::pair<TDSCardHolder, std::string>>{
             {{"Jo", "jo@a.example", {}, {}, {}, {}, {}, {}}, R"({"name":"Jo","email":"jo@a.example"})"},
             {{"Jo", "jo@a.example", 12, "High Street", "Bath", "Somerset", "GB", "BA1"},
              R"({"name":"Jo","email":"jo@a.example","streetNumber":12,"streetName":"High Street","city":"Bath",)"
              R"("territory":"Somerset","country":"GB","postal":"BA1"})"},
         }) {
        Enrolment enrolment;
        enrolment.kavio().addCreditCardTDSecure(card, holder);
        auto body = enrolment.body();
        body.erase("key");
        const std::string start = R"({"card":{"month":7,"number":"4111","securityCode":12,"year":2039},"tdSecure":{
            "browser":{"lang":"en","challengeWindow":4,"agent":"agent","accept":"accept","color":1,"width":300,
            "height":300},"redirect":"http://127.0.0.1","holder":)";
        EXPECT_EQ(body, JsonValue::parse(start + encoded + "}}"));
        enrolment.play("fingerprint");
        const auto page = enrolment.sent().back();
        EXPECT_EQ(page.url,
                  "https://acs.example/f?threeDSMethodData="
                  "ewogICJ0aHJlZURTTWV0aG9kTm90aWZpY2F0aW9uVVJMIjogImh0dHA6Ly8xMjcuMC4wLjEiLAogICJ0aHJlZURTU2VydmVyVHJh"
                  "bnNJRCI6ICJJIgp9");
        EXPECT_EQ(page.method + page.body.value_or(" without a body"), "POST without a body");
        EXPECT_THAT(page.headers, ElementsAre(Pair("Content-Type", "application/x-www-form-urlencoded"),
                                              Pair("Cache-Control", "no-cache"), Pair("Host", "acs.kavio.example"),
                                              Pair("X-Zelto-Sign", testing::SizeIs(33))));
        for (const auto& request : enrolment.sent()) EXPECT_EQ(request.idempotency, Idempotency::ONCE);
    }
}

TEST(TDSecureEnrolment, HandsOnWhatThePageSentBack) {
    for (const auto& [end, expected] : std::vector<std::pair<std::string, std::string>>{
             {"", "{}"},
             {"?g1=T&z2=0&z3=OK&z50=X", R"({"token":"T","result":"0","description":"OK","transaction":"X"})"},
             {"/a?G1=no&z2=1&other=2&z2=3&&=&z%32=%34#g1=U", R"({"result":"4"})"},
             {"/?g1=a%20b+c%26d%3D%C3%A9&z3=%zz%4&z2=", R"({"token":"a b+c&d=é","description":"%zz%4","result":""})"},
             {"/?g1=a=b&z2&z3=1&z3&z50=%ff", R"({"token":"a=b","transaction":"\ufffd"})"},
         }) {
        Enrolment enrolment;
        enrolment.play("call");
        const auto first = enrolment.body();
        enrolment.play("challenge");
        enrolment.windows->navigate("http://127.0.0.1" + end);
        auto body = JsonValue::parse(expected);
        body.update({{"flow", 3}, {"card", first["card"]}});
        EXPECT_EQ(enrolment.body(), body) << end;

        enrolment.play("locator");
        enrolment.play("call");
        EXPECT_NE(enrolment.body()["key"], first["key"]) << "each attempt has its own";
    }
}

}  // namespace
}  // namespace kavio::test
