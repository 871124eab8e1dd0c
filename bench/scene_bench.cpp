// kavio-scene-bench: the time from the reply to a card until the issuer's page shows, with Kavio::gtk and in a bare
// WebKitGTK program that makes its view when the reply comes. It needs a display; docs/gtk.md says how to give it one
// of its own.

#include "sandbox/pages.h"

#include <kavio/gtk.h>
#include <kavio/kavio.h>

#include <fmt/format.h>
#include <httplib.h>
#include <webkit/webkit.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace {

using namespace kavio;
using Clock = std::chrono::steady_clock;

/// The issuer: records when its page is requested and when it has been painted. Serves until the process ends.
class Issuer {
public:
    Issuer() {
        const std::string tell =
            "<script>requestAnimationFrame(() => requestAnimationFrame(() => fetch('/painted')))</script>";
        mServer.Get("/page", [this, tell](const auto&, auto& reply) {
            mAsked = Clock::now();
            reply.set_content(sandbox::challengeHtml("1042", "", "") + tell, "text/html; charset=utf-8");
        });
        mServer.Get("/painted", [this](const auto&, auto&) {
            mPainted = Clock::now();
            isPainted = true;
            g_main_context_wakeup(nullptr);
        });
        mPort = mServer.bind_to_any_port("127.0.0.1");
        std::thread([this] { mServer.listen_after_bind(); }).detach();
    }

    // By name: the address 127.0.0.1 would look like the end of a page.
    std::string url() const { return fmt::format("http://localhost:{}/page", mPort); }
    std::string timesSince(Clock::time_point start) const {
        const auto since = [=](Clock::time_point end) {
            return std::chrono::duration<double, std::milli>(end - start).count();
        };
        return fmt::format("{} {}", since(mAsked), since(mPainted));
    }

    std::atomic<bool> isPainted = false;

private:
    httplib::Server mServer;
    int mPort = 0;
    Clock::time_point mAsked;
    Clock::time_point mPainted;
};

/// Answers every request with the same challenge, and records when. For a card the service has to ask the issuer, so
/// that takes time.
class ChallengingSession final : public UrlSession {
public:
    ChallengingSession(std::string url, std::chrono::milliseconds serviceTime)
        : mUrl(std::move(url)), mServiceTime(serviceTime) {}
    ~ChallengingSession() override { join(); }

    void dataTask(UrlRequest request, Completion completion) override {
        join();
        const bool isForCard = request.url.ends_with("/addCard");
        mThread = std::thread([this, isForCard, completion = std::move(completion)] {
            if (isForCard) std::this_thread::sleep_for(mServiceTime);
            auto body = fmt::format(R"({{"type":3,"id":"I","url":"{}"}})", mUrl);
            answered = Clock::now();
            completion(UrlReply{200, std::move(body)});
        });
    }

    std::atomic<Clock::time_point> answered = Clock::now();

private:
    void join() {
        // The request after the one for the time is made in that one's completion, on its thread.
        if (mThread.get_id() == std::this_thread::get_id()) return mThread.detach();
        if (mThread.joinable()) mThread.join();
    }

    const std::string mUrl;
    const std::chrono::milliseconds mServiceTime;
    std::thread mThread;
};

