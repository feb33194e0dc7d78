// Vantorel. MIT licence, see LICENSE.
// What the guard's tests are made of: pipes, small servers written in shell language, and started processes.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

namespace vantorel::guard {

/// Owns a descriptor.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor() { close(); }

    int get() const { return number_; }
    int release();
    void close();

private:
    int number_ = -1;
};

/// Two connected ends, both close-on-exec.
struct Ends {
    Descriptor reading;
    Descriptor writing;
};

Ends makePipe();

/// A socket pair in place of the watch pipe: after `hangUp` the guard reads end-of-file, and yet the writing end can
/// still tell when the guard has let go of its own.
Ends makeWire();
void hangUp(const Descriptor& writing);

/// True when the other end was closed within ten seconds (or `patience`).
bool isLetGo(const Descriptor& end, std::chrono::milliseconds patience = std::chrono::seconds(10));

/// The next line, without its end; empty at end-of-file and after ten seconds.
std::string nextLine(const Descriptor& reading);

/// Everything up to end-of-file; "(still open)" is added when that does not come within ten seconds.
std::string rest(const Descriptor& reading);

bool writeByte(const Descriptor& writing, char byte);

enum class Group { same, own };

struct Start {
    std::vector<std::string> command;
    std::vector<int> inherited = {}; ///< descriptors that stay open beside the streams
    int output = -1;                 ///< standard output and error; the test's own when -1
    Group group = Group::same;
    std::vector<std::string> environment = {"PATH=/usr/bin:/bin"};
};

/// Starts a process; -1 when that fails.
pid_t start(const Start& what);

/// The status of a child, as waitpid gives it, once it has ended; -1 after ten seconds.
int waitFor(pid_t child);

/// As `waitFor`, but the exit code alone; -1 for any other end.
int exitCodeOf(pid_t child);

bool isAlive(pid_t pid);

std::string guardPath();

/// A folder of its own for the test that goes away with it, and everything alive that the test may have left.
class World {
public:
    World();
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    /// Writes an executable file and returns its path.
    std::string program(const std::string& name, const std::string& text) const;

    const std::filesystem::path& folder() const { return folder_; }

    /// Makes sure that `pid` is killed at the end.
    void mindProcess(pid_t pid) { minded_.push_back(pid); }

private:
    std::filesystem::path folder_;
    std::vector<pid_t> minded_;
};

} // namespace vantorel::guard
