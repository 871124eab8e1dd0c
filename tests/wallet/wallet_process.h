#pragma once

#include "sandbox/sandbox.h"

#include <kavio/testing/temporary_folder.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace kavio::test {

using Json = nlohmann::json;
using Words = std::vector<std::string>;

/// The words of a command line, none of which contains a blank.
inline Words words(const std::string& text) {
    std::istringstream stream{text};
    return {std::istream_iterator<std::string>{stream}, {}};
}
/// A line for the driver from "isLoggedIn facade=b await=2", where a value that is not JSON becomes a text. JSON stays
/// as it is.
inline std::string line(const std::string& text) {
    if (text.starts_with('{')) return text;
    Json object;
    for (const auto& word : words(text)) {
        const auto at = word.find('=');
        const auto value = at == std::string::npos ? word : word.substr(at + 1);
        const auto json = Json::parse(value, nullptr, false);
        object[at == std::string::npos ? "op" : word.substr(0, at)] = json.is_discarded() ? Json(value) : json;
    }
    return object.dump();
}

inline int endOf(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status); }

/// An event in a few words.
inline std::string summaryOf(const Json& event) {
    auto kind = event.at("event").get<std::string>();
    if (kind == "error") return kind;
    const auto facade = event.value("facade", "-") + ' ';
    if (kind != "callback") return facade + kind + ' ' + event.at("op").get<std::string>();
    return facade + event.at("callback").get<std::string>() + ' ' + event.at("result").at("type").get<std::string>();
}

/// What a run of kavio-wallet left behind.
struct Outcome {
    int status = -1;  // below zero: the number of a signal
    std::string output;
    std::string errors;

    /// One JSON object per line; fails the test for anything else.
    std::vector<Json> events() const {
        std::vector<Json> result;
        std::istringstream lines{output};
        for (std::string line; std::getline(lines, line);) {
            result.push_back(Json::parse(line, nullptr, false));
            EXPECT_TRUE(result.back().is_object()) << line;
        }
        return result;
    }
    /// The events in a few words each, such as "main onLogin SUCCESS" and "error".
    std::vector<std::string> summary() const {
        std::vector<std::string> result;
        for (const auto& event : events()) result.push_back(summaryOf(event));
        return result;
    }
};

/// Becomes the program that the first word names; false when that fails.
inline bool execute(Words words) {
    std::vector<char*> pointers;
    for (auto& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return ::execv(pointers.front(), pointers.data()) == 0;
}

/// A kavio-wallet on its own terminal.
class LiveWallet {
public:
    explicit LiveWallet(Words arguments) {
        arguments.insert(arguments.begin(), KAVIO_WALLET);
        mProcess = forkpty(&mFile, nullptr, nullptr, nullptr);
        if (mProcess == 0) _exit(execute(std::move(arguments)) ? 0 : 127);
    }
    ~LiveWallet() {
        close(mFile);
        if (mProcess > 0) waitForEnd();
    }
    LiveWallet(const LiveWallet&) = delete;
    LiveWallet& operator=(const LiveWallet&) = delete;

    void write(const std::string& text) const {
        EXPECT_EQ(::write(mFile, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    /// Waits until the output ends with `end`; without one, or if it never does, reads all the rest.
    std::string read(const std::string& end = {}) const {
        std::string text;
        for (char next = 0; (end.empty() || !text.ends_with(end)) && ::read(mFile, &next, 1) == 1;) text += next;
        return text;
    }
    bool showsWhatIsTyped() const {
        termios settings{};
        return tcgetattr(mFile, &settings) == 0 && (settings.c_lflag & static_cast<tcflag_t>(ECHO)) != 0;
    }
    int waitForEnd() {
        int status = 0;
        waitpid(std::exchange(mProcess, -1), &status, 0);
        return endOf(status);
    }

private:
    pid_t mProcess = -1;
    int mFile = -1;
};

/// kavio-wallet on a sandbox, with its own store.
class WalletTest : public ::testing::Test {
protected:
    Words options(const std::string& more) const {
        Words all{"--store-dir", mFolder.path() / "store", "--connect-to", sandbox.address(),
                  "--ca-file",   sandbox.authorityFile()};
        for (const auto& word : words(more)) all.push_back(word);
        return all;
    }
    /// Runs the real program to its end.
    Outcome run(const std::string& command, const std::string& input = {}) const {
        const TemporaryFolder folder;
        const std::string path = folder.path();
        std::ofstream{path + "/input"} << input;
        std::string line = "exec " KAVIO_WALLET;
        for (const auto& argument : options(command)) line += " '" + argument + "'";
        line += " <" + path + "/input >" + path + "/output 2>" + path + "/errors";
        const int status = std::system(line.c_str());
        return {endOf(status), contents(path + "/output"), contents(path + "/errors")};
    }
    /// One line per operation.
    Outcome drive(const std::vector<std::string>& lines, const std::string& more = {}) const {
        std::string input;
        for (const auto& text : lines) input += line(text) + '\n';
        return run(more + " --jsonl", input);
    }
    /// Logs in, so that the store holds a session.
    void logIn() const { ASSERT_EQ(run("login 49 151234567 --country DE", "123456\n").status, 0); }

    sandbox::Sandbox sandbox{{.orderStep = std::chrono::milliseconds{300}}};

private:
    TemporaryFolder mFolder;
};

}  // namespace kavio::test
