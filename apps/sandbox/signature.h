#pragma once

#include "times.h"

#include <chrono>
#include <string>
#include <string_view>

namespace kavio::sandbox {

/// The signature of a request, with `url` as the client writes it and `stamp` as made by `timeStamp`.
std::string sign(std::string url, std::string_view body, std::string_view stamp);

/// 14 digits "yyyyMMddHHmmss" in UTC.
std::string timeStamp(TimePoint time);

enum class SignatureCheck { valid, stale, wrong };

/// A signature shows only the minutes and seconds of its time, so the hours around `now` are tried, nearest first and
/// up to `reach` away. A time that fits is valid within `window` of `now` and stale beyond it.
SignatureCheck checkSignature(const std::string& signature, const std::string& url, std::string_view body,
                              TimePoint now, std::chrono::seconds window, std::chrono::hours reach);

}  // namespace kavio::sandbox
