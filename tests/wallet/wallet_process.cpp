#include "wallet_process.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

#include <array>
#include <fstream>
#include <iterator>
#include <sstream>

namespace kavio::test {

namespace {

/// Starts the program with these as its standard input, output and error; a terminal becomes its controlling one.
pid_t start(Words arguments, const std::array<int, 3>& files) {
    arguments.insert(arguments.begin(), KAVIO_WALLET);
    std::vector<char*> pointers;
    for (auto& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    const pid_t process = fork();
    if (process != 0) return process;
    if (isatty(files[0]) != 0) {
        login_tty(files[0]);
    } else {
        for (int standard = 0; standard < 3; ++standard) dup2(files[static_cast<std::size_t>(standard)], standard);
    }
    execv(KAVIO_WALLET, pointers.data());
    _exit(127);
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
    const auto file = [&](const char* name) { return folder.path() / name; };
    std::ofstream{file("input")} << input;
    const std::array files{open(file("input").c_str(), O_RDONLY | O_CLOEXEC),
                           open(file("output").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600),
                           open(file("errors").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)};
    const auto process = start(arguments, files);
    for (const int opened : files) close(opened);
    const auto status = statusOf(process);
    return {status, contents(file("output")), contents(file("errors"))};
}

LiveWallet::LiveWallet(const Words& arguments, On on) {
    std::array<int, 2> ends{};
    const int problem = on == On::TERMINAL ? openpty(ends.data(), &ends[1], nullptr, nullptr, nullptr)
                                           : socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data());
    EXPECT_EQ(problem, 0);
    for (const int end : ends) fcntl(end, F_SETFD, FD_CLOEXEC);
    mProcess = start(arguments, {ends[1], ends[1], on == On::TERMINAL ? ends[1] : STDERR_FILENO});
    mFile = ends[0];
    close(ends[1]);
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

int LiveWallet::waitForEnd() { return statusOf(std::exchange(mProcess, -1)); }

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
