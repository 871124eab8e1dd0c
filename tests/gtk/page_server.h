#pragma once

#include <httplib.h>

#include <future>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace kavio::test {

/// A web server on this machine that serves what a test gives it, from its own thread, on any free port.
class PageServer {
public:
    using Handler = httplib::Server::Handler;

    PageServer() {
        const auto answer = [this](const auto& request, auto& response) { this->answer(request, response); };
        mServer.set_keep_alive_max_count(1);  // an idle connection would hold up the end
        mServer.set_keep_alive_timeout(1);    // and so would one that was opened for nothing
        mServer.Get(".*", answer);
        mServer.Post(".*", answer);
        mPort = std::to_string(mServer.bind_to_any_port("127.0.0.1"));
        mThread = std::thread([this] { mServer.listen_after_bind(); });
        while (!mServer.is_running()) std::this_thread::yield();  // a server stopped before it runs never stops
    }
    ~PageServer() {
        mStopping.set_value();
        mServer.stop();
        mThread.join();
    }

    /// By name: the address 127.0.0.1 would look like the end of a page.
    std::string url(const std::string& path) const { return "http://localhost:" + mPort + path; }
    std::string port() const { return mPort; }
    void serve(const std::string& path, Handler page) {
        const std::lock_guard lock(mMutex);
        mPages[path] = std::move(page);
    }
    void servePage(const std::string& path, const std::string& html) {
        serve(path, [html](const auto&, auto& response) { response.set_content(html, "text/html"); });
    }
    void serveRedirect(const std::string& path, const std::string& location, int status = 302) {
        serve(path, [=](const auto&, auto& response) { response.set_redirect(location, status); });
    }
    /// Answers only once the server ends.
    void serveNothing(const std::string& path) {
        serve(path, [stopped = mStopped](const auto&, auto&) { stopped.wait(); });
    }
    /// "METHOD PATH" of each request, in order.
    std::vector<std::string> requests() const {
        const std::lock_guard lock(mMutex);
        return mRequests;
    }

private:
    void answer(const httplib::Request& request, httplib::Response& response) {
        std::unique_lock lock(mMutex);
        mRequests.push_back(request.method + " " + request.path);
        const auto found = mPages.find(request.path);
        if (found == mPages.end()) return static_cast<void>(response.status = 404);
        const auto page = found->second;
        lock.unlock();
        page(request, response);
    }

    httplib::Server mServer;
    std::string mPort;
    std::promise<void> mStopping;
    const std::shared_future<void> mStopped = mStopping.get_future();
    mutable std::mutex mMutex;
    std::map<std::string, Handler> mPages;
    std::vector<std::string> mRequests;
    std::thread mThread;
};

}  // namespace kavio::test
