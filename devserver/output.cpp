// Vantorel. MIT licence, see LICENSE.
// Unbuffered lines that survive a reader that has gone.
#include "devserver/output.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>

namespace vantorel::devserver {
namespace {

constexpr int kStalledReaderMs = 1000;

// Waits for room on a descriptor that someone else made non-blocking.
bool waitForRoom(int fd) {
    pollfd entry{fd, POLLOUT, 0};
    const int ready = poll(&entry, 1, kStalledReaderMs);
    return ready > 0 || (ready < 0 && errno == EINTR);
}

void writeWhole(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(fd, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            if (!waitForRoom(fd))
                return;
        } else if (errno != EINTR) {
            return;
        }
    }
}

} // namespace

void survivePipeLoss() { std::signal(SIGPIPE, SIG_IGN); }

void printLine(std::string_view line) {
    std::string bytes(line);
    bytes += '\n';
    writeWhole(STDOUT_FILENO, bytes);
}

void printError(std::string_view line) {
    std::string bytes = "vantor-srv: ";
    bytes += line;
    bytes += '\n';
    writeWhole(STDERR_FILENO, bytes);
}

} // namespace vantorel::devserver
