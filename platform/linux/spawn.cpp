// Vantorel. MIT licence, see LICENSE.
// One child by posix_spawn: exact environment, exact descriptors, clean signal state.

#include "platform/linux/spawn.h"

#include <fcntl.h>
#include <spawn.h>

#include <cerrno>
#include <csignal>
#include <utility>

#include "platform/linux/file_descriptor.h"

namespace vantorel::gtk {

namespace {

class FileActions {
public:
    FileActions() { posix_spawn_file_actions_init(&actions_); }
    ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    posix_spawn_file_actions_t* get() { return &actions_; }

private:
    posix_spawn_file_actions_t actions_{};
};

class Attributes {
public:
    Attributes() {
        posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        posix_spawnattr_setpgroup(&attributes_, 0);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    }
    ~Attributes() { posix_spawnattr_destroy(&attributes_); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    const posix_spawnattr_t* get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_{};
};

bool canHold(const std::string& name, const std::string& value) {
    return !name.empty() && name.find('=') == std::string::npos && name.find('\0') == std::string::npos &&
           value.find('\0') == std::string::npos;
}

std::vector<std::string> environmentEntries(const Environment& environment) {
    std::vector<std::string> entries;
    entries.reserve(environment.size());
    for (const auto& [name, value] : environment) {
        if (canHold(name, value)) {
            entries.push_back(name + "=" + value);
        }
    }
    return entries;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

// A copy far above the numbers that the child's descriptors get, so that handing on one never overwrites another.
FileDescriptor highCopy(int descriptor) {
    constexpr int kFirst = 32;
    return FileDescriptor(::fcntl(descriptor, F_DUPFD_CLOEXEC, kFirst));
}

} // namespace

SpawnResult spawn(const SpawnRequest& request) {
    FileActions actions;
    std::vector<FileDescriptor> copies;
    const auto handOn = [&](int descriptor, int number) {
        FileDescriptor copy = highCopy(descriptor);
        if (!copy) {
            return false;
        }
        posix_spawn_file_actions_adddup2(actions.get(), copy.get(), number);
        copies.push_back(std::move(copy));
        return true;
    };

    posix_spawn_file_actions_addopen(actions.get(), STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if ((request.standardOutput >= 0 && !handOn(request.standardOutput, STDOUT_FILENO)) ||
        (request.standardError >= 0 && !handOn(request.standardError, STDERR_FILENO))) {
        return {errno, 0};
    }
    int next = STDERR_FILENO + 1;
    for (const int descriptor : request.handedOn) {
        if (!handOn(descriptor, next++)) {
            return {errno, 0};
        }
    }
    posix_spawn_file_actions_addclosefrom_np(actions.get(), next);
    if (!request.folder.empty()) {
        posix_spawn_file_actions_addchdir_np(actions.get(), request.folder.c_str());
    }

    const Attributes attributes;
    std::vector<std::string> arguments = request.arguments;
    std::vector<std::string> entries = environmentEntries(request.environment);
    const std::vector<char*> argumentPointers = pointers(arguments);
    const std::vector<char*> entryPointers = pointers(entries);
    SpawnResult result;
    result.errorCode = posix_spawn(&result.pid, request.program.c_str(), actions.get(), attributes.get(),
                                   argumentPointers.data(), entryPointers.data());
    return result;
}

} // namespace vantorel::gtk
