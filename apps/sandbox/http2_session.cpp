#include "http2_session.h"

#include "parameters.h"

#include <algorithm>
#include <array>
#include <thread>
#include <vector>

namespace kavio::sandbox {
namespace {

constexpr std::size_t mostStreams = 100;  // each takes a thread
constexpr std::size_t headersLimit = 32 << 10;
constexpr std::size_t headerOverhead = 32;  // what HTTP/2 adds to the size of each
constexpr std::size_t bodyLimit = 1 << 20;
constexpr std::size_t pieceSize = 64 << 10;  // of a reply's body
constexpr std::chrono::seconds patience{5};  // with a client that takes no piece

void addHeader(httplib::Request& request, const std::string& name, const std::string& value) {
    if (name == ":method") request.method = value;
    if (name == ":path") request.target = value;
    const bool isHost = name == ":authority" || name == "host";
    if (value.empty() || (name.starts_with(':') && !isHost)) return;
    if (!isHost)
        request.headers.emplace(name, value);
    else if (!request.has_header("Host"))  // :authority comes first
        request.headers.emplace("Host", value);
}

using Fields = std::vector<std::pair<std::string, std::string>>;

Fields fieldsOf(const httplib::Response& response) {
    Fields fields{{":status", std::to_string(response.status)}};
    fields.insert(fields.end(), response.headers.begin(), response.headers.end());
    const auto length = response.content_provider_ ? response.content_length_ : response.body.size();
    if (!response.is_chunked_content_provider_) fields.emplace_back("content-length", std::to_string(length));
    return fields;
}

/// No exception may pass through the C library. One ends the connection.
template <class Work>
int guarded(Work work) {
    try {
        return work();
    } catch (const std::exception&) {
        return NGHTTP2_ERR_CALLBACK_FAILURE;
    }
}

}  // namespace

struct Http2Session::Stream {
    const std::int32_t id;
    httplib::Request request{};
    std::size_t headersSize = 0;
    bool isTooLarge = false;  // the request's body
    std::string piece{};      // of the reply's body, to be sent
    bool isRunning = false;   // the thread
    bool hasReply = false;
    bool isWhole = false;   // the reply
    bool isClosed = false;  // nothing is received or sent any more
    std::thread thread{};
};

/// What the C library calls, while the mutex is held.
struct Http2Session::Callbacks {
    static Stream* find(nghttp2_session* session, std::int32_t id) {
        return static_cast<Stream*>(nghttp2_session_get_stream_user_data(session, id));
    }
    static bool startsRequest(const nghttp2_frame* frame) {
        return frame->hd.type == NGHTTP2_HEADERS && frame->headers.cat == NGHTTP2_HCAT_REQUEST;
    }
    static int onBegin(nghttp2_session* session, const nghttp2_frame* frame, void* self) {
        return guarded([&]() -> int {
            if (!startsRequest(frame)) return 0;
            auto& my = *static_cast<Http2Session*>(self);
            my.forgetClosed();
            // A client may have reset requests that are still being handled.
            if (my.mStreams.size() >= mostStreams) return NGHTTP2_ERR_TEMPORAL_CALLBACK_FAILURE;
            auto& stream = my.mStreams.emplace_back(Stream{frame->hd.stream_id});
            stream.request.version = http2Version;
            return nghttp2_session_set_stream_user_data(session, stream.id, &stream);
        });
    }
    static int onHeader(nghttp2_session* session, const nghttp2_frame* frame, const std::uint8_t* name,
                        std::size_t nameSize, const std::uint8_t* value, std::size_t valueSize, std::uint8_t /*flags*/,
                        void* /*self*/) {
        return guarded([&]() -> int {
            auto* stream = find(session, frame->hd.stream_id);
            if (stream == nullptr || !startsRequest(frame)) return 0;
            stream->headersSize += nameSize + valueSize + headerOverhead;
            if (stream->headersSize > headersLimit) return NGHTTP2_ERR_TEMPORAL_CALLBACK_FAILURE;
            addHeader(stream->request, {name, name + nameSize}, {value, value + valueSize});
            return 0;
        });
    }
    static int onData(nghttp2_session* session, std::uint8_t /*flags*/, std::int32_t id, const std::uint8_t* data,
                      std::size_t size, void* /*self*/) {
        return guarded([&] {
            auto* stream = find(session, id);
            if (stream == nullptr) return 0;
            stream->isTooLarge = stream->isTooLarge || stream->request.body.size() + size > bodyLimit;
            if (!stream->isTooLarge) stream->request.body.append(data, data + size);
            return 0;
        });
    }
    static int onFrame(nghttp2_session* session, const nghttp2_frame* frame, void* self) {
        return guarded([&] {
            const bool mayEnd = frame->hd.type == NGHTTP2_HEADERS || frame->hd.type == NGHTTP2_DATA;
            if (!mayEnd || (frame->hd.flags & NGHTTP2_FLAG_END_STREAM) == 0) return 0;
            auto* stream = find(session, frame->hd.stream_id);
            if (stream == nullptr || stream->thread.joinable()) return 0;
            readTarget(stream->request);
            stream->thread = std::thread([self, stream] { static_cast<Http2Session*>(self)->handle(*stream); });
            stream->isRunning = true;
            return 0;
        });
    }
    static ssize_t takePiece(nghttp2_session* /*session*/, std::int32_t /*id*/, std::uint8_t* buffer, std::size_t size,
                             std::uint32_t* flags, nghttp2_data_source* source, void* self) {
        auto& stream = *static_cast<Stream*>(source->ptr);
        if (stream.piece.empty() && stream.isRunning) return NGHTTP2_ERR_DEFERRED;
        if (stream.piece.empty() && !stream.isWhole) return NGHTTP2_ERR_TEMPORAL_CALLBACK_FAILURE;
        const auto taken = stream.piece.copy(reinterpret_cast<char*>(buffer), size);
        stream.piece.erase(0, taken);
        if (stream.piece.empty() && stream.isWhole) *flags |= NGHTTP2_DATA_FLAG_EOF;
        if (stream.piece.empty()) static_cast<Http2Session*>(self)->mTaken.notify_all();
        return ssize_t(taken);
    }
    static int onClose(nghttp2_session* session, std::int32_t id, std::uint32_t /*error*/, void* self) {
        if (auto* stream = find(session, id)) stream->isClosed = true;
        static_cast<Http2Session*>(self)->mTaken.notify_all();
        return 0;
    }
};

Http2Session::Http2Session(httplib::Server::Handler handler, std::function<void()> wake)
    : mHandler(std::move(handler)), mWake(std::move(wake)) {
    nghttp2_session_callbacks* created = nullptr;
    if (nghttp2_session_callbacks_new(&created) != 0) throw std::bad_alloc();
    const std::unique_ptr<nghttp2_session_callbacks, decltype(&nghttp2_session_callbacks_del)> callbacks(
        created, nghttp2_session_callbacks_del);
    nghttp2_session_callbacks_set_on_begin_headers_callback(created, Callbacks::onBegin);
    nghttp2_session_callbacks_set_on_header_callback(created, Callbacks::onHeader);
    nghttp2_session_callbacks_set_on_data_chunk_recv_callback(created, Callbacks::onData);
    nghttp2_session_callbacks_set_on_frame_recv_callback(created, Callbacks::onFrame);
    nghttp2_session_callbacks_set_on_stream_close_callback(created, Callbacks::onClose);
    nghttp2_session* session = nullptr;
    if (nghttp2_session_server_new(&session, created, this) != 0) throw std::bad_alloc();
    mSession.reset(session);
    const std::array<nghttp2_settings_entry, 2> settings{{{NGHTTP2_SETTINGS_MAX_CONCURRENT_STREAMS, mostStreams},
                                                          {NGHTTP2_SETTINGS_MAX_HEADER_LIST_SIZE, headersLimit}}};
    if (nghttp2_submit_settings(session, NGHTTP2_FLAG_NONE, settings.data(), settings.size()) != 0)
        throw std::bad_alloc();
}

Http2Session::~Http2Session() {
    {
        const std::lock_guard lock(mMutex);
        for (auto& stream : mStreams) stream.isClosed = true;
    }
    mTaken.notify_all();
    for (auto& stream : mStreams)
        if (stream.thread.joinable()) stream.thread.join();
}

bool Http2Session::receive(const std::uint8_t* bytes, std::size_t size) {
    const std::lock_guard lock(mMutex);
    return nghttp2_session_mem_recv(mSession.get(), bytes, size) == ssize_t(size);
}

std::basic_string_view<std::uint8_t> Http2Session::toSend() {
    const std::lock_guard lock(mMutex);
    const std::uint8_t* bytes = nullptr;
    const auto size = nghttp2_session_mem_send(mSession.get(), &bytes);
    return size > 0 ? std::basic_string_view(bytes, std::size_t(size)) : std::basic_string_view<std::uint8_t>();
}

void Http2Session::leave() {
    const std::lock_guard lock(mMutex);
    nghttp2_session_terminate_session(mSession.get(), NGHTTP2_NO_ERROR);
}

bool Http2Session::isBusy() const {
    const std::lock_guard lock(mMutex);
    return std::ranges::any_of(mStreams, &Stream::isRunning);
}

bool Http2Session::isOver() const {
    const std::lock_guard lock(mMutex);
    return nghttp2_session_want_read(mSession.get()) == 0 && nghttp2_session_want_write(mSession.get()) == 0;
}

/// With the mutex held, which a thread no longer needs once it has handled its request.
void Http2Session::forgetClosed() {
    for (auto it = mStreams.begin(); it != mStreams.end();) {
        const auto stream = it++;
        if (!stream->isClosed || stream->isRunning) continue;
        if (stream->thread.joinable()) stream->thread.join();
        mStreams.erase(stream);
    }
}

void Http2Session::handle(Stream& stream) {
    bool isWhole = false;
    try {
        httplib::Response response;
        if (stream.isTooLarge)
            response.status = 413;
        else
            mHandler(stream.request, response);
        if (response.status != -1) {
            beginReply(stream, response);
            isWhole = writeBody(stream, response);
        }
    } catch (const std::exception&) {
        // The stream is reset.
    }
    endReply(stream, isWhole);
}

void Http2Session::beginReply(Stream& stream, const httplib::Response& response) {
    const auto fields = fieldsOf(response);
    std::vector<nghttp2_nv> views;
    for (const auto& [name, value] : fields) {
        const auto bytes = [](const std::string& text) {
            return reinterpret_cast<std::uint8_t*>(
                const_cast<char*>(text.data()));  // which are copied, names in lower case
        };
        views.push_back({bytes(name), bytes(value), name.size(), value.size(), NGHTTP2_NV_FLAG_NONE});
    }
    nghttp2_data_provider provider{{}, Callbacks::takePiece};
    provider.source.ptr = &stream;
    const bool hasBody = stream.request.method != "HEAD";
    const std::lock_guard lock(mMutex);
    if (stream.isClosed) return;
    stream.hasReply = nghttp2_submit_response(mSession.get(), stream.id, views.data(), views.size(),
                                              hasBody ? &provider : nullptr) == 0;
    mWake();
}

bool Http2Session::writeBody(Stream& stream, const httplib::Response& response) {
    if (stream.request.method == "HEAD") return true;
    if (!response.content_provider_) return write(stream, response.body);
    std::size_t written = 0;
    httplib::DataSink sink;
    sink.write = [&](const char* data, std::size_t size) {
        written += size;
        return write(stream, {data, size});
    };
    const auto isClosed = [&] {
        const std::lock_guard lock(mMutex);
        return stream.isClosed;
    };
    const auto length = response.is_chunked_content_provider_ ? SIZE_MAX : response.content_length_;
    while (written < length)
        if (isClosed() || !response.content_provider_(written, length - written, sink)) return false;
    return true;
}

bool Http2Session::write(Stream& stream, std::string_view body) {
    while (!body.empty()) {
        std::unique_lock lock(mMutex);
        const bool isInTime = mTaken.wait_for(lock, patience, [&] { return stream.isClosed || stream.piece.empty(); });
        if (!isInTime) stream.hasReply = false;  // what is left of it will not be taken
        if (!isInTime || stream.isClosed) return false;
        stream.piece = body.substr(0, pieceSize);
        body.remove_prefix(stream.piece.size());
        nghttp2_session_resume_data(mSession.get(), stream.id);
        mWake();
    }
    return true;
}

void Http2Session::endReply(Stream& stream, bool isWhole) {
    const std::lock_guard lock(mMutex);
    stream.isRunning = false;
    stream.isWhole = isWhole;
    if (!stream.isClosed && stream.hasReply) nghttp2_session_resume_data(mSession.get(), stream.id);
    if (!stream.isClosed && !stream.hasReply)
        nghttp2_submit_rst_stream(mSession.get(), NGHTTP2_FLAG_NONE, stream.id, NGHTTP2_INTERNAL_ERROR);
    mWake();
}

}  // namespace kavio::sandbox
