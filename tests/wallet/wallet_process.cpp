#include "wallet_process.h"

#include <pty.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

namespace kavio::test {

namespace {

int endOf(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status); }

std::string contents(const std::filesystem::path& path) {
    std::ifstream file{path};
    return (std::ostringstream{} << file.rdbuf()).str();
}

std::string summaryOf(const Json& event) {
    const auto kind = event.at("event").get<std::string>();
    if (kind == "error") return kind;
    const auto facade = event.value("facade", "-") + ' ';
    if (kind != "callback") return facade + kind + ' ' + event.at("op").get<std::string>();
    return facade + event.at("callback").get<std::string>() + ' ' + event.at("result").at("type").get<std::string>();
}

}  // namespace

Words words(const std::string& text) {
    std::istringstream stream{text};
    return {std::istream_iterator<std::string>{stream}, {}};
}

std::string line(const std::string& text) {
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

Outcome runWallet(const Words& arguments, const std::string& input) {
    const TemporaryFolder folder;
    const std::string path = folder.path();
    std::ofstream{path + "/input"} << input;
    std::string command = "exec " KAVIO_WALLET;
    for (const auto& argument : arguments) command += " '" + argument + "'";
    command += " <" + path + "/input >" + path + "/output 2>" + path + "/errors";
    const int status = std::system(command.c_str());
    return {endOf(status), contents(path + "/output"), contents(path + "/errors")};
}

LiveWallet::LiveWallet(Words arguments, On on) {
    arguments.insert(arguments.begin(), KAVIO_WALLET);
    std::vector<char*> pointers;
    for (auto& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    std::array<int, 2> ends{};
    if (on == On::PIPE) {
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
        mProcess = fork();
    } else {
        mProcess = forkpty(ends.data(), nullptr, nullptr, nullptr);
    }
    if (mProcess == 0) {
        for (int standard = 0; on == On::PIPE && standard < 2; ++standard) dup2(ends[1], standard);
        execv(KAVIO_WALLET, pointers.data());
        _exit(127);
    }
    mFile = ends[0];
    if (on == On::PIPE) close(ends[1]);
}

LiveWallet::~LiveWallet() {
    close(mFile);
    if (mProcess > 0) waitForEnd();
}

void LiveWallet::write(const std::string& text) const {
    EXPECT_EQ(::write(mFile, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

std::string LiveWallet::read(const std::string& end) const {
    std::string text;
    for (char next = 0; (end.empty() || !text.ends_with(end)) && ::read(mFile, &next, 1) == 1;) text += next;
    return text;
}

bool LiveWallet::showsWhatIsTyped() const {
    termios settings{};
    return tcgetattr(mFile, &settings) == 0 && (settings.c_lflag & static_cast<tcflag_t>(ECHO)) != 0;
}

int LiveWallet::waitForEnd() {
    int status = 0;
    waitpid(std::exchange(mProcess, -1), &status, 0);
    return endOf(status);
}

WalletTest::WalletTest(std::chrono::milliseconds orderStep) : sandbox(sandboxOptions(orderStep)) {}

Words WalletTest::options(const std::string& more) const {
    Words all{"--store-dir", mFolder.path() / "store", "--connect-to", sandbox.address(),
              "--ca-file",   sandbox.authorityFile()};
    for (const auto& word : words(more)) all.push_back(word);
    return all;
}

Outcome WalletTest::run(const std::string& command, const std::string& input) const {
    return runWallet(options(command), input);
}

Outcome WalletTest::drive(const std::vector<std::string>& lines, const std::string& more) const {
    std::string input;
    for (const auto& text : lines) input += line(text) + '\n';
    return run(more + " --jsonl", input);
}

void WalletTest::logIn() const { ASSERT_EQ(run("login 49 151234567 --country DE", "123456\n").status, 0); }

void WalletTest::advanceOrders(std::chrono::seconds time) {
    mAhead = mAhead.load() + time;
    sandbox.setClockOffset(-mAhead.load());  // what is signed is still compared with the time that it really is
}

sandbox::Options WalletTest::sandboxOptions(std::chrono::milliseconds orderStep) const {
    return {.orderStep = orderStep, .signatureWindow = std::chrono::hours{24}, .clock = [this] {
                return std::chrono::system_clock::now() + mAhead.load();
            }};
}

}  // namespace kavio::test
