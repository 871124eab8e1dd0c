#include "gtk/page_server.h"

#include <httplib.h>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace kavio::test {

struct PageServer::State {
    httplib::Server server;
    int port = 0;
    std::thread thread;

    mutable std::mutex mutex;
    std::condition_variable stopping;
    bool isStopping = false;
    std::map<std::string, httplib::Server::Handler> pages;
    std::vector<std::string> requests;

    void answer(const httplib::Request& request, httplib::Response& response) {
        httplib::Server::Handler page;
        {
            const std::lock_guard lock(mutex);
            requests.push_back(request.method + " " + request.path);
            const auto found = pages.find(request.path);
            if (found == pages.end()) return static_cast<void>(response.status = 404);
            page = found->second;
        }
        page(request, response);
    }
    void serve(const std::string& path, httplib::Server::Handler page) {
        const std::lock_guard lock(mutex);
        pages[path] = std::move(page);
    }
};

PageServer::PageServer() : mState(std::make_unique<State>()) {
    const auto answer = [state = mState.get()](const auto& request, auto& response) {
        state->answer(request, response);
    };
    mState->server.set_keep_alive_timeout(1);  // an idle connection would hold up the end
    mState->server.Get(".*", answer);
    mState->server.Post(".*", answer);
    mState->port = mState->server.bind_to_any_port("127.0.0.1");
    mState->thread = std::thread([state = mState.get()] { state->server.listen_after_bind(); });
    while (!mState->server.is_running()) std::this_thread::yield();  // one that is stopped before never stops
}

PageServer::~PageServer() {
    {
        const std::lock_guard lock(mState->mutex);
        mState->isStopping = true;
    }
    mState->stopping.notify_all();
    mState->server.stop();
    mState->thread.join();
}

std::string PageServer::url(const std::string& path) const { return "http://localhost:" + port() + path; }

std::string PageServer::port() const { return std::to_string(mState->port); }

void PageServer::servePage(const std::string& path, const std::string& html) {
    mState->serve(path, [html](const auto&, auto& response) { response.set_content(html, "text/html"); });
}

void PageServer::serveRedirect(const std::string& path, const std::string& location) {
    mState->serve(path, [location](const auto&, auto& response) { response.set_redirect(location); });
}

void PageServer::serveDownload(const std::string& path) {
    mState->serve(path, [](const auto&, auto& response) {
        response.set_header("Content-Disposition", "attachment; filename=kavio-test-download");
        response.set_content("bytes", "application/octet-stream");
    });
}

void PageServer::serveNothing(const std::string& path) {
    mState->serve(path, [state = mState.get()](const auto&, auto&) {
        std::unique_lock lock(state->mutex);
        state->stopping.wait(lock, [state] { return state->isStopping; });
    });
}

std::vector<std::string> PageServer::requests() const {
    const std::lock_guard lock(mState->mutex);
    return mState->requests;
}

}  // namespace kavio::test
