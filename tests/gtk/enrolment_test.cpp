#include "gtk/enrolling.h"
#include "gtk/usage.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <functional>

namespace kavio::test {
namespace {

class EnrolmentTest : public Enrolling {
protected:
    void enrolWith(const std::string& page) {
        server.servePage("/page", page);
        sandbox.fault("/account/locators/credorax/addCard",
                      {.status = 200, .body = R"({"type":3,"id":"I","url":")" + server.url("/page") + "\"}"});
        enrol("4000000000001042");
    }
};

const std::string acceptCode =
    "document.getElementById('code').value = '1234'; document.querySelector('[value=accept]').click()";

TEST_F(EnrolmentTest, ReportsTheResultOfEachTestCardOnce) {
    struct Course {
        const char* number;
        Report report;
        std::string answer = {};  // a script in the place of a person
    };
    const std::vector<Course> courses{
        {"4000000000001018", success},
        {"4000000000001026", success},
        {"4000000000001034", success, acceptCode},
        {"4000000000001042", success, acceptCode},
        {"4000000000001042", serverError("error: Cancelled by the cardholder"),
         "document.querySelector('[value=cancel]').click()"},
        {"4000000000001059", success},
        {"4000000000001067", serverError("error: Declined by the bank"), acceptCode},
        {"4000000000001075", canceled},
        {"4000000000001083", success},
        {"4000000000001091", success, acceptCode},
        {"4000000000001109", canceled},
        {"4000000000001117", serverError("the card's bank cannot be reached")},
        {"4000000000001125", serverError("failed to parse server reponse")},
        {"4000000000001133", serverError("invalid URL")},
        {"4000000000001141", serverError("error: the card's bank cannot be reached")},
        {"4000000000001158", serverError("failed to parse server reponse")},
    };
    for (const auto& course : courses) {
        SCOPED_TRACE(course.number);
        enrol(course.number);
        if (!course.answer.empty()) runInPage(course.answer);
        if (course.report == canceled) {
            EXPECT_TRUE(until([] { return shown() == "page" || shown() == "failed"; }));
            press("Escape");
        }
        expect(course.report);
        EXPECT_EQ(shown(), "nothing");
        EXPECT_EQ(windowCount(), 1U);
    }
}

TEST_F(EnrolmentTest, StaysInTheHandsOfThePersonWhateverThePageDoes) {
    server.servePage("/again", "<script>location='/again'</script>");
    server.servePage("/large",
                     "<p>" + std::string(50'000'000, 'x'));  // NOLINT(bugprone-string-constructor): as large as meant
    for (const auto& [name, html] : std::initializer_list<std::pair<const char*, std::string>>{
             {"alerts", "<script>for (;;) alert(confirm(prompt('')))</script>"},
             {"every key", "<script>onkeydown = e => { e.preventDefault(); e.stopPropagation() }</script>"},
             {"a busy script", "<script>onload = () => setTimeout(() => { for (;;); })</script>"},
             {"a storm of windows", "<script>setInterval(() => { open('" + server.url("/another") + "') })</script>"},
             {"endless redirects", "<script>location='/again'</script>"},
             {"a refusal to leave", "<script>onbeforeunload = () => 'stay'; location='/again'</script>"},
             {"a large document", "<script>location='/large'</script>"},
         }) {
        SCOPED_TRACE(name);
        enrolWith(html + std::string("<p>page"));
        EXPECT_TRUE(until([] { return shown() == "page"; }));
        EXPECT_EQ(windowCount(), 2U);
        press("Escape");
        expect(canceled);
        EXPECT_EQ(windowCount(), 1U);
    }
}

std::vector<std::string> filesOfTheUser() {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(std::getenv("HOME"))) {
        found.push_back(entry.path());
    }
    return found;
}

TEST_F(EnrolmentTest, LeavesNothingOfAPageThatNeverCame) {
    const auto before = filesOfTheUser();
    // What the process of the page may have come to when the facade goes.
    using Condition = std::function<bool()>;
    const auto isThere = [] { return !webProcesses().empty(); };
    const auto isReady = [] {
        const auto all = webProcesses();
        return !all.empty() && std::ranges::none_of(all, [](const auto& process) { return process.second; });
    };
    sandbox.fault("*/addCard", {.delay = std::chrono::hours(1)});
    for (const auto& hasComeSoFar : {Condition([] { return true; }), Condition(isThere), Condition(isReady)}) {
        for (const bool isReleased : {true, false, true, false}) {
            EXPECT_TRUE(until([] { return processes("WebKit").empty(); }));
            auto facade = std::make_unique<Kavio>(std::weak_ptr<KavioDelegate>(), "key", Kavio::EnvironmentType::TEST);
            enrol(*facade, "4000000000001042");
            EXPECT_EQ(windowCount(), 2U);
            EXPECT_TRUE(until(hasComeSoFar));
            isReleased ? facade->release(facade.get()) : facade.reset();
            EXPECT_EQ(windowCount(), 1U);
        }
    }
    sandbox.clearFaults();
    EXPECT_TRUE(until([] { return processes("WebKit").empty(); })) << processes("WebKit").size();
    EXPECT_EQ(filesOfTheUser(), before);
}

TEST_F(EnrolmentTest, LeavesNothingBehind) {
    const auto before = filesOfTheUser();  // made by the toolkit
    Usage early;
    for (std::size_t i = 1; i <= 40; ++i) {
        enrol(i % 4 == 0 ? "4000000000001059" : "4000000000001026");
        expect(success);
        if (i == 8) early = Usage::now();  // by then the caches are full
    }
    EXPECT_TRUE(until([&] { return Usage::now().files <= early.files; })) << Usage::now() << ", once " << early;
    EXPECT_LT(Usage::now().pages, early.pages * 5 / 4);
    EXPECT_EQ(windowCount(), 1U);
    EXPECT_EQ(filesOfTheUser(), before);
}

}  // namespace
}  // namespace kavio::test
