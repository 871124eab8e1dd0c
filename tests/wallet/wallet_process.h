#pragma once

#include "sandbox/sandbox.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <string>
#include <vector>

namespace kavio::test {

using Json = nlohmann::json;
using Words = std::vector<std::string>;

/// The words of a command line, none of which holds a blank.
Words words(const std::string& text);
/// A line of the driver from "isLoggedIn facade=b await=2", where a value that is no JSON is a text; JSON as it is.
std::string line(const std::string& text);

/// What a run of kavio-wallet left behind.
struct Outcome {
    int status = -1;  // a signal's number below zero
    std::string output;
    std::string errors;

    /// One JSON object a line; fails the test for anything else.
    std::vector<Json> events() const;
    /// The events in a few words each, such as "main onLogin SUCCESS" and "error".
    std::vector<std::string> summary() const;
};

/// Runs the real program to its end.
Outcome runWallet(const Words& arguments, const std::string& input = {});

/// A kavio-wallet that is talked to.
class LiveWallet {
public:
    enum class On { PIPE, TERMINAL };
    LiveWallet(Words arguments, On on);
    ~LiveWallet();
    LiveWallet(const LiveWallet&) = delete;
    LiveWallet& operator=(const LiveWallet&) = delete;

    void write(const std::string& text) const;
    /// Waits until what comes ends with `end`; without one, or when it never does, for all the rest.
    std::string read(const std::string& end = {}) const;
    bool showsWhatIsTyped() const;
    int waitForEnd();

private:
    pid_t mProcess = -1;
    int mFile = -1;
};

/// kavio-wallet on a sandbox, with a store of its own.
class WalletTest : public ::testing::Test {
protected:
    explicit WalletTest(std::chrono::milliseconds orderStep = std::chrono::milliseconds{300});

    Words options(const std::string& more) const;
    Outcome run(const std::string& command, const std::string& input = {}) const;
    /// One line an operation.
    Outcome drive(const std::vector<std::string>& lines, const std::string& more = {}) const;
    /// Logs in, so that the store holds a session.
    void logIn() const;
    /// Lets orders get on by `time` at once.
    void advanceOrders(std::chrono::seconds time);

private:
    sandbox::Options sandboxOptions(std::chrono::milliseconds orderStep) const;

    TemporaryFolder mFolder;
    std::atomic<std::chrono::seconds> mAhead{};

protected:
    sandbox::Sandbox sandbox;
};

}  // namespace kavio::test
