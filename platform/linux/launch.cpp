// Vantorel. MIT licence, see LICENSE.
// Starting the server under the watch of the helper program that ends it when the shell is gone; guard/guard.h tells
// how.

#include "platform/linux/launch.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>

// Without C linkage of its own in glibc 2.36.
extern "C" {
#include <sys/pidfd.h>
}

#include <cerrno>
#include <csignal>
#include <optional>

#include "platform/linux/process_info.h"
#include "platform/portable/guard_protocol.h"

namespace vantorel::gtk {

namespace {

// The helper answers within milliseconds; the main thread waits for it no longer than this.
constexpr int kPatienceMilliseconds = 3000;

// Where spawn() puts what it hands on.
const char* const kFirstHandedOn = "3";
const char* const kSecondHandedOn = "4";

// A socket, since a write to a pipe whose reader is gone would raise a signal. The first end is for reading.
PipeEnds openLine() {
    int ends[2] = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        return {};
    }
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

bool becomesReadable(int descriptor) {
    pollfd watched{descriptor, POLLIN, 0};
    int count = 0;
    do {
        count = ::poll(&watched, 1, kPatienceMilliseconds);
    } while (count < 0 && errno == EINTR);
    return count > 0;
}

// The wait status of an own child, or -1 when somebody else took it.
int reap(pid_t pid) {
    int status = 0;
    pid_t result = 0;
    do {
        result = ::waitpid(pid, &status, 0);
    } while (result < 0 && errno == EINTR);
    return result == pid ? status : -1;
}

// As reap; a child that takes too long is killed.
int reapSoon(pid_t pid) {
    const FileDescriptor child(::pidfd_open(pid, 0));
    if (child && !becomesReadable(child.get())) {
        ::kill(pid, SIGKILL);
    }
    return reap(pid);
}

FileDescriptor startWatch(const std::string& guardProgram, pid_t server) {
    PipeEnds line = openLine();
    if (!line.reading) {
        return {};
    }
    SpawnRequest request;
    request.program = guardProgram;
    request.arguments = {guardProgram, std::string(kGuardWatchOption), kFirstHandedOn, std::to_string(server),
                         std::to_string(kGuardGraceMilliseconds)};
    request.environment = currentEnvironment();
    request.handedOn = {line.reading.get()};
    const SpawnResult guard = spawn(request);
    if (guard.errorCode != 0) {
        return {};
    }
    const int status = reapSoon(guard.pid);
    const bool stands = status >= 0 && WIFEXITED(status) && WEXITSTATUS(status) == kGuardExitOk;
    return stands ? std::move(line.writing) : FileDescriptor();
}

// The errno value of the waiting process's attempt to become the server, 0 when it did; nothing when it does not
// answer.
std::optional<int> outcome(const FileDescriptor& status) {
    if (!becomesReadable(status.get())) {
        return std::nullopt;
    }
    int error = 0;
    const ssize_t count = ::read(status.get(), &error, sizeof error);
    return count == sizeof error ? error : 0;
}

Launched launchDirectly(const SpawnRequest& server, const std::string& guardProgram) {
    const SpawnResult child = spawn(server);
    Launched launched{child.errorCode, child.pid, {}};
    if (child.errorCode == 0) {
        launched.guardLine = startWatch(guardProgram, child.pid);
    }
    return launched;
}

} // namespace

Launched launchGuarded(const SpawnRequest& server, const std::string& guardProgram) {
    PipeEnds gate = openLine();
    PipeEnds status = openPipe();
    if (!gate.reading || !status.reading) {
        return launchDirectly(server, guardProgram);
    }
    SpawnRequest waiting = server;
    waiting.program = guardProgram;
    waiting.arguments = {guardProgram, std::string(kGuardLaunchOption), kFirstHandedOn, kSecondHandedOn,
                         server.program};
    waiting.handedOn = {gate.reading.get(), status.writing.get()};
    const SpawnResult child = spawn(waiting);
    if (child.errorCode != 0) {
        return launchDirectly(server, guardProgram);
    }
    gate.reading.close();
    status.writing.close();

    Launched launched{0, child.pid, startWatch(guardProgram, child.pid)};
    ::send(gate.writing.get(), "", 1, MSG_NOSIGNAL);
    const std::optional<int> error = outcome(status.reading);
    if (!error) {
        ::kill(child.pid, SIGKILL);
        reap(child.pid);
        return launchDirectly(server, guardProgram);
    }
    if (*error != 0) {
        reap(child.pid);
        return {*error, 0, {}};
    }
    return launched;
}

void announceQuit(const FileDescriptor& guardLine) {
    if (guardLine) {
        ::send(guardLine.get(), &kGuardQuitByte, 1, MSG_NOSIGNAL | MSG_DONTWAIT);
    }
}

} // namespace vantorel::gtk
