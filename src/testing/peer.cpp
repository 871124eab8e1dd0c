#include <kavio/testing/eventually.h>
#include <kavio/testing/peer.h>
#include <kavio/testing/temporary_folder.h>

#include <fstream>
#include <mutex>
#include <utility>

namespace kavio::test {
namespace {

/// Made once, as making keys takes time.
struct ServiceIdentity {
    ServiceIdentity() { std::ofstream(file) << authority.pem(); }
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "authority.pem";
    const Authority authority;
    const Identity identity = authority.issue({"service.test"});
};

const ServiceIdentity& theService() {
    static const ServiceIdentity made;
    return made;
}

/// "METHOD TARGET BODY" of a request as it was sent.
std::string outline(const std::string& request) {
    const auto line = request.substr(0, request.find(" HTTP/"));
    const auto body = request.substr(request.find("\r\n\r\n") + 4);
    return body.empty() ? line : line + " " + body;
}

class RawPeer final : public Peer {
public:
    explicit RawPeer(SessionFactory factory)
        : mFactory(std::move(factory)),
          mServer(std::make_unique<ServiceServer>([this](auto& connection) { meet(connection); })),
          mReach(reaching(mServer->address())) {}

    std::shared_ptr<UrlSession> makeSession() override { return mFactory.session ? mFactory.session(mReach) : nullptr; }
    std::shared_ptr<BackgroundUrlSession> makeBackgroundSession() override {
        return mFactory.backgroundSession ? mFactory.backgroundSession(mReach) : nullptr;
    }
    void serve(Conduct conduct, UrlReply reply) override {
        {
            const std::lock_guard lock(mMutex);
            mConduct = conduct;
            mReply = httpReply(reply.status, reply.body.value_or(""));
        }
        if (conduct == Conduct::GONE) mServer.reset();
    }
    std::vector<std::string> seen() const override {
        const std::lock_guard lock(mMutex);
        return mSeen;
    }
    bool runUntil(const std::function<bool()>& done) override { return eventually(done); }
    void loseRoute() override {}  // the tests are run where there is none
    void makeRoute() override {
        if (mFactory.makeRoute) mFactory.makeRoute();
    }

private:
    bool isSilent() const {
        const std::lock_guard lock(mMutex);
        return mConduct == Conduct::SILENT;
    }
    void meet(RawServer::Connection& connection) {
        if (isSilent()) return connection.stall();
        meeting([this](RawServer::Connection& met, const std::string& request) {
            const auto [conduct, reply] = see(request);
            return answer(met, conduct, reply);
        })(connection);
    }
    /// Notes the request, and how to behave from then on: a test may change that once it knows that it was seen.
    std::pair<Conduct, std::string> see(const std::string& request) {
        const std::lock_guard lock(mMutex);
        mSeen.push_back(outline(request));
        return {mConduct, mReply};
    }
    static bool answer(RawServer::Connection& connection, Conduct conduct, const std::string& reply) {
        if (conduct == Conduct::STALLS) connection.stall();
        if (conduct == Conduct::CUTS) connection.send(reply.substr(0, reply.size() - 1));
        return conduct == Conduct::ANSWERS && connection.send(reply);
    }

    const SessionFactory mFactory;
    mutable std::mutex mMutex;
    Conduct mConduct = Conduct::ANSWERS;  // guarded by mMutex, as are the reply and what was seen
    std::string mReply = httpReply(200, "ok");
    std::vector<std::string> mSeen;
    std::unique_ptr<ServiceServer> mServer;
    const Reach mReach;
};

}  // namespace

const Authority& serviceAuthority() { return theService().authority; }

Reach reaching(const std::string& address) { return {theService().file, address}; }

ServiceServer::ServiceServer(Script script, std::string protocol)
    : RawServer(theService().identity, std::move(script), std::move(protocol)) {}

std::string abandonedAddress() {
    static const LoopbackSocket held;
    return held.address();
}

std::unique_ptr<Peer> makeRawPeer(SessionFactory factory) { return std::make_unique<RawPeer>(std::move(factory)); }

}  // namespace kavio::test
