#pragma once

#include "models/replies.h"
#include "network/environments.h"
#include "network/network_service_protocol.h"

#include <kavio/platform/url_session.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace kavio {

/// The one component that talks HTTP: turns a request object into a signed HTTP request against the selected service,
/// sends it and classifies the outcome. Safe from any thread.
class KavioNetworkService final : public NetworkServiceProtocol,
                                  public std::enable_shared_from_this<KavioNetworkService> {
public:
    using errorKeys = ErrorKeys;

    /// The last exchange, for diagnosis.
    struct LastExchange {
        std::optional<std::string> url;
        std::optional<std::string> method;
        std::optional<std::string> request;
        std::string requestName;
        std::optional<std::string> response;
        std::optional<std::int64_t> status;
        NetworkConfiguration networkConfiguration;
    };

    /// The process's transport.
    static std::shared_ptr<KavioNetworkService> shared();

    void send(APIRequestPtr request, RawCompletion completion) override;
    void sendInBackground(APIRequestPtr request, RawCompletion completion) override;

    void setErrorHandler(std::shared_ptr<NetworkServiceErrorHandler> errorHandler);
    /// `handler` is called once, on the main thread, when every background request has been answered.
    void setSavedBackgroundCompletionHandler(std::function<void()> handler);

    LastExchange lastExchange() const;
    /// The request as it goes out: URL, headers and signature.
    UrlRequest prepare(const APIRequestProtocol& request);

private:
    struct Reply {
        int status;
        std::optional<std::string> body;
    };

    static void finish(const std::weak_ptr<KavioNetworkService>& transport, const UrlError& error,
                       const RawCompletion& completion);
    static void finish(const std::weak_ptr<KavioNetworkService>& transport, Reply reply,
                       const RawCompletion& completion);
    using Classification = std::function<APIFailure(const Reply&)>;
    /// `classify` says what the failure is, unless an error handler does.
    static void finishUnsuccessful(const std::weak_ptr<KavioNetworkService>& transport, Reply reply,
                                   const RawCompletion& completion, const Classification& classify);
    void backgroundEventsDelivered();
    std::shared_ptr<NetworkServiceErrorHandler> errorHandler() const;
    /// Changes what `lastExchange` gives.
    template <class Change>
    void note(Change change) {
        const std::lock_guard lock(mMutex);
        change(mLast);
    }

    mutable std::mutex mMutex;  // guards all below; never held while anything is called
    LastExchange mLast;
    std::shared_ptr<NetworkServiceErrorHandler> mErrorHandler;
    std::function<void()> mSavedBackgroundCompletionHandler;
};

}  // namespace kavio
