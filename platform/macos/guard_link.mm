// Vantorel. MIT licence, see LICENSE.
// The shell's end of the line to vantorel-guard.
#import "platform/macos/guard_link.h"

#import <Foundation/Foundation.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#import "platform/macos/bridge.h"
#include "platform/portable/guard_protocol.h"
#include "platform/portable/text.h"

namespace vantorel::mac {

namespace {

std::string guardPath() {
    NSString* const folder = NSBundle.mainBundle.executablePath.stringByDeletingLastPathComponent;
    return appendPathComponent(toText(folder), kGuardProgramName);
}

/// Starts the guard with `reading` as its only inherited descriptor; true once it stands.
bool spawnGuard(int reading, pid_t server) {
    const std::string path = guardPath();
    std::string option(kGuardWatchOption);
    std::string descriptor = std::to_string(reading);
    std::string identifier = std::to_string(server);
    std::string grace = std::to_string(kGuardGraceMilliseconds);
    std::string name(kGuardProgramName);
    char* const arguments[] = {name.data(),  option.data(), descriptor.data(), identifier.data(),
                               grace.data(), nullptr};
    char* const environment[] = {nullptr};

    posix_spawn_file_actions_t actions = nullptr;
    posix_spawnattr_t attributes = nullptr;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_addinherit_np(&actions, reading);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_CLOEXEC_DEFAULT);
    pid_t guard = 0;
    const bool spawned = posix_spawn(&guard, path.c_str(), &actions, &attributes, arguments, environment) == 0;
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (!spawned) return false;

    // What was started ends as soon as its background part stands.
    int status = 0;
    pid_t waited = 0;
    do {
        waited = ::waitpid(guard, &status, 0);
    } while (waited < 0 && errno == EINTR);
    return waited == guard && WIFEXITED(status) && WEXITSTATUS(status) == kGuardExitOk;
}

}  // namespace

GuardLink::~GuardLink() {
    if (pipe_ >= 0) ::close(pipe_);
}

void GuardLink::start(pid_t server) {
    int ends[2] = {-1, -1};
    if (::pipe(ends) != 0) return;
    ::fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    ::fcntl(ends[1], F_SETFD, FD_CLOEXEC);
    const bool stands = spawnGuard(ends[0], server);
    ::close(ends[0]);
    if (stands) {
        pipe_ = ends[1];
    } else {
        ::close(ends[1]);
    }
}

void GuardLink::tellNormalQuit() {
    if (pipe_ >= 0) static_cast<void>(::write(pipe_, &kGuardQuitByte, 1));
}

}  // namespace vantorel::mac
