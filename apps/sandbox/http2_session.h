#pragma once

#include <httplib.h>
#include <nghttp2/nghttp2.h>

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string_view>

namespace kavio::sandbox {

/// The version of requests that came over HTTP/2.
inline constexpr std::string_view http2Version = "HTTP/2";

/// The server's side of HTTP/2 on one connection, without the connection itself. Each request is handled on a thread of
/// its own, so that a delayed reply does not hold up the others. A handler that sets no status has its stream reset,
/// and so has a content provider that fails.
class Http2Session {
public:
    /// `wake` is called on any thread when there may be something to send.
    Http2Session(httplib::Server::Handler handler, std::function<void()> wake);
    /// Waits for the handlers that are running, whose replies are lost.
    ~Http2Session();
    Http2Session(const Http2Session&) = delete;
    Http2Session& operator=(const Http2Session&) = delete;

    /// False if this is not HTTP/2.
    bool receive(const std::uint8_t* bytes, std::size_t size);
    /// What to send next, if anything. Valid until the next call.
    std::basic_string_view<std::uint8_t> toSend();
    /// Takes leave of the client.
    void leave();
    bool isBusy() const;
    /// Whether nothing more is to be received or sent.
    bool isOver() const;

private:
    struct Stream;
    struct Callbacks;
    struct Deleter {
        void operator()(nghttp2_session* session) const { nghttp2_session_del(session); }
    };

    void forgetClosed();
    void handle(Stream& stream);
    void beginReply(Stream& stream, const httplib::Response& response);
    bool writeBody(Stream& stream, const httplib::Response& response);
    bool write(Stream& stream, std::string_view body);
    void endReply(Stream& stream, bool isWhole);

    const httplib::Server::Handler mHandler;
    const std::function<void()> mWake;
    mutable std::mutex mMutex;  // guards everything below
    std::condition_variable mTaken;
    std::list<Stream> mStreams;
    std::unique_ptr<nghttp2_session, Deleter> mSession;
};

}  // namespace kavio::sandbox
