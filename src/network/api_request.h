#pragma once

#include "models/json/json_value.h"

#include <kavio/platform/url_session.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kavio {

/// How a request's parameters travel: "json" as the JSON body, "path" as the URL's query.
enum class ParameterEncoding { json, path };

/// What every request tells the transport.
class APIRequestProtocol {
public:
    virtual ~APIRequestProtocol() = default;

    /// Path below the base URL, placeholders filled.
    virtual std::string endpoint() const = 0;
    virtual std::string_view method() const = 0;
    virtual std::optional<JsonObject> params() const = 0;
    virtual ParameterEncoding encoding() const = 0;
    /// Tells requests apart in trace lines, and the time request from all others.
    virtual const std::string& requestName() const = 0;
    /// The session token; absent for calls made before login.
    virtual std::optional<std::string> token() const = 0;
    /// An absolute URL in the place of base URL and endpoint.
    virtual std::optional<std::string> url() const = 0;
    virtual Idempotency idempotency() const = 0;
    /// Headers in the place of the service's own ones; the signature is added to either.
    virtual std::optional<HeaderFields> headers() const = 0;
};

using APIRequestPtr = std::shared_ptr<const APIRequestProtocol>;

/// What every request says of itself: its name and, of a signed-in user, the session token (empty without one).
struct RequestHead {
    std::string requestName;
    std::optional<std::string> token = std::nullopt;
};

/// What is the same for every request of a class.
struct RequestForm {
    std::string_view method;
    ParameterEncoding encoding;
    Idempotency idempotency;
};

namespace form {
inline constexpr RequestForm get{"GET", ParameterEncoding::path, Idempotency::REPEATABLE};
inline constexpr RequestForm put{"PUT", ParameterEncoding::path, Idempotency::REPEATABLE};
inline constexpr RequestForm remove{"DELETE", ParameterEncoding::json, Idempotency::REPEATABLE};
inline constexpr RequestForm post{"POST", ParameterEncoding::json, Idempotency::ONCE};
/// A POST that changes nothing.
inline constexpr RequestForm query{"POST", ParameterEncoding::json, Idempotency::REPEATABLE};
}  // namespace form

/// A request object made of a record: `R` has the fields, a static `form`, `endpoint()` and, where the request has
/// them, `params()`, `url()` and `headers()`.
template <class R>
class Request final : public APIRequestProtocol {
public:
    Request(RequestHead head, R fields) : mHead(std::move(head)), mFields(std::move(fields)) {}

    std::string endpoint() const override { return mFields.endpoint(); }
    std::string_view method() const override { return R::form.method; }
    std::optional<JsonObject> params() const override {
        if constexpr (requires { mFields.params(); }) return mFields.params();
        return std::nullopt;
    }
    ParameterEncoding encoding() const override { return R::form.encoding; }
    const std::string& requestName() const override { return mHead.requestName; }
    std::optional<std::string> token() const override { return mHead.token; }
    std::optional<std::string> url() const override {
        if constexpr (requires { mFields.url(); }) return mFields.url();
        return std::nullopt;
    }
    Idempotency idempotency() const override { return R::form.idempotency; }
    std::optional<HeaderFields> headers() const override {
        if constexpr (requires { mFields.headers(); }) return mFields.headers();
        return std::nullopt;
    }

private:
    RequestHead mHead;
    R mFields;
};

/// A request of class `R`, whose fields are given in declared order.
template <class R, class... Fields>
APIRequestPtr makeRequest(RequestHead head, Fields&&... fields) {
    return std::make_shared<const Request<R>>(std::move(head), R{std::forward<Fields>(fields)...});
}

}  // namespace kavio
