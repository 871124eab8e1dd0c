#include "wallet_process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace kavio::test {

namespace {

/// Starts the program with these as its standard input, output and error; closes nothing.
pid_t start(const std::vector<std::string>& arguments, std::array<int, 3> files) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int standard = 0; standard < 3; ++standard) {
        posix_spawn_file_actions_adddup2(&actions, files[static_cast<std::size_t>(standard)], standard);
    }
    std::vector<std::string> words{KAVIO_WALLET};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (auto& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);

    pid_t process = -1;
    const int problem = posix_spawn(&process, KAVIO_WALLET, &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (problem != 0) throw std::runtime_error("kavio-wallet cannot be started");
    return process;
}

int statusOf(pid_t process) {
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string contents(const std::filesystem::path& path) {
    std::ifstream file{path};
    return (std::ostringstream{} << file.rdbuf()).str();
}

std::string summaryOf(const Json& event) {
    const auto kind = event.at("event").get<std::string>();
    if (kind == "error") return kind;
    const auto facade = event.value("facade", "-");
    if (kind == "callback") {
        return facade + ' ' + event.at("callback").get<std::string>() + ' ' +
               event.at("result").at("type").get<std::string>();
    }
    return facade + ' ' + kind + ' ' + event.at("op").get<std::string>();
}

}  // namespace

std::vector<Json> Outcome::events() const {
    std::vector<Json> result;
    std::istringstream lines{output};
    for (std::string line; std::getline(lines, line);) {
        result.push_back(Json::parse(line, nullptr, false));
        EXPECT_TRUE(result.back().is_object()) << line;
    }
    return result;
}

std::vector<std::string> Outcome::summary() const {
    std::vector<std::string> result;
    for (const auto& event : events()) result.push_back(summaryOf(event));
    return result;
}

Outcome runWallet(const std::vector<std::string>& arguments, const std::string& input) {
    const TemporaryFolder folder;
    const auto file = [&](const char* name) { return folder.path() / name; };
    std::ofstream{file("input")} << input;
    const std::array files{open(file("input").c_str(), O_RDONLY | O_CLOEXEC),
                           open(file("output").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600),
                           open(file("errors").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)};
    const auto process = start(arguments, files);
    for (const int opened : files) close(opened);
    Outcome run;
    run.status = statusOf(process);
    run.output = contents(file("output"));
    run.errors = contents(file("errors"));
    return run;
}

LiveWallet::LiveWallet(const std::vector<std::string>& arguments) {
    std::array<int, 2> input{};
    std::array<int, 2> output{};
    if (pipe2(input.data(), O_CLOEXEC) != 0 || pipe2(output.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipes");
    }
    mProcess = start(arguments, {input[0], output[1], STDERR_FILENO});
    close(input[0]);
    close(output[1]);
    mInput = input[1];
    mOutput = output[0];
}

LiveWallet::~LiveWallet() {
    endInput();
    close(mOutput);
    if (mProcess > 0) waitForEnd();
}

void LiveWallet::write(const std::string& line) {
    const auto text = line + '\n';
    EXPECT_EQ(::write(mInput, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

std::string LiveWallet::read() {
    std::string line;
    for (char character = 0; ::read(mOutput, &character, 1) == 1 && character != '\n';) line += character;
    return line;
}

void LiveWallet::endInput() {
    if (mInput >= 0) close(mInput);
    mInput = -1;
}

int LiveWallet::waitForEnd() {
    const auto status = statusOf(mProcess);
    mProcess = -1;
    return status;
}

WalletTest::WalletTest(std::chrono::milliseconds orderStep) : sandbox(sandboxOptions(orderStep)) {}

std::vector<std::string> WalletTest::options(std::vector<std::string> more) const {
    std::vector<std::string> all{"--store-dir", mFolder.path() / "store", "--connect-to", sandbox.address(),
                                 "--ca-file",   sandbox.authorityFile()};
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

Outcome WalletTest::run(const std::vector<std::string>& arguments, const std::string& input) const {
    return runWallet(options(arguments), input);
}

Outcome WalletTest::drive(const std::vector<std::string>& lines, std::vector<std::string> more) const {
    more.emplace_back("--jsonl");
    return run(more, joined(lines));
}

void WalletTest::logIn() const {
    ASSERT_EQ(run({"login", "49", "151234567", "--country", "DE"}, "123456\n").status, 0);
}

void WalletTest::advanceOrders(std::chrono::seconds time) {
    mAhead = mAhead.load() + time;
    sandbox.setClockOffset(-mAhead.load());  // what is signed is still compared with the time that it really is
}

sandbox::Options WalletTest::sandboxOptions(std::chrono::milliseconds orderStep) const {
    sandbox::Options options;
    options.orderStep = orderStep;
    options.signatureWindow = std::chrono::hours{24};
    options.clock = [this] { return std::chrono::system_clock::now() + mAhead.load(); };
    return options;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const auto& line : lines) text += line + '\n';
    return text;
}

}  // namespace kavio::test
