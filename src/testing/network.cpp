#include <kavio/testing/boundary.h>
#include <kavio/testing/network.h>

#include <algorithm>
#include <deque>
#include <map>
#include <utility>

namespace kavio::test {
namespace {

using std::chrono::milliseconds;
using Outcome = std::variant<UrlReply, UrlError>;
using Session = Network::Session;

/// One request on its way.
class Exchange final : public DownloadTask {
public:
    /// A request waits until it begins, or until the network is back; it connects, and has left from then on.
    enum class Stage { WAITING, CONNECTING, LEFT, DONE };

    Exchange(Session kind, std::shared_ptr<const UrlRequest> theRequest, UrlSession::Completion whenDone)
        : session(kind), request(std::move(theRequest)), completion(std::move(whenDone)) {}

    bool cancel() override {
        if (stage != Stage::LEFT && stage != Stage::DONE) isGivenUp = true;
        if (isGivenUp && stage != Stage::DONE && whenGivenUp) std::exchange(whenGivenUp, nullptr)();
        return isGivenUp;
    }

    /// Tells how it ended, once.
    void tell() {
        if (const auto told = std::exchange(completion, nullptr)) told(outcome);
    }

    const Session session;
    const std::shared_ptr<const UrlRequest> request;
    UrlSession::Completion completion;
    std::function<void()> whenGivenUp;
    Stage stage = Stage::WAITING;
    Outcome outcome = UrlError{};  // once it is done
    bool isGivenUp = false;
    int attempt = 0;  // steps of an earlier one are void
    Fate fate;
    bool hasArrived = false;
    bool isInterrupted = false;  // lost on its way
};
using ExchangePtr = std::shared_ptr<Exchange>;

/// Whether neither URL, method nor headers hold anything that would end them early.
bool isProper(const UrlRequest& request) {
    const auto isClean = [](const std::string& text, char least) {
        return std::ranges::all_of(text,
                                   [least](char c) { return static_cast<unsigned char>(c) >= least && c != '\x7F'; });
    };
    return request.url.starts_with("https://") && isClean(request.url, '!') && isClean(request.method, '!') &&
           std::ranges::all_of(request.headers, [&](const auto& header) {
               return isClean(header.first, '!') && isClean(header.second, ' ');
           });
}

UrlError errorOf(UrlError::Code code, bool maySent) { return {code, "scripted failure", std::nullopt, maySent}; }

}  // namespace

bool mayHaveBeenSent(UrlError::Code code) {
    switch (code) {
        case UrlError::badUrl:
        case UrlError::cannotFindHost:
        case UrlError::cannotConnectToHost:
        case UrlError::notConnectedToInternet:
        case UrlError::secureConnectionFailed:
        case UrlError::serverCertificateUntrusted:
            return false;
        case UrlError::cancelled:
        case UrlError::timedOut:
        case UrlError::networkConnectionLost:
        case UrlError::badServerResponse:
        case UrlError::dataLengthExceedsMaximum:
            return true;
    }
    return true;
}

namespace fate {
Fate noHost() { return {.error = UrlError::cannotFindHost}; }
Fate noConnection() { return {.error = UrlError::cannotConnectToHost}; }
Fate untrusted() { return {.error = UrlError::serverCertificateUntrusted}; }
Fate notSecure() { return {.error = UrlError::secureConnectionFailed}; }
Fate requestLost() { return {.error = UrlError::networkConnectionLost, .arrives = false}; }
Fate replyLost() { return {.error = UrlError::networkConnectionLost}; }
Fate timesOut(bool arrives) { return {.error = UrlError::timedOut, .arrives = arrives}; }
Fate unreadable() { return {.error = UrlError::badServerResponse}; }
Fate tooLarge() { return {.error = UrlError::dataLengthExceedsMaximum}; }
Fate outOfMemory() { return {.isUnheard = true}; }
Fate answered(int status, std::string body) { return {.reply = UrlReply{status, std::move(body)}}; }
Fate answeredWithoutBody(int status) { return {.reply = UrlReply{status, std::nullopt}}; }
}  // namespace fate

struct Network::State : std::enable_shared_from_this<State> {
    State(std::shared_ptr<Timeline> theTimeline, std::function<Handled(const UrlRequest&)> theServer)
        : timeline(std::move(theTimeline)), server(std::move(theServer)) {}

