// Vantorel. MIT licence, see LICENSE.
// The development server itself: the page at /, its files, /config.json and the WebSocket at /ws, on loopback only.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "devserver/glib_handles.h"
#include "devserver/settings.h"

namespace vantorel::devserver {

/// Serves from `start` until `stop`. Main thread only; its work is done by the thread's default main context. What
/// arrives over WebSockets is printed on standard output, one line each.
class Server {
public:
    explicit Server(const Settings& settings);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Listens on 127.0.0.1 and, where the machine has it, on ::1. Gives nothing on success, else a sentence that says
    /// what went wrong; then nothing listens.
    std::optional<std::string> start();

    /// Stops listening and says goodbye to every client. `stopped` is called once from the main context when all have
    /// answered, after at most a fraction of a second. A second call is ignored.
    void stop(std::function<void()> stopped);

private:
    struct Client;

    std::optional<std::string> listen(const char* address, bool required);
    void accept(GSocketConnection* connection);
    void disconnect();
    void answer(SoupServerMessage* message, const char* path) const;
    void refuseEarly(SoupServerMessage* message, const char* path) const;
    void admit(SoupWebsocketConnection* connection);
    void received(Client& client, SoupWebsocketDataType type, GBytes* bytes);
    void closed(unsigned id);
    void finishStop();

    Settings settings_;
    std::string configuration_;
    ObjectPtr<SoupServer> soup_;
    ObjectPtr<GSocketService> listener_;
    std::map<unsigned, std::unique_ptr<Client>> clients_;
    unsigned lastId_ = 0;
    guint stopTimeout_ = 0;
    std::function<void()> stopped_;
};

} // namespace vantorel::devserver
