// Vantorel. MIT licence, see LICENSE.
// What the tests of pages and requests share: a server with exact control over its bytes, and the main loop by hand.
#pragma once

#include <glib.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace vantorel::gtk::test {

/// Runs the main loop until `condition` holds; false when it does not within `patience`.
bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds patience = std::chrono::seconds(20));

/// Runs the main loop for `time`, for what must not happen.
void runFor(std::chrono::milliseconds time);

/// The server's end of one connection. Used on a thread of its own.
class Connection {
public:
    Connection(int descriptor, std::string request, const std::atomic<bool>& stopping)
        : descriptor_(descriptor),
          request_(std::move(request)),
          stopping_(stopping) {}

    const std::string& request() const { return request_; }
    /// False when the other side is gone.
    bool send(const std::string& bytes) const;
    /// A whole answer; `headers` are lines ended by CR LF.
    void answer(const std::string& body, const std::string& headers = "", const std::string& status = "200 OK",
                const std::string& type = "text/html") const;
    /// Waits until the other side has closed the connection or the server stops.
    void holdOpen() const;
    /// Ends the connection by a reset in place of an orderly close.
    void reset() const;
    void wait(std::chrono::milliseconds time) const;

private:
    int descriptor_;
    std::string request_;
    const std::atomic<bool>& stopping_;
};

/// An HTTP server that does what it is told, byte by byte. One request for each connection.
class RawServer {
public:
    using Handler = std::function<void(const Connection&)>;

    /// Listens on `host`, "127.0.0.1" or "::1", at a free port.
    explicit RawServer(const std::string& host = "127.0.0.1");
    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;
    ~RawServer();

    /// What to do for requests of `path`; everything else is answered by 404.
    void on(const std::string& path, Handler handler);
    /// A page at `path`.
    void page(const std::string& path, const std::string& body, const std::string& headers = "");

    std::uint16_t port() const { return port_; }
    std::string address(const std::string& path = "/") const;
    /// How often `path` was asked for.
    int count(const std::string& path) const;
    /// All requests for `path`, head included.
    std::vector<std::string> requests(const std::string& path) const;

private:
    void accept();
    void serve(int descriptor);

    int listener_ = -1;
    std::uint16_t port_ = 0;
    std::atomic<bool> stopping_ = false;
    mutable std::mutex mutex_;
    std::map<std::string, Handler> handlers_;
    std::vector<std::pair<std::string, std::string>> requests_;
    std::vector<std::thread> threads_;
    std::thread accepting_;
};

/// A port of 127.0.0.1 that nobody listens on.
std::uint16_t freePort();

} // namespace vantorel::gtk::test
