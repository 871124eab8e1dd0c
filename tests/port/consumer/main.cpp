#include "empty_platform.h"

#include <kavio/kavio.h>

#include <iostream>

struct Listener : kavio::QuietDelegate {
    void onCheckIsUserLogin(Result result) override { print(*result); }
    void onLogin(Result result) override {
        print(*result);
        isDone = true;
    }
    static void print(const kavio::KavioResult& result) { std::cout << result.debugDescription() << '\n'; }

    bool isDone = false;
};

// With any argument, runs without a platform.
int main(int count, char**) {
    const auto loop = std::make_shared<kavio::RunLoop>();
    if (count == 1) kavio::Platform::install(emptyPlatform(loop));
    const auto listener = std::make_shared<Listener>();
    kavio::Kavio wallet(listener, "key", kavio::Kavio::EnvironmentType::TEST);
    std::cout << "version: " << wallet.getVersion().value_or("none") << '\n';
    wallet.isLoggedIn();
    wallet.login("49", "1701234567");
    loop->runUntil([&] { return listener->isDone; }, std::chrono::minutes(1));
}
