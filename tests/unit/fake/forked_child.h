// Vantorel. MIT licence, see LICENSE.
// A copy of the test program that runs one function with a pipe as its standard output, for what only the real log can
// show.
#pragma once

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>

namespace vantorel::fake {

/// Runs a function in a forked copy of the process. The test plays the reader of its standard output: nothing is read
/// until it asks. The calling process must have no other threads.
class ForkedChild {
public:
    /// In the copy `body` runs with SIGPIPE ignored, as in the shell, and the copy exits with 0 when it returns. It
    /// ends by a signal if it takes longer than a minute. What it writes to standard error can be waited for.
    explicit ForkedChild(const std::function<void()>& body) {
        std::array<int, 2> output{};
        std::array<int, 2> report{};
        if (::pipe(output.data()) != 0 || ::pipe(report.data()) != 0)
            throw std::runtime_error("no pipe");
        std::fflush(nullptr); // what is written here must not come out there too
        pid_ = ::fork();
        if (pid_ < 0)
            throw std::runtime_error("no fork");
        if (pid_ == 0) {
            ::dup2(output[1], STDOUT_FILENO);
            ::dup2(report[1], STDERR_FILENO);
            for (const int end : {output[0], output[1], report[0], report[1]})
                ::close(end);
            std::signal(SIGPIPE, SIG_IGN);
            ::alarm(60);
            body();
            ::_exit(0);
        }
        ::close(output[1]);
        ::close(report[1]);
        output_ = output[0];
        report_ = report[0];
    }
    ~ForkedChild() {
        closeOutput();
        ::close(report_);
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
    }
    ForkedChild(const ForkedChild&) = delete;
    ForkedChild& operator=(const ForkedChild&) = delete;

    /// Everything that comes on standard output until its end.
    std::string readOutput() const { return readToEnd(output_); }
    /// The reader goes away.
    void closeOutput() {
        if (output_ >= 0)
            ::close(output_);
        output_ = -1;
    }
    /// What came on standard error until its end.
    std::string readReport() const { return readToEnd(report_); }
    /// Waits for something on standard error; false when nothing came within `milliseconds`.
    bool waitForReport(int milliseconds) const {
        pollfd ready{report_, POLLIN, 0};
        std::array<char, 1> byte{};
        return ::poll(&ready, 1, milliseconds) > 0 && ::read(report_, byte.data(), 1) == 1;
    }
    /// Waits for the end: the exit code, or the negative number of the signal that ended the copy.
    int wait() {
        int status = 0;
        while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
        }
        pid_ = -1;
        return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    }

private:
    static std::string readToEnd(int descriptor) {
        std::string bytes;
        std::array<char, 65536> chunk{};
        for (;;) {
            const ssize_t count = ::read(descriptor, chunk.data(), chunk.size());
            if (count > 0) {
                bytes.append(chunk.data(), static_cast<std::size_t>(count));
            } else if (count == 0 || errno != EINTR) {
                return bytes;
            }
        }
    }

    pid_t pid_ = -1;
    int output_ = -1;
    int report_ = -1;
};

/// In a forked copy: tells the test that it has come this far.
inline void reportProgress() {
    if (::write(STDERR_FILENO, ".", 1) != 1)
        ::_exit(99);
}

} // namespace vantorel::fake
