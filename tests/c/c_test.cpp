#include <kavio/kavio_c.h>
#include <kavio/testing/temporary_folder.h>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace kavio::test {

using namespace ::testing;

namespace {

using Json = nlohmann::json;
using Session = std::unique_ptr<kavio_session, decltype(&kavio_destroy)>;

/// The store of all sessions of this process.
Json sharedOptions() {
    static const TemporaryFolder folder;
    return {{"storeDir", folder.path().string()}, {"connectTo", "127.0.0.1:1"}, {"kavioKey", "key"}};
}

std::string takeText(char* text) {
    std::string copy = text == nullptr ? "" : text;
    kavio_free(text);
    return copy;
}

/// The reason why there is no session.
std::string refusal(const std::string& options) {
    kavio_session* session = nullptr;
    char* error = nullptr;
    const int status = kavio_create(options.c_str(), &session, &error);
    const Session owned{session, kavio_destroy};
    const auto line = takeText(error);
    if (status != KAVIO_FAILED || session != nullptr) return "status " + std::to_string(status);
    const auto event = Json::parse(line);
    EXPECT_EQ(event.at("event"), "error");
    return event.at("message");
}

Session open(const Json& more = {{"facade", false}}) {
    auto options = sharedOptions();
    options.update(more);
    kavio_session* session = nullptr;
    char* error = nullptr;
    EXPECT_EQ(kavio_create(options.dump().c_str(), &session, &error), KAVIO_OK) << takeText(error);
    return {session, kavio_destroy};
}

int send(const Session& session, const std::string& line) {
    return kavio_send(session.get(), line.data(), line.size());
}

/// The next line; an empty text if there is none.
std::string receive(const Session& session, int milliseconds = -1) {
    char* line = nullptr;
    std::size_t length = 99;
    const int status = kavio_receive(session.get(), milliseconds, &line, &length);
    EXPECT_EQ(status == KAVIO_OK, line != nullptr);
    auto text = takeText(line);
    EXPECT_EQ(text.size(), status == KAVIO_OK ? length : 0);
    return text;
}

bool isReadable(const Session& session, int milliseconds = 0) {
    pollfd entry{.fd = kavio_descriptor(session.get()), .events = POLLIN, .revents = 0};
    return ::poll(&entry, 1, milliseconds) == 1 && entry.revents == POLLIN;
}

/// What the dynamic symbol table of the library offers, a name a line.
std::string symbols() {
    const std::unique_ptr<FILE, decltype(&pclose)> output{popen("nm -D --defined-only -j " KAVIO_C_LIBRARY, "r"),
                                                          pclose};
    std::string names(10'000, ' ');
    names.resize(std::fread(names.data(), 1, names.size(), output.get()));
    return names;
}

const std::string version = R"({"op":"getVersion","facade":"f"})";
const std::string versionAnswer = R"({"event":"return","op":"getVersion","facade":"f","value":"1.0.0"})";
const std::string create = R"({"op":"create","apiKey":"k","environment":"TEST","facade":"f"})";
const std::string createAnswer = R"({"event":"return","op":"create","facade":"f","value":true})";

}  // namespace

TEST(CLibrary, ShowsNothingButItsFunctions) {
    EXPECT_EQ(symbols(),
              "kavio_abi\nkavio_build\nkavio_close\nkavio_create\nkavio_descriptor\nkavio_destroy\nkavio_free\n"
              "kavio_receive\nkavio_send\nkavio_version\n");
}

TEST(CLibrary, TakesNullPointers) {
    const auto session = open();
    kavio_session* other = session.get();
    EXPECT_EQ(kavio_create(nullptr, &other, nullptr), KAVIO_INVALID);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(kavio_create("{}", nullptr, nullptr), KAVIO_INVALID);
    EXPECT_EQ(kavio_create("?", &other, nullptr), KAVIO_FAILED);
    EXPECT_EQ(kavio_send(nullptr, "", 0), KAVIO_INVALID);
    EXPECT_EQ(kavio_send(session.get(), nullptr, 0), KAVIO_INVALID);
    char* line = nullptr;
    EXPECT_EQ(kavio_receive(nullptr, 0, &line, nullptr), KAVIO_INVALID);
    EXPECT_EQ(kavio_receive(session.get(), 0, nullptr, nullptr), KAVIO_INVALID);
    EXPECT_EQ(kavio_descriptor(nullptr), -1);
    EXPECT_EQ(kavio_close(nullptr), KAVIO_INVALID);
    kavio_destroy(nullptr);
    kavio_free(nullptr);
}

TEST(CLibrary, RefusesOptionsThatAreWrongOrDifferFromThoseOfTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // in a process that has no session yet
    EXPECT_EXIT(std::_Exit(refusal("{}") == "\"storeDir\" is missing" ? 0 : 1), ExitedWithCode(0), "");

    const auto first = open();
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", "the line is not a JSON object: it is malformed at byte 1"},
        {R"({"storDir":"x"})", "\"storDir\" is not an option"},
        {R"({"apiKey":1})", "\"apiKey\" must be a text, not a number"},
        {R"({"environment":"PRODUCTION"})", "\"environment\" must be TEST, TESTS or PROD"},
        {R"({"facade":"main"})", "\"facade\" must be a boolean, not a text"},
        {R"({"connectTo":"localhost"})", "\"connectTo\" must be HOST:PORT"},
        {R"({"connectTo":"localhost:65536"})", "\"connectTo\" must be HOST:PORT"},
        {R"({"caFile":"/nowhere/a.pem"})", "\"caFile\" must be the path of a file"},
        {R"({"caFile":"/etc/passwd"})", "\"caFile\" differs from that of the process's first session"},
        {R"({"storeDir":"/nowhere"})", "\"storeDir\" differs from that of the process's first session"},
        {R"({"connectTo":"127.0.0.1:2"})", "\"connectTo\" differs from that of the process's first session"},
        {R"({"kavioKey":"other"})", "\"kavioKey\" differs from that of the process's first session"},
        {R"({"bundleVersion":"1"})", "\"bundleVersion\" differs from that of the process's first session"},
    };
    for (const auto& [options, reason] : cases) EXPECT_EQ(refusal(options), reason) << options;

