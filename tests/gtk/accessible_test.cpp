#include "gtk/gtk_world.h"

#include <kavio/testing/logged_scene.h>
#include <kavio/testing/raw_server.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>

namespace kavio::test {
namespace {

/// tests/gtk/screen-reader, in a process of its own, as it must be: it waits for this one's answers.
class ScreenReader {
public:
    // WebKit's processes get no copy of the pipe ("e"): they would keep the reader waiting for the next line, and this
    // process for its end.
    ScreenReader()
        : mProcess(
              ::popen((KAVIO_SCREEN_READER " " + std::to_string(::getpid()) + " >" + mHeard.string()).c_str(), "we"),
              ::pclose) {}

    /// Forgets what has been read out.
    void forget() const { tell("forget"); }
    /// What has been read out since then, and what there is to read.
    std::string ask() const {
        const auto before = answers().size();
        tell("tell");
        EXPECT_TRUE(GtkWorld::until([&] { return answers().size() > before && answers().ends_with("end\n"); }));
        return answers().substr(before);
    }

private:
    void tell(const char* what) const {
        std::fprintf(mProcess.get(), "%s\n", what);
        std::fflush(mProcess.get());
    }
    std::string answers() const {
        std::ifstream file(mHeard);
        return {std::istreambuf_iterator(file), {}};
    }

    const TemporaryFolder mFolder;
    const std::filesystem::path mHeard = mFolder.path() / "heard";
    const std::unique_ptr<FILE, int (*)(FILE*)> mProcess;
};

class AccessibleTest : public GtkHost {
protected:
    AccessibleTest() : GtkHost(trustingTheApplicationAuthority()) { gtk_window_set_title(host, "Wallet"); }
};

TEST_F(AccessibleTest, TellsAScreenReaderWhatTheSceneShowsAndWhenThatChanges) {
    server.serveNothing("/slow");
    const RawServer secure(applicationAuthority().issue({"localhost"}),
                           answering(httpReply(200, "<button>Send</button>", "Content-Type: text/html\r\n")));
    const ScreenReader reader;
    reader.ask();  // it is there
    const LoggedScene made(*Platform::current().windows);
    struct State {
        const char* name;
        std::function<void()> enter;
        std::string heard;
        std::string tree;
    };
    const std::string bar =
        "frame: Wallet\n"
        "push button: Close without adding the card: Close without adding the card\n"
        "label: Close\n"
        "label: Card check\n";
    for (const auto& [name, enter, heard, tree] : std::initializer_list<State>{
             {"checking the card",
              [&] {
                  made.runHidden("<p>hidden");
                  Platform::current().windows->keyWindow()->rootViewController()->present(made.scene, true);
              },
              "",
              "status bar: Your card is being checked… (focused)\n"
              "progress bar: Your card is being checked…\n"
              "label: Your card is being checked…\n"},
             {"a page on its way", [&] { made.show(server.url("/slow")); }, "status bar now: One moment, please…\n",
              "status bar: One moment, please… (focused)\n"
              "progress bar: One moment, please…\n"
              "label: One moment, please…\n"
              "progress bar: One moment, please…\n"},
             {"a page",
              [&] { made.show("https://localhost" + secure.address().substr(std::string("127.0.0.1").size())); },
              "focus on document text: localhost\n",
              "label: localhost: localhost\n"
              "status bar: Secure connection\n"
              "document text: localhost: Secure connection (focused)\n"},
             {"a button in it", [&] { runInPage("document.querySelector('button').focus()"); },
              "focus on push button: Send\n",
              "label: localhost: localhost\n"
              "status bar: Secure connection\n"
              "document text: localhost: Secure connection (focused)\n"},
             {"something over plain http in it",
              [&] { runInPage("document.body.append(Object.assign(new Image(), {src: '" + server.url("/") + "'}))"); },
              "status bar now: The connection is not secure\n",
              "label: localhost: localhost\n"
              "status bar: The connection is not secure\n"
              "document text: localhost: The connection is not secure (focused)\n"},
             {"a page that cannot be loaded", [&] { made.show("http://localhost:1/"); },
              "focus on status bar: One moment, please…\n"
              "focus on alert: The page of your card's bank can't be loaded.\n"
              "alert now: The page of your card's bank can't be loaded.\n",
              "alert: The page of your card's bank can't be loaded.: Your card is not stored yet. (focused)\n"
              "label: The page of your card's bank can't be loaded.\n"
              "label: Your card is not stored yet.\n"
              "push button: Try again\n"
              "label: Try again\n"},
         }) {
        reader.forget();
        enter();
        auto expected = heard;
        expected.append("--\n").append(bar).append(tree).append("end\n");
        std::string told;
        until([&] { return (told = reader.ask()) == expected; }, std::chrono::seconds(10));
        EXPECT_EQ(told, expected) << name;
    }
}

}  // namespace
}  // namespace kavio::test
