#include <kavio/kavio.h>
#include <kavio/platform/linux.h>

#include <iostream>

// Without a session the answer comes from the store alone, before the call returns.
struct Listener : kavio::QuietDelegate {
    void onCheckIsUserLogin(Result result) override { std::cout << result->debugDescription() << '\n'; }
};

int main() {
    const auto listener = std::make_shared<Listener>();
    kavio::Kavio wallet(listener, "key", kavio::Kavio::EnvironmentType::TEST);
    wallet.isLoggedIn();
}
