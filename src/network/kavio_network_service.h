#pragma once

#include "models/replies.h"
#include "network/network_service_protocol.h"

#include <kavio/platform/url_session.h>

#include <functional>
#include <memory>
#include <mutex>

namespace kavio {

/// The one component that talks HTTP: it turns a request into a signed HTTP request to the selected service, sends it
/// and classifies the outcome. It keeps nothing of an exchange that is over. Safe from any thread.
class KavioNetworkService final : public NetworkServiceProtocol,
                                  public std::enable_shared_from_this<KavioNetworkService> {
public:
    using errorKeys = ErrorKeys;

    /// The process's transport.
    static std::shared_ptr<KavioNetworkService> shared();

    void send(APIRequest request, RawCompletion completion) override;
    std::shared_ptr<DownloadTask> sendInBackground(APIRequest request, RawCompletion completion) override;

    void setErrorHandler(std::shared_ptr<NetworkServiceErrorHandler> errorHandler);
    /// `handler` is called once, on the main thread, when every background request has been answered.
    void setSavedBackgroundCompletionHandler(std::function<void()> handler);

    /// The request as it goes out: URL, headers and signature. A token goes only to the service that issued it; for any
    /// other it is left empty.
    static UrlRequest prepare(APIRequest& request);

private:
    using WeakTransport = std::weak_ptr<KavioNetworkService>;

    /// Null if there is none or the transport is gone.
    static std::shared_ptr<NetworkServiceErrorHandler> errorHandler(const WeakTransport& transport);
    void backgroundEventsDelivered();

    std::mutex mMutex;  // guards all below; never held while anything is called
    std::shared_ptr<NetworkServiceErrorHandler> mErrorHandler;
    std::function<void()> mSavedBackgroundCompletionHandler;
};

}  // namespace kavio
