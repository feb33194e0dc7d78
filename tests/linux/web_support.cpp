// Vantorel. MIT licence, see LICENSE.
// What the tests of pages and requests share: a server with exact control over its bytes, and the main loop by hand.
#include "tests/linux/web_support.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace vantorel::gtk::test {

namespace {

/// Longest time that a waiting thread takes to see that the server stops.
constexpr int kPollMilliseconds = 10;

struct Listener {
    int descriptor = -1;
    std::uint16_t port = 0;
};

Listener listenOn(const std::string& host) {
    const bool six = host.find(':') != std::string::npos;
    sockaddr_storage place{};
    socklen_t size = 0;
    if (six) {
        auto& address = reinterpret_cast<sockaddr_in6&>(place);
        address.sin6_family = AF_INET6;
        ::inet_pton(AF_INET6, host.c_str(), &address.sin6_addr);
        size = sizeof address;
    } else {
        auto& address = reinterpret_cast<sockaddr_in&>(place);
        address.sin_family = AF_INET;
        ::inet_pton(AF_INET, host.c_str(), &address.sin_addr);
        size = sizeof address;
    }
    const int descriptor = ::socket(six ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (six) {
        const int only = 1;
        ::setsockopt(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, &only, sizeof only);
    }
    if (descriptor < 0 || ::bind(descriptor, reinterpret_cast<sockaddr*>(&place), size) != 0 ||
        ::listen(descriptor, 64) != 0 || ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&place), &size) != 0) {
        throw std::runtime_error("no socket to listen on " + host);
    }
    const in_port_t port =
        six ? reinterpret_cast<sockaddr_in6&>(place).sin6_port : reinterpret_cast<sockaddr_in&>(place).sin_port;
    return {descriptor, ntohs(port)};
}

bool readable(int descriptor) {
    pollfd poll{descriptor, POLLIN, 0};
    return ::poll(&poll, 1, kPollMilliseconds) > 0;
}

std::string pathOf(const std::string& request) {
    const std::size_t begin = request.find(' ');
    const std::size_t end = request.find(' ', begin + 1);
    return begin == std::string::npos || end == std::string::npos ? "" : request.substr(begin + 1, end - begin - 1);
}

gboolean wakeUp(gpointer) { return G_SOURCE_CONTINUE; }

} // namespace

bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds patience) {
    const auto end = std::chrono::steady_clock::now() + patience;
    const guint pulse = g_timeout_add(kPollMilliseconds, wakeUp, nullptr);
    bool holds = condition();
    while (!holds && std::chrono::steady_clock::now() < end) {
        g_main_context_iteration(nullptr, TRUE);
        holds = condition();
    }
    g_source_remove(pulse);
    return holds;
}

void runFor(std::chrono::milliseconds time) {
    runUntil([] { return false; }, time);
}

bool Connection::send(const std::string& bytes) const {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::send(descriptor_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) {
            return false;
        }
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

void Connection::answer(const std::string& body, const std::string& headers, const std::string& status,
                        const std::string& type) const {
    send("HTTP/1.1 " + status + "\r\nContent-Type: " + type + "\r\nConnection: close\r\n" + headers +
         "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
}

void Connection::holdOpen() const {
    while (!stopping_) {
        char byte = 0;
        if (readable(descriptor_) && ::recv(descriptor_, &byte, 1, MSG_DONTWAIT) <= 0) {
            return;
        }
    }
}

void Connection::reset() const {
    const linger now{1, 0};
    ::setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &now, sizeof now);
}

void Connection::wait(std::chrono::milliseconds time) const {
    const auto end = std::chrono::steady_clock::now() + time;
    while (!stopping_ && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(kPollMilliseconds));
    }
}

RawServer::RawServer(const std::string& host) {
    const Listener listener = listenOn(host);
    listener_ = listener.descriptor;
    port_ = listener.port;
    accepting_ = std::thread([this] { accept(); });
}

RawServer::~RawServer() {
    stopping_ = true;
    accepting_.join();
    for (std::thread& thread : threads_) {
        thread.join();
    }
    ::close(listener_);
}

void RawServer::on(const std::string& path, Handler handler) {
    const std::lock_guard lock(mutex_);
    handlers_[path] = std::move(handler);
}

void RawServer::page(const std::string& path, const std::string& body, const std::string& headers) {
    on(path, [body, headers](const Connection& connection) { connection.answer(body, headers); });
}

std::string RawServer::address(const std::string& path) const {
    return "http://localhost:" + std::to_string(port_) + path;
}

int RawServer::count(const std::string& path) const { return static_cast<int>(requests(path).size()); }

std::vector<std::string> RawServer::requests(const std::string& path) const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> found;
    for (const auto& [requested, text] : requests_) {
        if (requested == path) {
            found.push_back(text);
        }
    }
    return found;
}

void RawServer::accept() {
    while (!stopping_) {
        if (!readable(listener_)) {
            continue;
        }
        const int descriptor = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor >= 0) {
            threads_.emplace_back([this, descriptor] { serve(descriptor); });
        }
    }
}

void RawServer::serve(int descriptor) {
    std::string request;
    bool open = true;
    while (open && !stopping_ && request.find("\r\n\r\n") == std::string::npos) {
        char bytes[4096];
        if (readable(descriptor)) {
            const ssize_t count = ::recv(descriptor, bytes, sizeof bytes, 0);
            open = count > 0;
            request.append(bytes, open ? static_cast<std::size_t>(count) : 0);
        }
    }
    if (open && !stopping_) {
        const std::string path = pathOf(request);
        Handler handler = [](const Connection& connection) { connection.answer("", "", "404 Not Found"); };
        {
            const std::lock_guard lock(mutex_);
            requests_.emplace_back(path, request);
            const auto found = handlers_.find(path);
            if (found != handlers_.end()) {
                handler = found->second;
            }
        }
        handler(Connection(descriptor, request, stopping_));
    }
    ::close(descriptor);
}

std::uint16_t freePort() {
    const Listener listener = listenOn("127.0.0.1");
    ::close(listener.descriptor);
    return listener.port;
}

} // namespace vantorel::gtk::test
