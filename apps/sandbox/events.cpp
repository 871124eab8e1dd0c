#include "events.h"

#include "report.h"

#include <algorithm>
#include <memory>
#include <thread>

namespace kavio::sandbox {
namespace {

constexpr int mostReaders = 8;                  // each takes a thread of the server
constexpr std::size_t mostOrders = 200;         // told at once
constexpr std::chrono::milliseconds tick{200};  // orders move on by themselves
constexpr std::chrono::milliseconds rest{50};   // so that under load readers do not keep the service from its work
constexpr std::chrono::seconds quiet{10};       // after which a reader is tried that may have left

/// A reader's place.
class Seat {
public:
    explicit Seat(std::atomic<int>& readers) : mReaders(readers) {
        if (++mReaders > mostReaders) {
            --mReaders;
            throw Refusal(503, "too many others read the events");
        }
    }
    ~Seat() { --mReaders; }
    Seat(const Seat&) = delete;
    Seat& operator=(const Seat&) = delete;

private:
    std::atomic<int>& mReaders;
};

}  // namespace

Reader::Reader(Backend& backend, const Journal& journal, Secrets secrets)
    : mBackend(backend), mJournal(journal), mSecrets(secrets) {}

void Reader::tell(std::string_view event, const nlohmann::json& data) {
    mNews.append("event: ").append(event).append("\ndata: ").append(jsonReply(data).body).append("\n\n");
}

void Reader::tellIfNew(std::string_view event, const nlohmann::json& data) {
    auto text = jsonReply(data).body;
    auto& told = mTold[event];
    if (told == text) return;
    told = std::move(text);
    tell(event, data);
}

void Reader::tellOrders(const World& world) {
    struct Moved {
        const Account* account;
        const Order* order;
    };
    std::vector<Moved> moved;
    for (const auto& [number, account] : world.accounts) {
        for (const auto& order : account.orders) {
            auto& told = mStatuses[order.id];
            if (told == world.statusOf(order)) continue;
            told = world.statusOf(order);
            moved.push_back({&account, &order});
        }
    }
    std::ranges::sort(moved, {}, [](const Moved& each) { return each.order->id; });
    const auto skipped = moved.size() - std::min(moved.size(), mostOrders);
    for (auto i = skipped; i < moved.size(); ++i) tell("order", orderReport(world, *moved[i].account, *moved[i].order));
}

std::string Reader::news() {
    mNews.clear();
    mBackend.use([&](World& world) {
        if (!mIsStarted || mResets != mBackend.resets()) {
            mTold.clear();
            mStatuses.clear();
            mResets = mBackend.resets();
            mIsStarted = true;
            tell("start", {{"resets", mResets}});
        }
        world.settleOrders();
        tellIfNew("clock", clockReport(world));
        tellIfNew("accounts", accountsReport(world));
        tellIfNew("codes", codesReport(world));
        tellOrders(world);
    });
    tellIfNew("faults", faultsReport(mBackend.faults().all()));
    tellIfNew("kept", {{"first", mJournal.first()}});
    for (const auto& exchange : mJournal.changedSince(mChange)) {
        mChange = std::max(mChange, exchange.change);
        tell("request", exchangeReport(exchange, mSecrets));
    }
    return std::move(mNews);
}

void Events::stream(Secrets secrets, httplib::Response& response) {
    struct State {
        Seat seat;
        Reader reader;
        std::uint64_t heard = 0;
        std::chrono::steady_clock::time_point told{};
    };
    // Shared because the server copies what it calls.
    const std::shared_ptr<State> state(new State{Seat(mReaders), Reader(mBackend, mJournal, secrets)});
    response.status = 200;
    response.set_chunked_content_provider("text/event-stream",
                                          [this, state](std::size_t offset, httplib::DataSink& sink) {
                                              if (offset > 0 && !mBell.wait(state->heard, tick)) return false;
                                              std::this_thread::sleep_until(state->told + rest);
                                              auto news = state->reader.news();
                                              const auto now = std::chrono::steady_clock::now();
                                              if (news.empty() && now - state->told < quiet) return true;
                                              if (news.empty()) news = ": still here\n\n";
                                              state->told = now;
                                              return sink.write(news.data(), news.size());
                                          });
}

}  // namespace kavio::sandbox
