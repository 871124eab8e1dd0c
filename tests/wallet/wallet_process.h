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

/// What a run of kavio-wallet left behind.
struct Outcome {
    int status = -1;
    std::string output;
    std::string errors;

    /// One JSON object a line; fails the test for anything else.
    std::vector<Json> events() const;
    /// The events in a few words each, such as "main onLogin SUCCESS" and "error".
    std::vector<std::string> summary() const;
};

/// Runs the real program to its end.
Outcome runWallet(const std::vector<std::string>& arguments, const std::string& input = {});

/// A kavio-wallet that is talked to line by line.
class LiveWallet {
public:
    explicit LiveWallet(const std::vector<std::string>& arguments);
    ~LiveWallet();

    void write(const std::string& line);
    /// Waits for the next line; empty at the end of output.
    std::string read();
    void endInput();
    int waitForEnd();

private:
    pid_t mProcess = -1;
    int mInput = -1;
    int mOutput = -1;
};

/// kavio-wallet on a sandbox, with a store of its own.
class WalletTest : public ::testing::Test {
protected:
    explicit WalletTest(std::chrono::milliseconds orderStep = std::chrono::milliseconds{300});

    std::vector<std::string> options(std::vector<std::string> more = {}) const;
    Outcome run(const std::vector<std::string>& arguments, const std::string& input = {}) const;
    /// One line an operation.
    Outcome drive(const std::vector<std::string>& lines, std::vector<std::string> more = {}) const;
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

/// Lines joined for standard input.
std::string joined(const std::vector<std::string>& lines);

}  // namespace kavio::test
