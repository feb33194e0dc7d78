// Vantorel. MIT licence, see LICENSE.
// The launch gate: a process that becomes the server when it is told to.
#include "guard/guard.h"
#include "platform/portable/guard_protocol.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <unistd.h>

extern char** environ;

namespace vantorel::guard {

int launch(int gate, int status, const char* serverPath) {
    ::fcntl(gate, F_SETFD, FD_CLOEXEC);
    ::fcntl(status, F_SETFD, FD_CLOEXEC);
    char byte = 0;
    ssize_t count = 0;
    do {
        count = ::read(gate, &byte, 1);
    } while (count == -1 && errno == EINTR);
    if (count == 1) {
        std::string name(serverPath);
        char* const arguments[] = {name.data(), nullptr};
        ::execve(serverPath, arguments, environ);
        const int error = errno;
        // Nobody is left to tell when this fails: the shell sees the exit code then.
        [[maybe_unused]] const ssize_t written = ::write(status, &error, sizeof error);
    }
    return kGuardExitNotLaunched;
}

} // namespace vantorel::guard
