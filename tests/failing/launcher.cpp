#include "failing/launcher.h"

#include "platform/other_process.h"

#include <cstdint>
#include <string>

namespace kavio::test {
namespace {

void send(int channel, const Json& message) {
    const auto line = message.dump() + '\n';
    for (std::size_t sent = 0; sent < line.size();) {
        const auto count = ::write(channel, line.data() + sent, line.size() - sent);
        if (count < 0) return;  // nobody is there any more
        sent += static_cast<std::size_t>(count);
    }
}

/// The next message; null when there is none any more.
Json receive(int channel) {
    std::string line;
    for (char next = 0; ::read(channel, &next, 1) == 1 && next != '\n';) line += next;
    return line.empty() ? Json() : Json::parse(line);
}

/// What it throws ends it.
void start(Launcher::Program program, const Json& task, int channel) noexcept {
    program(task, [channel](const Json& message) { send(channel, message); });
}

/// Programs that hang end, too.
constexpr unsigned longestRun = 4 * 60 * 60;

/// The process that the others are copies of: it never does anything but start them.
bool launch(int channel) {
    for (Json order; !(order = receive(channel)).is_null();) {
        const auto process = ::fork();
        if (process == 0) {
            ::alarm(order.at("task").value("longestSeconds", longestRun));
            // Of this very image. NOLINTNEXTLINE(performance-no-int-to-ptr)
            const auto program = reinterpret_cast<Launcher::Program>(order.at("program").get<std::uintptr_t>());
            start(program, order.at("task"), channel);
            ::_exit(0);
        }
        int status = -1;
        ::waitpid(process, &status, 0);
        send(channel, {{"ended", WIFSIGNALED(status) ? WTERMSIG(status) : -WEXITSTATUS(status)}});
    }
    return true;
}

}  // namespace

struct Launcher::Process {
    const OtherProcess process{launch};
};

Launcher& Launcher::get() {
    static Launcher launcher;
    return launcher;
}

Launcher::Launcher() : mProcess(std::make_unique<Process>()) {}
Launcher::~Launcher() = default;

int Launcher::run(Program program, const Json& task, const Tell& hear) {
    const int channel = mProcess->process.channel;
    send(channel, {{"program", reinterpret_cast<std::uintptr_t>(program)}, {"task", task}});
    while (true) {
        const auto message = receive(channel);
        if (message.is_null()) return SIGKILL;  // the launcher itself is gone
        if (message.contains("ended")) return message.at("ended");
        hear(message);
    }
}

}  // namespace kavio::test