void runFor(std::chrono::milliseconds time) {
    for (const auto end = Clock::now() + time; Clock::now() < end;) {
        if (!g_main_context_iteration(nullptr, FALSE)) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

GtkWindow* showHostWindow(GtkApplication* application) {
    auto* window = GTK_WINDOW(gtk_application_window_new(application));
    gtk_window_present(window);
    while (!gtk_widget_get_mapped(GTK_WIDGET(window))) g_main_context_iteration(nullptr, TRUE);
    runFor(std::chrono::milliseconds(300));  // until it has settled
    return window;
}

void waitFor(const Issuer& issuer) {
    while (!issuer.isPainted) g_main_context_iteration(nullptr, TRUE);
}

std::string timeLibrary(GtkApplication* application, const Issuer& issuer, std::chrono::milliseconds serviceTime) {
    LinuxPlatformOptions options;
    options.storeDirectory = std::filesystem::temp_directory_path() / fmt::format("kavio-scene-bench-{}", getpid());
    auto platform = makeGtkPlatform(application, options);
    const auto session = std::make_shared<ChallengingSession>(issuer.url(), serviceTime);
    platform.urlSession = session;
    Platform::install(std::move(platform));
    const auto delegate = std::make_shared<QuietDelegate>();
    Kavio kavio(delegate, "key", Kavio::EnvironmentType::TEST);
    kavio.addCreditCardTDSecure({.number = "4000000000001042", .month = 1, .year = 2039, .securityCode = 7}, {});
    waitFor(issuer);
    std::filesystem::remove_all(options.storeDirectory);
    return issuer.timesSince(session->answered);
}

std::string timeBare(GtkWindow* host, const Issuer& issuer, std::chrono::milliseconds serviceTime) {
    runFor(serviceTime);
    const auto start = Clock::now();
    auto* session = webkit_network_session_new_ephemeral();
    auto* view = g_object_new(WEBKIT_TYPE_WEB_VIEW, "network-session", session, nullptr);
    auto* window = GTK_WINDOW(gtk_window_new());
    gtk_window_set_transient_for(window, host);
    gtk_window_set_child(window, GTK_WIDGET(view));
    gtk_window_set_default_size(window, 1280, 800);
    gtk_window_fullscreen(window);
    webkit_web_view_load_uri(WEBKIT_WEB_VIEW(view), issuer.url().c_str());
    gtk_window_present(window);
    waitFor(issuer);
    return issuer.timesSince(start);
}

/// One run in a fresh process, as when a program has just started.
int runOnce(std::string_view kind, std::chrono::milliseconds serviceTime) {
    if (gtk_init_check() == FALSE) return std::fputs("kavio-scene-bench: there is no display\n", stderr), 1;
    auto* application = gtk_application_new(nullptr, G_APPLICATION_NON_UNIQUE);
    g_application_register(G_APPLICATION(application), nullptr, nullptr);
    const Issuer issuer;
    auto* host = showHostWindow(application);
    fmt::print("{}\n",
               kind == "library" ? timeLibrary(application, issuer, serviceTime) : timeBare(host, issuer, serviceTime));
    std::fflush(stdout);
    std::_Exit(0);
}

struct Times {
    std::vector<double> navigation;
    std::vector<double> visible;
    void add(const char* kind, int serviceTime) {
        const auto program = std::filesystem::read_symlink("/proc/self/exe").string();
        std::FILE* output = popen(fmt::format("'{}' {} {}", program, kind, serviceTime).c_str(), "r");
        double asked = 0;
        double painted = 0;
        if (std::fscanf(output, "%lf %lf", &asked, &painted) != 2) throw std::runtime_error("a run failed");
        pclose(output);
        navigation.push_back(asked);
        visible.push_back(painted);
    }
};

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

void printRow(int serviceTime, const char* name, const std::vector<double>& library, const std::vector<double>& bare) {
    fmt::print("| {} ms | {} | {:.0f} ms | {:.0f} ms | {:.2f} |\n", serviceTime, name, median(library), median(bare),
               median(library) / median(bare));
}

int compare() {
    fmt::print(
        "| the service answers in | from then to | Kavio::gtk | bare WebKitGTK | ratio |\n"
        "| --- | --- | --- | --- | --- |\n");
    for (const int serviceTime : {0, 200, 500}) {
        Times library;
        Times bare;
        for (int run = 0; run < 13; ++run) {
            library.add("library", serviceTime);
            bare.add("bare", serviceTime);
        }
        printRow(serviceTime, "the request for the page", library.navigation, bare.navigation);
        printRow(serviceTime, "the painted challenge", library.visible, bare.visible);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return argc == 3 ? runOnce(argv[1], std::chrono::milliseconds(std::stoi(argv[2]))) : compare();
    } catch (const std::exception& error) {
        fmt::print(stderr, "kavio-scene-bench: {}\n", error.what());
        return 1;
    }
}