    ExchangePtr add(Session session, UrlRequest request, UrlSession::Completion completion);
    void begin(const ExchangePtr& exchange);
    void depart(const ExchangePtr& exchange);
    void arrive(const ExchangePtr& exchange);
    void comeBack(const ExchangePtr& exchange, Handled handled);
    void interrupt(const ExchangePtr& exchange);
    void complete(const ExchangePtr& exchange, Outcome outcome);
    void deliver(const ExchangePtr& exchange);
    ExchangePtr anyOf(Session session) const;
    void close(Session session);

    Fate fateOf(const UrlRequest& request) {
        if (nextFates.empty()) return usually ? usually(request) : Fate{};
        auto fate = std::move(nextFates.front());
        nextFates.pop_front();
        return fate;
    }
    /// The rest of an exchange, which is void if that has ended or begun anew meanwhile.
    void after(milliseconds delay, const ExchangePtr& exchange, std::function<void()> step) {
        timeline->post(Lane::NETWORK, delay,
                       [self = shared_from_this(), exchange, attempt = exchange->attempt, next = std::move(step)] {
                           if (exchange->attempt == attempt && exchange->stage != Exchange::Stage::DONE) next();
                       });
    }
    /// Ends the oldest open request; false if there is none.
    bool end(Outcome outcome) {
        const auto exchange = oldest();
        if (!exchange) return false;
        if (exchange->isGivenUp) outcome = errorOf(UrlError::cancelled, false);
        complete(exchange, std::move(outcome));
        return true;
    }
    ExchangePtr oldest() const {
        for (const auto session : {Session::BACKGROUND, Session::ORDINARY})
            for (const auto& exchange : open)
                if (exchange->session == session) return exchange;
        return nullptr;
    }