    // What is the same, or left out, is shared.
    kavio_session* second = nullptr;
    ASSERT_EQ(kavio_create(R"({"kavioKey":"key","environment":"PROD"})", &second, nullptr), KAVIO_OK);
    kavio_destroy(second);
}

TEST(CLibrary, AnswersNonsenseAndGoesOn) {
    const auto session = open();
    send(session, create);
    EXPECT_EQ(receive(session), createAnswer);
    const std::vector<std::pair<std::string, const char*>> cases{
        {std::string(3, '\0'), "NUL"},
        {version + '\0', "NUL"},
        {"\xff\xfe", "not a JSON object"},
        {version + "\n" + version, "not a JSON object"},
        {std::string(1'000'000, '['), "nested"},
        {std::string(17'000'000, 'x'), "too long"},  // NOLINT(bugprone-string-constructor): meant to be that long
    };
    for (const auto& [line, message] : cases) {
        SCOPED_TRACE(line.substr(0, 60));
        EXPECT_EQ(send(session, line), KAVIO_OK);
        EXPECT_EQ(send(session, version + "\r\n"), KAVIO_OK);
        const auto event = Json::parse(receive(session));
        EXPECT_EQ(event.at("event"), "error");
        EXPECT_THAT(event.at("message"), HasSubstr(message));
        EXPECT_EQ(receive(session), versionAnswer);
    }
    EXPECT_EQ(receive(session, 0), "");
}

TEST(CLibrary, ShowsWithItsDescriptorWhetherThereAreLines) {
    const auto session = open();
    char* line = nullptr;
    EXPECT_FALSE(isReadable(session));
    EXPECT_EQ(kavio_receive(session.get(), 0, &line, nullptr), KAVIO_TIMEOUT);
    EXPECT_EQ(kavio_receive(session.get(), 1, &line, nullptr), KAVIO_TIMEOUT);
    for (const auto& text : {create, version, version}) send(session, text);
    EXPECT_TRUE(isReadable(session, -1));
    EXPECT_EQ(receive(session), createAnswer);
    EXPECT_EQ(receive(session), versionAnswer);
    EXPECT_TRUE(isReadable(session, -1));
    EXPECT_EQ(receive(session, 0), versionAnswer);
    EXPECT_FALSE(isReadable(session));
    kavio_close(session.get());
    EXPECT_TRUE(isReadable(session));
    EXPECT_EQ(kavio_receive(session.get(), 0, &line, nullptr), KAVIO_CLOSED);
    EXPECT_TRUE(isReadable(session));
}

TEST(CLibrary, KeepsTheLinesOfSessionsApart) {
    const auto waiting = open();
    const auto other = open({{"apiKey", "k"}});
    for (const auto& line : {create, std::string(R"({"op":"sleep","milliseconds":1e15})"), version})
        send(waiting, line);
    EXPECT_EQ(receive(waiting), createAnswer);
    for (int i = 0; i < 3; ++i) send(other, R"({"op":"isBusy"})");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(receive(other), R"({"event":"return","op":"isBusy","facade":"main","value":false})");
    }
    EXPECT_EQ(receive(waiting, 0), "");
}

TEST(CLibrary, EndsEverythingThatWaitsWhenItIsClosed) {
    const auto session = open();
    send(session, R"({"op":"sleep","milliseconds":1e15})");
    std::vector<std::future<int>> waiting(3);
    for (auto& one : waiting) {
        one = std::async(std::launch::async, [&] {
            char* line = nullptr;
            return kavio_receive(session.get(), -1, &line, nullptr);
        });
    }
    auto polling = std::async(std::launch::async, [&] { return isReadable(session, -1); });
    EXPECT_EQ(kavio_close(session.get()), KAVIO_OK);
    for (auto& one : waiting) EXPECT_EQ(one.get(), KAVIO_CLOSED);
    EXPECT_TRUE(polling.get());
    EXPECT_EQ(send(session, version), KAVIO_CLOSED);
    EXPECT_EQ(receive(session), "");
    EXPECT_EQ(kavio_close(session.get()), KAVIO_OK);
}

TEST(CLibrary, CanBeUsedByManyThreads) {
    constexpr int threads = 4;
    constexpr int lines = 50;
    const auto session = open({{"facade", true}});
    std::vector<std::jthread> senders(threads);
    for (auto& sender : senders) {
        sender = std::jthread([&] {
            for (int i = 0; i < lines; ++i) send(session, R"({"op":"isBusy"})");
            const auto own = open({{"facade", true}});
            send(own, R"({"op":"getMachines","await":0})");  // under way when it is destroyed
        });
    }
    for (int i = 0; i < threads * lines; ++i) EXPECT_THAT(receive(session), HasSubstr("isBusy"));
    senders.clear();
    EXPECT_EQ(receive(session, 0), "");
}

}  // namespace kavio::test
