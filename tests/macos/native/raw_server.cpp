// Vantorel. MIT licence, see LICENSE.
// A server on the loopback host.
#include "tests/macos/native/raw_server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace vantorel::mac::test {

namespace {

int listenOnLoopback(int& port) {
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (listener < 0 || ::bind(listener, generic, size) != 0 || ::listen(listener, 16) != 0 ||
        ::getsockname(listener, generic, &size) != 0) {
        throw std::runtime_error("no loopback server");
    }
    ::fcntl(listener, F_SETFD, FD_CLOEXEC);
    port = ntohs(address.sin_port);
    return listener;
}

bool isReadable(int descriptor, int milliseconds) {
    pollfd waiting{descriptor, POLLIN, 0};
    return ::poll(&waiting, 1, milliseconds) > 0;
}

/// Up to the empty line, or what came until the other side fell silent.
std::string requestHead(int connection) {
    constexpr int kPatience = 2000;
    std::string head;
    std::array<char, 4096> chunk{};
    while (head.find("\r\n\r\n") == std::string::npos) {
        const ssize_t count = isReadable(connection, kPatience) ? ::read(connection, chunk.data(), chunk.size()) : 0;
        if (count <= 0)
            break;
        head.append(chunk.data(), static_cast<std::size_t>(count));
    }
    return head;
}

} // namespace

Reply answer(const std::string& body, const std::string& status, const std::string& headers) {
    return {"HTTP/1.1 " + status + "\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: " +
            std::to_string(body.size()) + "\r\nConnection: close\r\n" + headers + "\r\n" + body};
}

RawServer::RawServer(Handler handler)
    : handler_(std::move(handler)),
      listener_(listenOnLoopback(port_)),
      thread_([this] { serve(); }) {}

RawServer::~RawServer() {
    stopping_ = true;
    thread_.join();
    for (const int connection : held_)
        ::close(connection);
    ::close(listener_);
}

std::string RawServer::address(const std::string& path) const {
    return "http://localhost:" + std::to_string(port_) + path;
}

void RawServer::serve() {
    constexpr int kLookEvery = 10;
    while (!stopping_) {
        if (!isReadable(listener_, kLookEvery))
            continue;
        const int connection = ::accept(listener_, nullptr, nullptr);
        if (connection >= 0)
            talk(connection);
    }
}

void RawServer::talk(int connection) {
    ::fcntl(connection, F_SETFD, FD_CLOEXEC);
    const int on = 1;
    // A client that has left is no concern of the server.
    ::setsockopt(connection, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
    const std::string head = requestHead(connection);
    if (head.empty()) {
        ::close(connection);
        return;
    }
    const Reply reply = handler_(head);
    [[maybe_unused]] const ssize_t sent = ::send(connection, reply.bytes.data(), reply.bytes.size(), 0);
    if (reply.keepOpen) {
        held_.push_back(connection);
    } else {
        ::close(connection);
    }
}

int freePort() {
    int port = 0;
    ::close(listenOnLoopback(port));
    return port;
}

} // namespace vantorel::mac::test
