// Vantorel. MIT licence, see LICENSE.
// The answer to the connection probe, byte by byte: each probe ends once, and only a status of 200 counts as up.
#include <arpa/inet.h>
#include <fcntl.h>
#include <glib-unix.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "platform/linux/engine_error.h"
#include "platform/linux/url_session.h"
#include "tests/fuzz/oracle.h"

using namespace vantorel;

namespace {

/// A server on the main loop that sends every client the same bytes and closes.
class Server {
public:
    Server() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        fuzz::check(::bind(listener_, generic, size) == 0 && ::listen(listener_, 16) == 0 &&
                        ::getsockname(listener_, generic, &size) == 0,
                    "there is a port to listen on");
        port_ = ntohs(address.sin_port);
        g_unix_fd_add(
            listener_, G_IO_IN,
            [](int, GIOCondition, gpointer self) -> gboolean {
                static_cast<Server*>(self)->accept();
                return G_SOURCE_CONTINUE;
            },
            this);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    int port() const { return port_; }
    void setAnswer(std::string_view answer) { answer_ = answer; }
    bool hasClients() const { return !clients_.empty(); }

private:
    struct Client {
        Server* server;
        std::string request;
    };

    void accept() {
        const int client = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (client < 0)
            return;
        // Room for the largest input: the loop must not wait for the client, which lives in it too.
        const int room = 1 << 18;
        ::setsockopt(client, SOL_SOCKET, SO_SNDBUF, &room, sizeof room);
        clients_.insert(client);
        g_unix_fd_add_full(
            G_PRIORITY_DEFAULT, client, G_IO_IN,
            [](int descriptor, GIOCondition, gpointer data) -> gboolean {
                auto* self = static_cast<Client*>(data);
                return self->server->serve(descriptor, self->request) ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
            },
            new Client{this, {}}, [](gpointer data) { delete static_cast<Client*>(data); });
    }

    /// False when the client has been served.
    bool serve(int client, std::string& request) {
        char bytes[4096];
        const ssize_t count = ::read(client, bytes, sizeof bytes);
        if (count > 0) {
            request.append(bytes, static_cast<std::size_t>(count));
            if (request.find("\r\n\r\n") == std::string::npos)
                return true;
            const ssize_t sent = ::send(client, answer_.data(), answer_.size(), MSG_NOSIGNAL);
            fuzz::check(sent == static_cast<ssize_t>(answer_.size()), "the whole answer is sent");
        }
        clients_.erase(client);
        ::close(client);
        return false;
    }

    int listener_;
    int port_ = 0;
    std::string_view answer_;
    std::set<int> clients_;
};

bool isDigit(char character) { return character >= '0' && character <= '9'; }

std::string_view withoutBlanksInFront(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    return text;
}

/// The status of a line "HTTP/1.1 200 OK"; libsoup also takes other versions, more blanks, and the "ICY 200 OK" of
/// radio servers. Nothing for other lines.
std::optional<int> statusOf(std::string_view line) {
    if (line.starts_with("HTTP/")) {
        line.remove_prefix(5);
        while (!line.empty() && (isDigit(line.front()) || line.front() == '.'))
            line.remove_prefix(1);
    } else if (line.starts_with("ICY")) {
        line.remove_prefix(3);
    } else {
        return std::nullopt;
    }
    line = withoutBlanksInFront(line);
    if (line.size() < 3 || !isDigit(line[0]) || !isDigit(line[1]) || !isDigit(line[2]))
        return std::nullopt;
    return (line[0] - '0') * 100 + (line[1] - '0') * 10 + (line[2] - '0');
}

/// The next line of `text`, without its end, which is taken away.
std::string_view takeLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

/// The status that a patient reader finds: that of the first head which is not merely provisional.
std::optional<int> statusIn(std::string_view answer) {
    while (!answer.empty()) {
        if (answer.front() == '\r' || answer.front() == '\n') {
            answer.remove_prefix(1);
            continue;
        }
        const auto status = statusOf(takeLine(answer));
        if (!status || *status / 100 != 1)
            return status;
        while (!answer.empty() && !takeLine(answer).empty()) {
        }
    }
    return std::nullopt;
}

/// An answer without any header, whose body ends with the connection: nothing in it can be misread.
bool isPlainSuccess(std::string_view answer) {
    return answer.starts_with("HTTP/1.1 200 OK\r\n\r\n") || answer.starts_with("HTTP/1.0 200 OK\r\n\r\n");
}

UrlResult probe(const Server& server) {
    const auto session = gtk::makeUrlSession();
    UrlRequest request;
    request.address = "http://127.0.0.1:" + std::to_string(server.port());
    request.timeoutSeconds = 8;
    int completions = 0;
    UrlResult outcome;
    session
        ->dataTask(request,
                   [&](const UrlResult& result) {
                       ++completions;
                       outcome = result;
                   })
        ->resume();
    fuzz::check(completions == 0, "no completion comes inside the start");
    while (completions == 0 || server.hasClients())
        g_main_context_iteration(nullptr, TRUE);
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
    fuzz::check(completions == 1, "a request ends once");
    return outcome;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Server server;
    const std::string_view answer = fuzz::textFrom(data, size);
    server.setAnswer(answer);
    const UrlResult result = probe(server);

    fuzz::check(result.error.has_value() != result.statusCode.has_value(), "there is an error or a status");
    fuzz::check(!result.error || result.error->localizedDescription != gtk::timedOutError().localizedDescription,
                "with the connection the request ends too");
    const bool isUp = !result.error && result.statusCode == 200;
    fuzz::check(!isUp || statusIn(answer) == 200, "up needs a status of 200");
    fuzz::check(isUp || !isPlainSuccess(answer), "a status of 200 is up");
    return 0;
}
