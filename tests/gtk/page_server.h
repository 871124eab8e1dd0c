#pragma once

#include <memory>
#include <string>
#include <vector>

namespace kavio::test {

/// A web server on this machine that serves what a test gives it, from a thread of its own, at any free port.
class PageServer {
public:
    PageServer();
    ~PageServer();

    /// By name: the address 127.0.0.1 would look like the end of a page.
    std::string url(const std::string& path) const;
    std::string port() const;
    void servePage(const std::string& path, const std::string& html);
    void serveRedirect(const std::string& path, const std::string& location);
    void serveDownload(const std::string& path);
    /// Answers only once the server goes.
    void serveNothing(const std::string& path);
    /// "METHOD PATH" of each request, in order.
    std::vector<std::string> requests() const;

private:
    struct State;
    std::unique_ptr<State> mState;
};

}  // namespace kavio::test
