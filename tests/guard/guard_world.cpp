// Vantorel. MIT licence, see LICENSE.
// What the guard's tests are made of: pipes, small servers written in shell language, and started processes.
#include "tests/guard/guard_world.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace vantorel::guard {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kPatience{10'000};

Ends closeOnExec(const int (&numbers)[2]) {
    for (const int number : numbers) {
        ::fcntl(number, F_SETFD, FD_CLOEXEC);
    }
    return Ends{Descriptor(numbers[0]), Descriptor(numbers[1])};
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

int remaining(Clock::time_point until) {
    const auto left = std::chrono::ceil<milliseconds>(until - Clock::now());
    return static_cast<int>(std::max<milliseconds::rep>(left.count(), 0));
}

} // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    if (this != &other) {
        close();
        number_ = other.release();
    }
    return *this;
}

int Descriptor::release() { return std::exchange(number_, -1); }

void Descriptor::close() {
    if (number_ != -1) {
        ::close(release());
    }
}

Ends makePipe() {
    int numbers[2] = {-1, -1};
    return ::pipe(numbers) == 0 ? closeOnExec(numbers) : Ends{};
}

Ends makeWire() {
    int numbers[2] = {-1, -1};
    return ::socketpair(AF_UNIX, SOCK_STREAM, 0, numbers) == 0 ? closeOnExec(numbers) : Ends{};
}

void hangUp(const Descriptor& writing) { ::shutdown(writing.get(), SHUT_WR); }

bool isLetGo(const Descriptor& end, milliseconds patience) {
    const Clock::time_point until = Clock::now() + patience;
    do {
        pollfd event{end.get(), POLLIN, 0};
        ::poll(&event, 1, remaining(until));
        if ((event.revents & (POLLIN | POLLERR | POLLHUP)) != 0) {
            return true; // nothing is ever sent this way, so that something to read is the end-of-file
        }
    } while (Clock::now() < until);
    return false;
}

std::string nextLine(const Descriptor& reading) {
    const Clock::time_point until = Clock::now() + kPatience;
    std::string line;
    for (;;) {
        pollfd event{reading.get(), POLLIN, 0};
        char byte = 0;
        if (::poll(&event, 1, remaining(until)) <= 0 || ::read(reading.get(), &byte, 1) != 1 || byte == '\n') {
            return line;
        }
        line += byte;
    }
}

std::string rest(const Descriptor& reading) {
    const Clock::time_point until = Clock::now() + kPatience;
    std::string text;
    for (;;) {
        pollfd event{reading.get(), POLLIN, 0};
        if (::poll(&event, 1, remaining(until)) <= 0) {
            return text + "(still open)";
        }
        char bytes[512];
        const ssize_t count = ::read(reading.get(), bytes, sizeof bytes);
        if (count <= 0) {
            return text;
        }
        text.append(bytes, static_cast<std::size_t>(count));
    }
}

bool writeByte(const Descriptor& writing, char byte) { return ::write(writing.get(), &byte, 1) == 1; }

pid_t start(const Start& what) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (what.output != -1) {
        posix_spawn_file_actions_adddup2(&actions, what.output, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, what.output, STDERR_FILENO);
    }
    for (const int descriptor : what.inherited) {
        posix_spawn_file_actions_adddup2(&actions, descriptor, descriptor); // takes close-on-exec away
    }
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    sigaddset(&signals, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    const int group = what.group == Group::own ? POSIX_SPAWN_SETPGROUP : 0;
    posix_spawnattr_setflags(&attributes, static_cast<short>(group | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF));
    std::vector<std::string> command = what.command;
    std::vector<std::string> environment = what.environment;
    pid_t pid = -1;
    const int error = ::posix_spawn(&pid, command.front().c_str(), &actions, &attributes, pointersTo(command).data(),
                                    pointersTo(environment).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? pid : -1;
}

int waitFor(pid_t child) {
    const Clock::time_point until = Clock::now() + kPatience;
    while (Clock::now() < until) {
        int status = 0;
        if (::waitpid(child, &status, WNOHANG) == child) {
            return status;
        }
        std::this_thread::sleep_for(milliseconds(2));
    }
    return -1;
}

int exitCodeOf(pid_t child) {
    const int status = waitFor(child);
    return status != -1 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool isAlive(pid_t pid) { return ::kill(pid, 0) == 0; }

std::string guardPath() { return VANTOREL_PROGRAMS "/vantorel-guard"; }

World::World() {
    std::signal(SIGPIPE, SIG_IGN); // as the shell does
    std::string name = (std::filesystem::temp_directory_path() / "vantorel-guard-XXXXXX").string();
    if (::mkdtemp(name.data()) != nullptr) {
        folder_ = name;
    }
}

World::~World() {
    for (const pid_t pid : minded_) {
        ::kill(pid, SIGKILL);
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::string World::program(const std::string& name, const std::string& text) const {
    const std::filesystem::path path = folder_ / name;
    std::ofstream(path) << text;
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path.string();
}

} // namespace vantorel::guard
