#pragma once

#include "platform/linux/url_session_curl.h"

#include <vector>

namespace kavio {

/// Whether `easy`, about to send, does so on a connection that had carried requests before.
bool isOnKeptConnection(CURL* easy);

/// Whether the kept connection that `easy` is about to send on may carry another request: nothing waits on it to be
/// read, not even its end. (What came together with the end of a chunked reply libcurl has thrown away.) libcurl's own
/// check takes everything that has arrived for a sign of life: a proper end of TLS, and a reply that nobody has asked
/// for, which would then answer this request. On HTTP/2, where every reply names its request and servers may speak at
/// any time, there is nothing to be seen here.
bool isSilent(CURL* easy);

/// For `isSilent`, once `easy` has made a new connection: its socket is one of `opened`, and has this port of ours.
void noteSocket(CURL* easy, const std::vector<curl_socket_t>& opened, int localPort);

}  // namespace kavio