    const std::shared_ptr<Timeline> timeline;
    const std::function<Handled(const UrlRequest&)> server;
    std::function<Fate(const UrlRequest&)> usually;
    std::function<void(const UrlRequest&, const UrlReply&)> observer;
    std::deque<Fate> nextFates;
    bool isCut = false;
    bool isHeld = false;
    std::deque<ExchangePtr> open;
    std::deque<ExchangePtr> untold;     // done, but their completions have not been called yet
    std::deque<ExchangePtr> forgotten;  // of a program that was killed
    std::map<Session, std::vector<std::shared_ptr<const UrlRequest>>> requests;  // all there ever were
    std::function<void()> whenAllDelivered;
};

ExchangePtr Network::State::add(Session session, UrlRequest request, UrlSession::Completion completion) {
    const auto kept = requests[session].emplace_back(std::make_shared<const UrlRequest>(std::move(request)));
    auto exchange = std::make_shared<Exchange>(session, kept, std::move(completion));
    exchange->whenGivenUp = [weak = weak_from_this(), given = std::weak_ptr(exchange)] {
        const auto state = weak.lock();
        const auto found = given.lock();
        if (state && found && !state->isHeld) state->complete(found, errorOf(UrlError::cancelled, false));
    };
    open.push_back(exchange);
    after(milliseconds(0), exchange, [this, exchange] { begin(exchange); });
    return exchange;
}

void Network::State::begin(const ExchangePtr& exchange) {
    if (!isProper(*exchange->request)) return complete(exchange, errorOf(UrlError::badUrl, false));
    if (isHeld) return;
    if (isCut && exchange->session == Session::ORDINARY)
        return complete(exchange, errorOf(UrlError::notConnectedToInternet, false));
    if (isCut) {
        exchange->stage = Exchange::Stage::WAITING;
        if (exchange->request->willWait) exchange->request->willWait();
        return;
    }
    exchange->stage = Exchange::Stage::CONNECTING;
    exchange->fate = fateOf(*exchange->request);
    after(exchange->request->timeout, exchange, [this, exchange] {
        complete(exchange, errorOf(UrlError::timedOut, exchange->stage == Exchange::Stage::LEFT));
    });
    after(exchange->fate.connecting, exchange, [this, exchange] { depart(exchange); });
}

void Network::State::depart(const ExchangePtr& exchange) {
    const auto& fate = exchange->fate;
    if (fate.error && !mayHaveBeenSent(*fate.error)) return complete(exchange, errorOf(*fate.error, false));
    exchange->stage = Exchange::Stage::LEFT;
    // It arrives even if nobody waits for its answer any more by then.
    timeline->post(Lane::NETWORK, fate.there, [self = shared_from_this(), exchange] { self->arrive(exchange); });
}

void Network::State::arrive(const ExchangePtr& exchange) {
    const auto& fate = exchange->fate;
    if (exchange->isInterrupted) return;
    exchange->hasArrived = true;
    Handled handled;
    if (fate.arrives) handled = server(*exchange->request);
    if (fate.arrives && fate.isRepeated && exchange->request->idempotency == Idempotency::REPEATABLE)
        handled = server(*exchange->request);
    if (fate.reply) handled.reply = *fate.reply;
    handled.isCut = handled.isCut || fate.isCut;
    if (fate.error == UrlError::timedOut) return;
    after(handled.delay + fate.back, exchange, [this, exchange, handled] { comeBack(exchange, handled); });
}

void Network::State::comeBack(const ExchangePtr& exchange, Handled handled) {
    const auto& fate = exchange->fate;
    if (fate.isUnheard) exchange->completion = [](const Outcome&) {};
    if (fate.error) return complete(exchange, errorOf(*fate.error, true));
    if (handled.isLost) return complete(exchange, errorOf(UrlError::networkConnectionLost, true));
    if (handled.isCut) {
        auto error = errorOf(UrlError::networkConnectionLost, true);
        if (exchange->session == Session::BACKGROUND) error.status = handled.reply.status;
        return complete(exchange, error);
    }
    if (handled.reply.body.value_or("").size() > UrlSession::maximumReplyBytes)
        return complete(exchange, errorOf(UrlError::dataLengthExceedsMaximum, true));
    complete(exchange, std::move(handled.reply));
}

/// The network is gone.
void Network::State::interrupt(const ExchangePtr& exchange) {
    exchange->isInterrupted = exchange->stage == Exchange::Stage::LEFT;
    if (exchange->isInterrupted) return complete(exchange, errorOf(UrlError::networkConnectionLost, true));
    if (exchange->stage != Exchange::Stage::CONNECTING) return;
    ++exchange->attempt;
    after(milliseconds(0), exchange, [this, exchange] { begin(exchange); });
}

void Network::State::complete(const ExchangePtr& exchange, Outcome outcome) {
    exchange->stage = Exchange::Stage::DONE;
    exchange->outcome = std::move(outcome);
    exchange->whenGivenUp = nullptr;
    std::erase(open, exchange);
    untold.push_back(exchange);
    timeline->post(Lane::NETWORK, {}, [self = shared_from_this(), exchange] { self->deliver(exchange); });
}

/// Does nothing if the end of the session came first.
void Network::State::deliver(const ExchangePtr& exchange) {
    if (std::erase(untold, exchange) == 0) return;
    exchange->tell();
    if (const auto* reply = std::get_if<UrlReply>(&exchange->outcome); reply && observer)
        observer(*exchange->request, *reply);
    if (exchange->session == Session::BACKGROUND && !anyOf(Session::BACKGROUND) && whenAllDelivered) {
        const auto told = whenAllDelivered;
        told();
    }
}

ExchangePtr Network::State::anyOf(Session session) const {
    for (const auto* exchanges : {&untold, &open}) {
        const auto found =
            std::ranges::find(*exchanges, session, [](const auto& exchange) { return exchange->session; });
        if (found != exchanges->end()) return *found;
    }
    return nullptr;
}

/// The session's end: whoever waits for an outcome has been told when this returns.
void Network::State::close(Session session) {
    while (const auto exchange = anyOf(session)) {
        const auto stage = std::exchange(exchange->stage, Exchange::Stage::DONE);
        if (stage != Exchange::Stage::DONE)
            exchange->outcome = errorOf(UrlError::cancelled, stage == Exchange::Stage::LEFT);
        std::erase(open, exchange);
        std::erase(untold, exchange);
        const InLibrary entered;
        exchange->tell();
    }
}

Network::Network(std::shared_ptr<Timeline> timeline, std::function<Handled(const UrlRequest&)> server)
    : mState(std::make_shared<State>(std::move(timeline), std::move(server))) {}
Network::~Network() = default;

std::shared_ptr<UrlSession> Network::ordinarySession() {
    struct Ordinary final : UrlSession {
        explicit Ordinary(std::shared_ptr<State> network) : state(std::move(network)) {}
        ~Ordinary() override { state->close(Session::ORDINARY); }
        void dataTask(UrlRequest request, Completion completion) override {
            state->add(Session::ORDINARY, std::move(request), std::move(completion));
        }
        const std::shared_ptr<State> state;
    };
    return std::make_shared<Ordinary>(mState);
}

std::shared_ptr<BackgroundUrlSession> Network::backgroundSession() {
    struct Background final : BackgroundUrlSession {
        explicit Background(std::shared_ptr<State> network) : state(std::move(network)) {}
        ~Background() override { state->close(Session::BACKGROUND); }
        std::shared_ptr<DownloadTask> downloadTask(UrlRequest request, Completion completion) override {
            return state->add(Session::BACKGROUND, std::move(request), std::move(completion));
        }
        void onEventsDelivered(std::function<void()> handler) override { state->whenAllDelivered = std::move(handler); }
        const std::shared_ptr<State> state;
    };
    return std::make_shared<Background>(mState);
}

void Network::cut() {
    mState->isCut = true;
    const auto interrupted = mState->open;
    for (const auto& exchange : interrupted) mState->interrupt(exchange);
}

void Network::restore() {
    mState->isCut = false;
    for (const auto& exchange : mState->open) {
        if (exchange->stage != Exchange::Stage::WAITING) continue;
        ++exchange->attempt;  // it may be about to begin anyway
        mState->after(milliseconds(0), exchange, [state = mState.get(), exchange] { state->begin(exchange); });
    }
}

bool Network::isCut() const { return mState->isCut; }
void Network::usually(std::function<Fate(const UrlRequest&)> fate) { mState->usually = std::move(fate); }
void Network::clearFates() {
    mState->nextFates.clear();
    mState->usually = nullptr;
}
void Network::observe(std::function<void(const UrlRequest&, const UrlReply&)> observer) {
    mState->observer = std::move(observer);
}
void Network::next(Fate fate) { mState->nextFates.push_back(std::move(fate)); }
void Network::hold() { mState->isHeld = true; }

bool Network::answer(UrlReply reply) { return mState->end(std::move(reply)); }
bool Network::fail(UrlError error) { return mState->end(std::move(error)); }

bool Network::fail(UrlError::Code code) { return fail(errorOf(code, mayHaveBeenSent(code))); }

bool Network::leave() {
    const auto exchange = mState->oldest();
    if (!exchange || exchange->isGivenUp) return false;
    exchange->stage = Exchange::Stage::LEFT;
    return true;
}

std::vector<UrlRequest> Network::requests(Session session) const {
    std::vector<UrlRequest> requests;
    for (const auto& request : mState->requests[session]) requests.push_back(*request);
    return requests;
}
std::size_t Network::open(std::optional<Session> session) const {
    return std::size_t(std::ranges::count_if(
        mState->open, [&](const auto& exchange) { return exchange->session == session.value_or(exchange->session); }));
}
void Network::forget() {
    for (const auto& exchange : std::exchange(mState->open, {})) {
        mState->forgotten.push_back(exchange);
        const bool goesOn = exchange->stage == Exchange::Stage::LEFT && !exchange->hasArrived && exchange->fate.arrives;
        exchange->stage = Exchange::Stage::DONE;
        if (!goesOn || mState->isHeld) continue;
        mState->timeline->post(Lane::NETWORK, exchange->fate.there,
                               [state = mState, exchange] { state->server(*exchange->request); });
    }
    mState->forgotten.insert(mState->forgotten.end(), mState->untold.begin(), mState->untold.end());
    mState->untold.clear();
}
void Network::close() {
    for (const auto session : {Session::BACKGROUND, Session::ORDINARY}) mState->close(session);
    const auto forgotten = std::exchange(mState->forgotten, {});
}

}  // namespace kavio::test
