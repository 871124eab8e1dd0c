#include "gtk/enrolment_world.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

namespace kavio::test {
namespace {

using ::testing::ElementsAreArray;

using EnrolmentTest = EnrolmentWorld;

const std::string acceptCode =
    "document.getElementById('code').value = '1234'; document.querySelector('[value=accept]').click()";
const Report success{"onAddCreditCard", ResultType::SUCCESS};
const Report canceled{"onAddCreditCard", ResultType::FAILURE, "canceled by user"};

Report serverError(const std::string& message) { return {"onAddCreditCard", ResultType::SERVER_ERROR, message}; }

TEST_F(EnrolmentTest, ReportsTheResultOfEachTestCardOnce) {
    const auto answer = [](const std::string& script) { return [script] { runInPage(script); }; };
    struct Course {
        const char* number;
        Report report;
        std::function<void()> person;
    };
    const std::vector<Course> courses{
        {"4000000000001018", success, nullptr},
        {"4000000000001026", success, nullptr},
        {"4000000000001034", success, answer(acceptCode)},
        {"4000000000001042", success, answer(acceptCode)},
        {"4000000000001042", serverError("error: Cancelled by the card holder"),
         answer("document.querySelector('[value=cancel]').click()")},
        {"4000000000001059", success, nullptr},
        {"4000000000001067", serverError("error: Declined by the bank"), answer(acceptCode)},
        {"4000000000001075", canceled,
         [] {
             runInPage("");
             EXPECT_EQ(text("host") + ", " + text("security"), "localhost, Secure connection");
             click("close");
         }},
        {"4000000000001083", success, nullptr},
        {"4000000000001091", success, answer(acceptCode)},
        {"4000000000001109", canceled,
         [] {
             EXPECT_TRUE(until([] { return shown() == "failed"; }));
             press("Escape");
         }},
        {"4000000000001117", serverError("the card's bank cannot be reached"), nullptr},
        {"4000000000001125", serverError("failed to parse server reponse"), nullptr},
        {"4000000000001133", serverError("invalid URL"), nullptr},
        {"4000000000001141", serverError("error: the card's bank cannot be reached"), nullptr},
        {"4000000000001158", serverError("failed to parse server reponse"), nullptr},
    };
    std::vector<Report> expected;
    for (const auto& course : courses) {
        SCOPED_TRACE(course.number);
        enrol(course.number);
        if (course.person) course.person();
        expected.push_back(course.report);
        waitFor(expected.size());
        EXPECT_EQ(shown(), "nothing");
        EXPECT_EQ(windowCount(), 1U);
    }
    EXPECT_THAT(reports(), ElementsAreArray(expected));
}

TEST_F(EnrolmentTest, IsCanceledByAPersonUntilThePageHasEndedAndNotAfter) {
    server.serveNothing("/slow");
    std::vector<Report> expected;
    for (const bool byKey : {true, false}) {
        enrolWith(
            "<script>window.close(); addEventListener('keydown', e => { e.preventDefault(); e.stopPropagation() }, "
            "true)"
            "</script>");
        EXPECT_TRUE(until([] { return shown() == "page"; }));
        close(byKey);
        expected.push_back(canceled);
        waitFor(expected.size());

        enrolWith("<script>location='/slow'</script>");
        EXPECT_TRUE(until([&] { return server.requests().back() == "GET /slow"; }));
        close(byKey);
        expected.push_back(canceled);
        waitFor(expected.size());

        sandbox.fault("*/getLocator",
                      {.status = 200, .body = R"({"result":1,"locator":"L"})", .delay = std::chrono::seconds(3)});
        enrolWith("<script>location='http://127.0.0.1/?z2=0'</script>");
        EXPECT_TRUE(until([this] { return lastPath().ends_with("/getLocator"); }));
        close(byKey);
        EXPECT_TRUE(until([] { return shown() == "nothing"; }));
        EXPECT_EQ(reports().size(), expected.size());
        expected.push_back(success);
        waitFor(expected.size());
        EXPECT_EQ(windowCount(), 1U);
    }
    EXPECT_THAT(reports(), ElementsAreArray(expected));
}

TEST_F(EnrolmentTest, StaysInTheHandsOfThePersonWhateverThePageDoes) {
    server.serve("/download", [](const auto&, auto& response) {
        response.set_header("Content-Disposition", "attachment; filename=kavio-test-download");
        response.set_content("bytes", "application/octet-stream");
    });
    server.servePage("/again", "<script>location='/again'</script>");
    server.servePage("/large",
                     "<p>" + std::string(50'000'000, 'x'));  // NOLINT(bugprone-string-constructor): as large as meant
    std::vector<Report> expected;
    for (const auto& [name, html] : std::initializer_list<std::pair<const char*, std::string>>{
             {"alerts", "<script>for (;;) alert(confirm(prompt('')))</script>"},
             {"a busy script", "<script>onload = () => setTimeout(() => { for (;;); })</script>"},
             {"a storm of windows", "<script>setInterval(() => { open('" + server.url("/another") + "') })</script>"},
             {"endless redirects", "<script>location='/again'</script>"},
             {"a refusal to leave", "<script>onbeforeunload = () => 'stay'; location='/again'</script>"},
             {"a large document", "<script>location='/large'</script>"},
             {"a download", "<script>location='/download'</script>"},
             {"a file", "<script>location='file:///etc/passwd'</script>"},
             {"a program", "<script>location='mailto:a@b.example'; location='kavio-test:x'</script>"},
             {"permissions",
              "<script>Notification.requestPermission(); navigator.geolocation.getCurrentPosition(() => 0)"
              "</script><input type=file autofocus>"},
             {"full screen", "<script>document.documentElement.requestFullscreen(); print()</script>"},
         }) {
        SCOPED_TRACE(name);
        enrolWith(html + std::string("<p>page"));
        EXPECT_TRUE(until([] { return shown() == "page"; }));
        EXPECT_EQ(windowCount(), 2U);
        press("Escape");
        expected.push_back(canceled);
        waitFor(expected.size());
        EXPECT_EQ(windowCount(), 1U);
    }
    EXPECT_THAT(reports(), ElementsAreArray(expected));
}

std::size_t openFiles() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

// Pages of memory that are the process's own.
std::size_t memory() {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident;
}

std::vector<std::string> filesOfTheUser() {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(std::getenv("HOME"))) {
        found.push_back(entry.path());
    }
    return found;
}

TEST_F(EnrolmentTest, LeavesNothingBehind) {
    const auto before = filesOfTheUser();  // the toolkit's own
    std::size_t files = 0;
    std::size_t pages = 0;
    for (std::size_t i = 1; i <= 40; ++i) {
        enrol(i % 4 == 0 ? "4000000000001059" : "4000000000001026");
        waitFor(i);
        if (i != 8) continue;  // caches are full
        files = openFiles();
        pages = memory();
    }
    EXPECT_TRUE(until([=] { return openFiles() <= files; })) << openFiles() << " open files, once " << files;
    EXPECT_LT(memory(), pages * 5 / 4);
    EXPECT_EQ(windowCount(), 1U);
    EXPECT_THAT(reports(), testing::AllOf(testing::SizeIs(40), testing::Each(success)));
    EXPECT_EQ(filesOfTheUser(), before);
}

}  // namespace
}  // namespace kavio::test
