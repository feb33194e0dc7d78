// Vantorel. MIT licence, see LICENSE.
// A small HTTP server on the loopback host.
#include "tests/contract/linux_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>

namespace vantorel::contract {

namespace {

int listenOnLoopback(int& port) {
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (listener < 0 || ::bind(listener, generic, size) != 0 || ::listen(listener, 16) != 0 ||
        ::getsockname(listener, generic, &size) != 0) {
        throw std::runtime_error("no loopback server");
    }
    port = ntohs(address.sin_port);
    return listener;
}

bool readable(int descriptor, int milliseconds) {
    pollfd waiting{descriptor, POLLIN, 0};
    return ::poll(&waiting, 1, milliseconds) > 0;
}

void send(int connection, const std::string& bytes) {
    // A client that has left is no concern of the server.
    [[maybe_unused]] const ssize_t sent = ::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

} // namespace

LoopbackServer::LoopbackServer(ServerBehaviour behaviour, std::atomic<int>& requests)
    : behaviour_(behaviour),
      requests_(requests),
      listener_(listenOnLoopback(port_)),
      thread_([this] { serve(); }) {}

LoopbackServer::~LoopbackServer() {
    stopping_ = true;
    thread_.join();
    for (const int connection : connections_)
        ::close(connection);
    ::close(listener_);
}

void LoopbackServer::serve() {
    while (!stopping_) {
        if (!readable(listener_, 10))
            continue;
        const int connection = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection >= 0)
            answer(connection);
    }
}

void LoopbackServer::answer(int connection) {
    std::string request;
    std::array<char, 4096> chunk{};
    while (request.find("\r\n\r\n") == std::string::npos) {
        const ssize_t count = readable(connection, 2000) ? ::read(connection, chunk.data(), chunk.size()) : 0;
        if (count <= 0)
            break;
        request.append(chunk.data(), static_cast<std::size_t>(count));
    }
    if (!request.empty())
        ++requests_;
    if (behaviour_.garbage) {
        send(connection, "this is no answer\n\n");
    } else if (behaviour_.endlessBody) {
        send(connection, "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nbegun");
    } else if (behaviour_.status) {
        const std::string status = std::to_string(*behaviour_.status);
        // A redirect leads back here, so that following it would be counted.
        send(connection, "HTTP/1.1 " + status + " Status\r\nLocation: http://127.0.0.1:" + std::to_string(port_) +
                             "/next\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    }
    if (behaviour_.garbage || (behaviour_.status && !behaviour_.endlessBody)) {
        ::close(connection);
    } else {
        connections_.push_back(connection);
    }
}

int freePort() {
    int port = 0;
    ::close(listenOnLoopback(port));
    return port;
}

} // namespace vantorel::contract
