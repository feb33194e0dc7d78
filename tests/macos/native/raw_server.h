// Vantorel. MIT licence, see LICENSE.
// A server on the loopback host that answers each request with exactly the bytes it is told to.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace vantorel::mac::test {

/// What a request gets.
struct Reply {
    std::string bytes;
    /// The connection stays open until the server is destroyed; the answer need not be complete.
    bool keepOpen = false;
};

/// A complete answer.
Reply answer(const std::string& body, const std::string& status = "200 OK", const std::string& headers = "");

/// Serves one request at a time until it is destroyed.
class RawServer {
public:
    /// Gets the whole head of a request, on the server's own thread.
    using Handler = std::function<Reply(const std::string& head)>;

    explicit RawServer(Handler handler);
    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;
    ~RawServer();

    int port() const { return port_; }
    std::string address(const std::string& path) const;

private:
    void serve();
    void talk(int connection);

    Handler handler_;
    // Before the listener, whose making sets it.
    int port_ = 0;
    int listener_ = -1;
    std::atomic<bool> stopping_ = false;
    std::vector<int> held_;
    std::thread thread_;
};

/// A port of the loopback host that is free at this moment.
int freePort();

} // namespace vantorel::mac::test
