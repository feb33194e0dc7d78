// Vantorel. MIT licence, see LICENSE.
// HTTP and WebSocket handling of the development server, on libsoup.
#include "devserver/server.h"

#include <netinet/in.h>
#include <netinet/tcp.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>
#include <vector>

#include "devserver/output.h"
#include "devserver/page_assets.h"
#include "devserver/text.h"

namespace vantorel::devserver {
namespace {

constexpr std::size_t kMaxClients = 64;
// libsoup 3.2 holds each frame to this, but not the sum of a message's fragments. Pages can't send fragments.
constexpr guint64 kMaxMessageBytes = 1024 * 1024;
constexpr guint kGoodbyeMs = 400;
constexpr std::string_view kSocketPath = "/ws";
constexpr std::string_view kConfigPath = "/config.json";

// Everything the page needs comes from the page's own server; scripts in the markup are not run.
constexpr const char* kContentPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self' ws://localhost:* "
    "ws://127.0.0.1:*; base-uri 'none'; form-action 'none'";

void respond(SoupServerMessage* message, guint status, std::string_view type, std::string_view body,
             SoupMemoryUse use) {
    soup_server_message_set_status(message, status, nullptr);
    soup_server_message_set_response(message, std::string(type).c_str(), use, body.data(), body.size());
}

void refuse(SoupServerMessage* message, guint status, std::string_view reason) {
    respond(message, status, "text/plain; charset=utf-8", reason, SOUP_MEMORY_COPY);
}

std::string_view header(SoupServerMessage* message, const char* name) {
    const char* const value = soup_message_headers_get_one(soup_server_message_get_request_headers(message), name);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

bool isReading(SoupServerMessage* message) {
    const std::string_view method = soup_server_message_get_method(message);
    return method == "GET" || method == "HEAD";
}

std::string configurationOf(const Settings& settings) {
    const auto text = [](bool value) { return value ? std::string("true") : std::string("false"); };
    return "{\"websocket\":" + text(settings.websocketEnabled) + ",\"port\":" + std::to_string(settings.port) +
           ",\"nativeHotkeysDisabled\":" + text(settings.nativeHotkeysDisabled) + "}\n";
}

std::string clientLine(unsigned id, std::string_view what) {
    return "ws " + std::to_string(id) + ": " + std::string(what);
}

} // namespace

// One open WebSocket. Its signal handlers are gone before it is.
struct Server::Client {
    Client(Server& owner, unsigned number, SoupWebsocketConnection* socket)
        : server(owner),
          id(number),
          connection(SOUP_WEBSOCKET_CONNECTION(g_object_ref(socket))) {}
    ~Client() { g_signal_handlers_disconnect_by_data(connection.get(), this); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    void send(const std::string& text) const {
        if (soup_websocket_connection_get_state(connection.get()) == SOUP_WEBSOCKET_STATE_OPEN) {
            soup_websocket_connection_send_text(connection.get(), text.c_str());
        }
    }

    Server& server;
    unsigned id;
    ObjectPtr<SoupWebsocketConnection> connection;
    unsigned long messages = 0;
};

Server::Server(const Settings& settings)
    : settings_(settings),
      configuration_(configurationOf(settings)),
      soup_(soup_server_new("server-header", "vantor-srv", nullptr)),
      listener_(g_socket_service_new()) {
    // Compressed frames would let a few bytes grow past the size limit.
    soup_server_remove_websocket_extension(soup_.get(), SOUP_TYPE_WEBSOCKET_EXTENSION_DEFLATE);

    const auto early = [](SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer self) {
        static_cast<Server*>(self)->refuseEarly(message, path);
    };
    const auto normal = [](SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer self) {
        static_cast<Server*>(self)->answer(message, path);
    };
    soup_server_add_early_handler(soup_.get(), "/", early, this, nullptr);
    soup_server_add_handler(soup_.get(), "/", normal, this, nullptr);
    if (settings_.websocketEnabled) {
        const std::string path(kSocketPath);
        soup_server_add_early_handler(soup_.get(), path.c_str(), early, this, nullptr);
        soup_server_add_websocket_handler(
            soup_.get(), path.c_str(), nullptr, nullptr,
            [](SoupServer*, SoupServerMessage*, const char*, SoupWebsocketConnection* connection, gpointer self) {
                static_cast<Server*>(self)->admit(connection);
            },
            this, nullptr);
    }

    const auto incoming = +[](GSocketService*, GSocketConnection* connection, GObject*, gpointer self) -> gboolean {
        static_cast<Server*>(self)->accept(connection);
        return TRUE;
    };
    g_signal_connect(listener_.get(), "incoming", G_CALLBACK(incoming), this);
    // GLib 2.74 may lose a client that comes while addresses are added to a service that runs.
    g_socket_service_stop(listener_.get());
}

Server::~Server() {
    if (stopTimeout_ != 0)
        g_source_remove(stopTimeout_);
    clients_.clear();
    disconnect();
    g_signal_handlers_disconnect_by_data(listener_.get(), this);
}

std::optional<std::string> Server::start() {
    std::optional<std::string> problem = listen("127.0.0.1", true);
    if (!problem)
        problem = listen("::1", false);
    if (problem) {
        disconnect();
    } else {
        g_socket_service_start(listener_.get());
    }
    return problem;
}

// A machine without IPv6 goes without ::1. A stranger on ::1 is no such case: "localhost" could lead to it.
std::optional<std::string> Server::listen(const char* address, bool required) {
    const ObjectPtr<GSocketAddress> socketAddress(g_inet_socket_address_new_from_string(address, settings_.port));
    GError* raw = nullptr;
    if (g_socket_listener_add_address(G_SOCKET_LISTENER(listener_.get()), socketAddress.get(), G_SOCKET_TYPE_STREAM,
                                      G_SOCKET_PROTOCOL_TCP, nullptr, nullptr, &raw) != FALSE) {
        return std::nullopt;
    }
    const ErrorPtr error(raw);
    const bool taken = g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_ADDRESS_IN_USE) != FALSE;
    if (!required && !taken)
        return std::nullopt;
    const std::string port = std::to_string(settings_.port);
    if (taken)
        return "port " + port + " on " + address + " is taken by another program";
    return "can't listen on port " + port + " of " + address + ": " + error->message;
}

// libsoup 3.2 loses the socket of each connection that it accepts itself.
void Server::accept(GSocketConnection* connection) {
    GSocket* const socket = g_socket_connection_get_socket(connection);
    g_socket_set_option(socket, IPPROTO_TCP, TCP_NODELAY, 1, nullptr);
    const ObjectPtr<GSocketAddress> local(g_socket_connection_get_local_address(connection, nullptr));
    const ObjectPtr<GSocketAddress> remote(g_socket_connection_get_remote_address(connection, nullptr));
    // Without both ends known the client has already gone.
    if (local && remote) {
        soup_server_accept_iostream(soup_.get(), G_IO_STREAM(connection), local.get(), remote.get(), nullptr);
    }
}

void Server::disconnect() {
    g_socket_service_stop(listener_.get());
    g_socket_listener_close(G_SOCKET_LISTENER(listener_.get()));
    soup_server_disconnect(soup_.get());
}

// Runs before the request's body is read, so that a refused request costs no memory.
void Server::refuseEarly(SoupServerMessage* message, const char* path) const {
    soup_message_body_set_accumulate(soup_server_message_get_request_body(message), FALSE);
    if (!isLoopbackHost(header(message, "Host"))) {
        refuse(message, SOUP_STATUS_FORBIDDEN, "This server answers to this machine's own names only.\n");
        return;
    }
    if (!isReading(message)) {
        refuse(message, SOUP_STATUS_METHOD_NOT_ALLOWED, "Only GET and HEAD are known here.\n");
        soup_message_headers_append(soup_server_message_get_response_headers(message), "Allow", "GET, HEAD");
        return;
    }
    const std::string_view target = path;
    if (!settings_.websocketEnabled || !target.starts_with(kSocketPath))
        return;
    if (target != kSocketPath) {
        refuse(message, SOUP_STATUS_NOT_FOUND, "There is nothing here.\n");
    } else if (asciiLower(header(message, "Upgrade")) != "websocket") {
        constexpr guint kUpgradeRequired = 426;
        refuse(message, kUpgradeRequired, "This is a WebSocket.\n");
        soup_message_headers_append(soup_server_message_get_response_headers(message), "Upgrade", "websocket");
    } else if (!isLoopbackOrigin(header(message, "Origin"))) {
        refuse(message, SOUP_STATUS_FORBIDDEN, "The WebSocket is for pages of this machine only.\n");
    } else if (clients_.size() >= kMaxClients || stopped_) {
        refuse(message, SOUP_STATUS_SERVICE_UNAVAILABLE, "No more clients at the moment.\n");
    }
}

void Server::answer(SoupServerMessage* message, const char* path) const {
    SoupMessageHeaders* const headers = soup_server_message_get_response_headers(message);
    soup_message_headers_replace(headers, "Cache-Control", "no-store");
    soup_message_headers_replace(headers, "X-Content-Type-Options", "nosniff");

    const std::string_view target = path;
    if (target == kConfigPath) {
        respond(message, SOUP_STATUS_OK, "application/json", configuration_, SOUP_MEMORY_COPY);
        return;
    }
    const std::span<const PageAsset> assets = pageAssets();
    const auto asset = std::find_if(assets.begin(), assets.end(),
                                    [target](const PageAsset& candidate) { return candidate.path == target; });
    if (asset == assets.end()) {
        refuse(message, SOUP_STATUS_NOT_FOUND, "There is nothing here.\n");
        return;
    }
    soup_message_headers_replace(headers, "Content-Security-Policy", kContentPolicy);
    respond(message, SOUP_STATUS_OK, asset->contentType, asset->body, SOUP_MEMORY_STATIC);
}

void Server::admit(SoupWebsocketConnection* connection) {
    const unsigned id = ++lastId_;
    soup_websocket_connection_set_max_incoming_payload_size(connection, kMaxMessageBytes);
    Client& client = *clients_.emplace(id, std::make_unique<Client>(*this, id, connection)).first->second;

    using OnMessage = void (*)(SoupWebsocketConnection*, gint, GBytes*, gpointer);
    using OnError = void (*)(SoupWebsocketConnection*, GError*, gpointer);
    using OnClosed = void (*)(SoupWebsocketConnection*, gpointer);
    const OnMessage onMessage = [](SoupWebsocketConnection*, gint type, GBytes* bytes, gpointer data) {
        auto* const from = static_cast<Client*>(data);
        from->server.received(*from, static_cast<SoupWebsocketDataType>(type), bytes);
    };
    const OnError onError = [](SoupWebsocketConnection*, GError* error, gpointer data) {
        printLine(clientLine(static_cast<Client*>(data)->id, "error: " + printable(error->message)));
    };
    const OnClosed onClosed = [](SoupWebsocketConnection*, gpointer data) {
        const auto* const from = static_cast<Client*>(data);
        from->server.closed(from->id);
    };
    g_signal_connect(connection, "message", G_CALLBACK(onMessage), &client);
    g_signal_connect(connection, "error", G_CALLBACK(onError), &client);
    g_signal_connect(connection, "closed", G_CALLBACK(onClosed), &client);

    const char* const origin = soup_websocket_connection_get_origin(connection);
    printLine(clientLine(id, "open, from " + printable(origin == nullptr ? "" : origin)));
    client.send("{\"type\":\"hello\",\"client\":" + std::to_string(id) + ",\"port\":" + std::to_string(settings_.port) +
                "}");
}

void Server::received(Client& client, SoupWebsocketDataType type, GBytes* bytes) {
    gsize size = 0;
    const auto* const data = static_cast<const char*>(g_bytes_get_data(bytes, &size));
    const std::string_view text(data == nullptr ? "" : data, size);
    ++client.messages;
    const bool isText = type == SOUP_WEBSOCKET_DATA_TEXT;
    printLine(clientLine(client.id, isText ? printable(text) : "binary, " + std::to_string(size) + " bytes"));
    client.send("{\"type\":\"received\",\"message\":" + std::to_string(client.messages) +
                ",\"bytes\":" + std::to_string(size) + "}");
}

void Server::closed(unsigned id) {
    const auto found = clients_.find(id);
    if (found == clients_.end())
        return;
    const gushort code = soup_websocket_connection_get_close_code(found->second->connection.get());
    printLine(clientLine(id, code == 0 ? "closed" : "closed, code " + std::to_string(code)));
    clients_.erase(found);
    if (stopped_ && clients_.empty())
        finishStop();
}

void Server::stop(std::function<void()> stopped) {
    if (stopped_)
        return;
    stopped_ = std::move(stopped);
    disconnect();
    const auto onTimeout = [](gpointer self) -> gboolean {
        static_cast<Server*>(self)->stopTimeout_ = 0;
        static_cast<Server*>(self)->finishStop();
        return G_SOURCE_REMOVE;
    };
    stopTimeout_ = g_timeout_add(clients_.empty() ? 0 : kGoodbyeMs, onTimeout, this);

    // Closing may end a connection at once and so take it out of the map.
    std::vector<SoupWebsocketConnection*> connections;
    for (const auto& [id, client] : clients_) {
        connections.push_back(SOUP_WEBSOCKET_CONNECTION(g_object_ref(client->connection.get())));
    }
    for (SoupWebsocketConnection* const raw : connections) {
        const ObjectPtr<SoupWebsocketConnection> connection(raw);
        if (soup_websocket_connection_get_state(raw) != SOUP_WEBSOCKET_STATE_OPEN)
            continue;
        soup_websocket_connection_close(raw, SOUP_WEBSOCKET_CLOSE_GOING_AWAY, "The server is stopping");
    }
}

void Server::finishStop() {
    if (stopTimeout_ != 0) {
        g_source_remove(stopTimeout_);
        stopTimeout_ = 0;
    }
    if (const auto callback = std::exchange(stopped_, [] {}); callback)
        callback();
}

} // namespace vantorel::devserver
