#pragma once

#include "platform/linux/url_session_curl.h"

#include <vector>

namespace kavio {

/// Whether `easy` is about to send on a connection that has already carried requests.
bool isOnKeptConnection(CURL* easy);

/// Whether the kept connection that `easy` is about to send on may carry another request: nothing is waiting to be read
/// from it, not even its end. (libcurl has thrown away whatever came together with the end of a chunked reply.)
/// libcurl's own check takes anything that has arrived for a sign of life: a proper end of TLS, or a reply that nobody
/// asked for, which would then answer this request. This check does not apply to HTTP/2, where every reply names its
/// request and servers may speak at any time.
bool isSilent(CURL* easy);

/// For `isSilent`, after `easy` has made a new connection: its socket is the one of `opened` with this local port.
void noteSocket(CURL* easy, const std::vector<curl_socket_t>& opened, int localPort);

}  // namespace kavio
