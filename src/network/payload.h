#pragma once

#include "models/json/decoding_error.h"
#include "models/json/document.h"
#include "network/network_service_protocol.h"
#include "util/contained.h"
#include "util/spare_memory.h"
#include "util/trace.h"

#include <kavio/platform/platform.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

namespace kavio {

/// The decoded body; absent for the JSON text `null` and for a body that is not a `T`.
template <class T>
std::optional<T> decodedOrNone(std::string_view body) {
    try {
        return decodeDocument<T>(std::string(body));
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

/// The typed outcome of a request. A reply's decoding error ends here.
template <class T>
APIResult<T> decoded(RawResult raw) {
    if (!raw) return APIResult<T>::failed(raw.failure());
    if constexpr (std::is_same_v<T, std::string>) {
        return raw;
    } else {
        if (!raw.payload()) return APIResult<T>::success(std::nullopt);
        const SpareMemory spare(raw.payload()->size());
        const auto body = std::move(raw).payload();  // which is gone before
        try {
            return APIResult<T>::success(decodeDocument<T>(*body));
        } catch (const DecodingError& error) {
            trace("KavioNetworkService",
                  [&] { return SafeMessage{"failed to parse a reply, error: " + std::string(error.what())}; });
            return APIResult<T>::failed({APIError::jsonConversionFailure, 400, std::nullopt, std::nullopt});
        }
    }
}

/// Records an outcome before anybody hears of it, on the thread that brings the reply: the store syncs its writes to
/// disk, and the main thread should not wait for that.
template <class T>
using Recorder = std::function<void(APIResult<T>&)>;

/// Decodes on the thread that brings the reply, and completes on the main queue.
template <class T>
RawCompletion decodePayload(Completion<T> completion, Recorder<T> record = nullptr) {
    return [completion = std::move(completion), record = std::move(record)](RawResult raw) {
        auto result = std::make_shared<APIResult<T>>(decoded<T>(std::move(raw)));
        if (record) record(*result);
        Platform::current().mainQueue->post(
            [completion, result] { contained([&] { completion(std::move(*result)); }); });
    };
}

}  // namespace kavio
