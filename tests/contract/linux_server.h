// Vantorel. MIT licence, see LICENSE.
// A small HTTP server on the loopback host, on a thread of its own.
#pragma once

#include <atomic>
#include <thread>
#include <vector>

#include "tests/contract/world.h"

namespace vantorel::contract {

/// Serves until it is destroyed; answers every request in the same way.
class LoopbackServer {
public:
    /// `requests` counts and must outlive the server.
    LoopbackServer(ServerBehaviour behaviour, std::atomic<int>& requests);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    int port() const { return port_; }

private:
    void serve();
    void answer(int connection);

    ServerBehaviour behaviour_;
    std::atomic<int>& requests_;
    // Before the listener, whose making sets it.
    int port_ = 0;
    int listener_ = -1;
    std::atomic<bool> stopping_ = false;
    /// Connections stay open until the end: a silent server keeps them.
    std::vector<int> connections_;
    std::thread thread_;
};

/// A port of the loopback host that is free at this moment.
int freePort();

} // namespace vantorel::contract
