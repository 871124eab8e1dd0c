#pragma once

#include "platform/linux/url_session_curl.h"

#include <kavio/platform/url_session.h>

namespace kavio {

/// Says why an exchange on `easy` ended with `code`. `sent`: a byte of the request may have left before that.
UrlError describeFailure(CURL* easy, CURLcode code, bool sent);

/// The error for `code` when nothing more is known about it; without memory for a sentence, it has none.
UrlError urlError(UrlError::Code code) noexcept;

}  // namespace kavio
