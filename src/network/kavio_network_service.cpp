#include "network/kavio_network_service.h"

#include "network/environments.h"
#include "network/payload.h"
#include "network/request_signature.h"
#include "network/response_classification.h"
#include "network/session.h"
#include "network/url_request.h"
#include "time/reliable_clock.h"
#include "util/contained.h"
#include "util/shared_instance.h"
#include "util/trace.h"

#include <kavio/platform/platform.h>

#include <utility>

namespace kavio {
namespace {

constexpr const char* traceTag = "KavioNetworkService";
constexpr const char* fallbackApiKey = "529qtx";

using ErrorHandlerPointer = std::shared_ptr<NetworkServiceErrorHandler>;
using SentToken = std::optional<std::string>;

RawResult failed(APIError error, std::int64_t status, std::optional<std::string> message = std::nullopt) {
    return RawResult::failed({error, status, std::move(message), std::nullopt});
}

HeaderFields serviceHeaders(const std::optional<std::string>& apiKey, const std::optional<SessionToken>& token) {
    HeaderFields headers;
    headers.reserve(5);  // with the signature
    headers.emplace_back("X-Zelto-Wallet-Api-Key", apiKey ? *apiKey : fallbackApiKey);
    headers.emplace_back("Content-Type", "application/json; charset=utf-8");
    headers.emplace_back("lang", Platform::current().locale->languageCode().value_or("en"));
    if (token) headers.emplace_back("X-Zelto-Wallet-Session-Token", token->text);
    return headers;
}

SentToken sentToken(const APIRequest& request) { return request.token ? SentToken(request.token->text) : std::nullopt; }

std::string_view bodyOf(const UrlRequest& request) {
    return request.body ? std::string_view(*request.body) : std::string_view();
}

// The failure that a status becomes once a host's error handler has supplied its message.
APIFailure handledStatus(int status, const std::optional<std::string>& body, std::optional<std::string> message) {
    if (status == 417) return refusedSignature();
    if (status == 488 && body) {
        const auto model = decodedOrNone<ErrorModel>(*body).value_or(ErrorModel{});
        return {APIError::responseUnsuccessful, status, model.message, model.code};
    }
    if (!message && body) message = errorMessage(*body);
    return {APIError::responseUnsuccessful, status, std::move(message), std::nullopt};
}

// Ends a request whose status is not 200; `classify` says what the failure is, unless an error handler does.
void finishUnsuccessful(const ErrorHandlerPointer& handler, UrlReply reply, const RawCompletion& completion,
                        const std::function<APIFailure(const UrlReply&)>& classify) {
    if (!handler) return completion(RawResult::failed(judged(reply.status, classify(reply))));
    const auto seen = reply;
    handler->handle(seen, [completion, reply = std::move(reply)](APIError, std::optional<std::string> message) {
        completion(
            RawResult::failed(judged(reply.status, handledStatus(reply.status, reply.body, std::move(message)))));
    });
}

void finish(const ErrorHandlerPointer& handler, UrlReply reply, const SentToken& token,
            const RawCompletion& completion) {
    if (reply.status != 200) {
        return finishUnsuccessful(handler, std::move(reply), completion, [&token](const UrlReply& known) {
            return classifyStatus(known.status, known.body, token);
        });
    }
    if (!reply.body) return completion(failed(APIError::invalidData, reply.status));
    completion(RawResult::success(std::move(reply.body)));
}

void finish(const ErrorHandlerPointer& handler, const UrlError& error, const SentToken&,
            const RawCompletion& completion) {
    auto failure = connectionFailure(error);
    if (!handler) return completion(RawResult::failed(std::move(failure)));
    handler->handle({}, [completion, failure](APIError handled, std::optional<std::string> message) {
        completion(RawResult::failed(
            {handled, failure.status, std::move(message), std::nullopt, failure.cause, failure.effect}));
    });
}

// A download whose reply was lost after its head had arrived: the status is known, the body is not.
APIFailure lostReply(int status, const UrlError& error, const SentToken& token) {
    switch (status) {
        case 401:
        case 406:
        case 417:
        case 426:
            return classifyStatus(status, std::nullopt, token);
        case 488:
            return {APIError::responseUnsuccessful, status, error.description, std::nullopt};
        default:
            return {APIError::jsonConversionFailure, status, std::nullopt, std::nullopt};
    }
}

void finishDownload(const ErrorHandlerPointer& handler, std::variant<UrlReply, UrlError> outcome,
                    const SentToken& token, const RawCompletion& completion) {
    const auto* error = std::get_if<UrlError>(&outcome);
    if (error == nullptr) return finish(handler, std::get<UrlReply>(std::move(outcome)), token, completion);
    if (!error->status) return finish(handler, *error, token, completion);
    finishUnsuccessful(handler, {*error->status, std::nullopt}, completion,
                       [&](const UrlReply& reply) { return lostReply(reply.status, *error, token); });
}

}  // namespace

std::shared_ptr<KavioNetworkService> KavioNetworkService::shared() { return sharedInstance<KavioNetworkService>(); }

void KavioNetworkService::send(APIRequest request, RawCompletion completion) {
    auto prepared = prepare(request);
    Platform::current().urlSession->dataTask(std::move(prepared), [weak = weak_from_this(), token = sentToken(request),
                                                                   completion = std::move(completion)](
                                                                      std::variant<UrlReply, UrlError> outcome) {
        contained([&] {
            std::visit([&](auto& ended) { finish(errorHandler(weak), std::move(ended), token, completion); }, outcome);
        });
    });
}

std::shared_ptr<DownloadTask> KavioNetworkService::sendInBackground(APIRequest request, RawCompletion completion) {
    auto& session = *Platform::current().backgroundUrlSession;
    session.onEventsDelivered([weak = weak_from_this()] {
        contained([&] {
            if (const auto self = weak.lock()) self->backgroundEventsDelivered();
        });
    });
    auto prepared = prepare(request);
    return session.downloadTask(
        std::move(prepared), [weak = weak_from_this(), token = sentToken(request),
                              completion = std::move(completion)](std::variant<UrlReply, UrlError> outcome) {
            contained([&] { finishDownload(errorHandler(weak), std::move(outcome), token, completion); });
        });
}

UrlRequest KavioNetworkService::prepare(APIRequest& request) {
    const auto& stored = request.stored;
    const auto baseURL = urlString(stored.service);
    if (request.token) request.token->text = tokenFor(*request.token, stored.service);

    auto urlRequest =
        buildURLRequest(request.url ? *std::move(request.url) : appendingPathComponent(baseURL, request.endpoint),
                        std::move(request.params), request.encoding == ParameterEncoding::path);
    urlRequest.method = request.method;
    urlRequest.idempotency = request.idempotency;
    urlRequest.willWait = std::move(request.willWait);
    urlRequest.headers = request.headers ? *std::move(request.headers) : serviceHeaders(stored.apiKey, request.token);
    urlRequest.headers.emplace_back("X-Zelto-Sign",
                                    signRequest(urlRequest.url, bodyOf(urlRequest), serverTimeStamp(stored.sample)));
    trace(traceTag, [&] {
        return SafeMessage{"REQUEST[" + std::string(request.requestName) + "]: " + std::string(request.method)};
    });
    return urlRequest;
}

void KavioNetworkService::backgroundEventsDelivered() {
    Platform::current().mainQueue->post([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self) return;
        std::function<void()> handler;
        {
            const std::lock_guard lock(self->mMutex);
            handler = std::exchange(self->mSavedBackgroundCompletionHandler, nullptr);
        }
        if (handler) handler();
    });
}

void KavioNetworkService::setErrorHandler(std::shared_ptr<NetworkServiceErrorHandler> errorHandler) {
    const std::lock_guard lock(mMutex);
    mErrorHandler = std::move(errorHandler);
}

std::shared_ptr<NetworkServiceErrorHandler> KavioNetworkService::errorHandler(const WeakTransport& transport) {
    const auto self = transport.lock();
    if (!self) return nullptr;
    const std::lock_guard lock(self->mMutex);
    return self->mErrorHandler;
}

void KavioNetworkService::setSavedBackgroundCompletionHandler(std::function<void()> handler) {
    const std::lock_guard lock(mMutex);
    mSavedBackgroundCompletionHandler = std::move(handler);
}

}  // namespace kavio
