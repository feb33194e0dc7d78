// Vantorel. MIT licence, see LICENSE.
// The watch: who is watched, when it is asked to end and when it is killed.
#include "guard/guard.h"
#include "guard/processes.h"
#include "platform/portable/guard_protocol.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace vantorel::guard {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kFirstFreeDescriptor = 3;
constexpr milliseconds kLookEvery{100};            // while the server is to end, or its end can't be waited for
constexpr milliseconds kIdleLookEvery{2'000};      // while the shell lives and only children of the server are left
constexpr milliseconds kGiveUpAfterKilling{5'000}; // what survives SIGKILL that long hangs in the kernel

/// The server and its process group. The group's number is the server's: while the server lives, or has ended but was
/// not asked for its exit code, no other process can have that number, and no other group either. Nor can a group
/// become another one while it has members. So the group is certainly the server's when, at each look, a member is met
/// that was there at the last; only the first look after the server's end, which follows it at once, has none to
/// compare with, and takes members of the server's own session.
class Server {
public:
    explicit Server(const ProcessRecord& record) : record_(record), exitDescriptor_(openExitDescriptor(record)) {
        // The descriptor stands for that number; it is the server's if the number still was the server's.
        wasThere_ = isStill(record_, processRecord(record_.pid));
    }

    int exitDescriptor() const { return exitDescriptor_; }

    bool isRunning() const {
        pollfd end{exitDescriptor_, POLLIN, 0};
        if (exitDescriptor_ != -1) {
            return wasThere_ && ::poll(&end, 1, 0) == 0;
        }
        const std::optional<ProcessRecord> now = processRecord(record_.pid);
        return isStill(record_, now) && !now->ended;
    }

    /// Looks at the group after the server's end; false when nothing of it is left.
    bool hasGroupLeft() {
        if (!hasOwnGroup() || (::kill(-record_.group, 0) == -1 && errno == ESRCH)) {
            return false;
        }
        const std::vector<ProcessRecord> members = livingMembers(record_.group);
        const bool isTheServers = std::any_of(members.begin(), members.end(), [this](const ProcessRecord& member) {
            return hasLooked_ ? isKnown(member) : member.session == record_.session;
        });
        known_ = members;
        hasLooked_ = true;
        return isTheServers;
    }

    void send(int signal) const {
        if (isRunning()) {
            sendSignal(record_, exitDescriptor_, signal);
        }
    }

    /// To be called right after a look that found something left.
    void killAll() const {
        send(SIGKILL);
        if (hasOwnGroup()) {
            ::kill(-record_.group, SIGKILL);
        }
    }

private:
    bool hasOwnGroup() const { return record_.group == record_.pid; }

    bool isKnown(const ProcessRecord& member) const {
        return std::any_of(known_.begin(), known_.end(),
                           [&](const ProcessRecord& known) { return isStill(known, member); });
    }

    ProcessRecord record_;
    int exitDescriptor_; // open for the life of the process
    bool wasThere_ = false;
    bool hasLooked_ = false;
    std::vector<ProcessRecord> known_;
};

/// The guard's whole life.
void guardServer(Server& server, int pipe, milliseconds grace) {
    std::optional<Clock::time_point> killAt;
    std::optional<Clock::time_point> giveUpAt;
    for (;;) {
        const bool isRunning = server.isRunning();
        const Clock::time_point now = Clock::now();
        if ((!isRunning && !server.hasGroupLeft()) || (giveUpAt && now >= *giveUpAt)) {
            return;
        }
        if (killAt && now >= *killAt) {
            server.killAll();
            giveUpAt = giveUpAt ? giveUpAt : now + kGiveUpAfterKilling;
        }
        const int end = isRunning ? server.exitDescriptor() : -1;
        milliseconds timeout = killAt || isRunning ? kLookEvery : kIdleLookEvery;
        if (end != -1 && !giveUpAt) {
            timeout = killAt ? std::chrono::ceil<milliseconds>(*killAt - now) : milliseconds(-1);
        }
        pollfd events[] = {{killAt ? -1 : pipe, POLLIN, 0}, {end, POLLIN, 0}}; // -1 is passed over
        ::poll(events, 2, static_cast<int>(timeout.count()));
        char byte = 0;
        const ssize_t count = events[0].revents != 0 ? ::read(pipe, &byte, 1) : -1;
        if (count == 0) { // the shell is gone
            server.send(SIGTERM);
        }
        if (count == 0 || (count == 1 && byte == kGuardQuitByte)) {
            killAt = Clock::now() + grace;
        }
    }
}

/// Lets go of everything that was inherited and could hold something up: streams, descriptors, the working directory,
/// the terminal's signals.
bool detach(int keptDescriptor) {
    for (int signal = 1; signal < NSIG; ++signal) {
        ::signal(signal, SIG_IGN);
    }
    const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (int stream = 0; stream < kFirstFreeDescriptor; ++stream) {
        ::dup2(nothing, stream);
    }
    DIR* const folder = ::opendir("/dev/fd");
    if (nothing == -1 || folder == nullptr || ::chdir("/") == -1) {
        return false;
    }
    std::vector<int> others;
    while (const dirent* const entry = ::readdir(folder)) {
        int descriptor = -1;
        std::from_chars(entry->d_name, entry->d_name + std::strlen(entry->d_name), descriptor);
        if (descriptor >= kFirstFreeDescriptor && descriptor != keptDescriptor && descriptor != ::dirfd(folder)) {
            others.push_back(descriptor);
        }
    }
    ::closedir(folder);
    std::for_each(others.begin(), others.end(), ::close);
    return true;
}

} // namespace

int watch(int pipe, pid_t server, milliseconds grace) {
    const std::optional<ProcessRecord> record = processRecord(server);
    if (!record || record->parent != ::getppid() || server == ::getpid()) {
        return kGuardExitNotOurs;
    }
    pipe = ::fcntl(pipe, F_DUPFD_CLOEXEC, kFirstFreeDescriptor);
    if (pipe == -1 || !detach(pipe)) {
        return kGuardExitFailed;
    }
    // Before the foreground part ends, so that nothing that ends the shell's whole group can reach the guard any more.
    ::setsid();
    // In the background the guard is no child of the shell, which so need not wait for it and can't leave it a zombie.
    const pid_t background = ::fork();
    if (background != 0) {
        return background == -1 ? kGuardExitFailed : kGuardExitOk;
    }
    ::setsid(); // for a foreground part that led a group, which can't leave its session
    Server watched(*record);
    guardServer(watched, pipe, grace);
    return kGuardExitOk;
}

} // namespace vantorel::guard
