#pragma once

#include "platform/other_process.h"
#include "support/from_environment.h"
#include "wallet/wallet_process.h"

#include <unistd.h>

#include <optional>
#include <string>

namespace kavio::test {

/// kavio-wallet --jsonl, asked line by line. It is killed when this goes.
class DrivenWallet {
public:
    explicit DrivenWallet(Words arguments) {
        arguments.insert(arguments.begin(), KAVIO_WALLET);
        arguments.emplace_back("--jsonl");
        mProcess.emplace([&](int channel) {
            ::dup2(channel, STDIN_FILENO);
            ::dup2(channel, STDOUT_FILENO);
            return execute(arguments);
        });
    }

    void tell(const std::string& text) const {
        const auto sent = line(text) + '\n';
        EXPECT_EQ(::write(mProcess->channel, sent.data(), sent.size()), static_cast<ssize_t>(sent.size()));
    }
    /// The next event; null when there is none any more.
    Json hear() const {
        std::string text;
        for (char next = 0; ::read(mProcess->channel, &next, 1) == 1 && next != '\n';) text += next;
        return text.empty() ? Json() : Json::parse(text);
    }
    Json ask(const std::string& text) const {
        tell(text);
        return hear();
    }

private:
    std::optional<OtherProcess> mProcess;
};

}  // namespace kavio::test
