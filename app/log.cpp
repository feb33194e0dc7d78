// Vantorel. MIT licence, see LICENSE.
// The diagnostic log: plain lines on standard output.
//
// A line goes out at once when standard output takes it without waiting. Otherwise it joins a backlog that a thread of
// its own writes, so that a reader that lags behind costs memory and never the window's time.
#include "app/log.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

namespace vantorel {

namespace {

constexpr std::size_t kBacklogLimit = 4U << 20U;

/// Writes all of `bytes`, waiting for the reader as long as it takes. What cannot be written is given up.
void writeAll(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(STDOUT_FILENO, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            pollfd output{STDOUT_FILENO, POLLOUT, 0};
            ::poll(&output, 1, -1);
        } else if (errno != EINTR) {
            return;
        }
    }
}

/// Whether a write of up to PIPE_BUF bytes returns at once: a pipe that is ready for writing takes so many.
bool outputIsReady() {
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    return ::poll(&output, 1, 0) > 0;
}

class LogWriter {
public:
    void write(std::string_view text, bool mayWait) {
        std::string line;
        line.reserve(text.size() + 1);
        line.append(text).push_back('\n');

        std::unique_lock lock(mutex_);
        if (sink_) {
            // The sink may log itself.
            const auto sink = sink_;
            lock.unlock();
            sink(text);
            return;
        }
        if (isIdle() && line.size() <= PIPE_BUF && outputIsReady()) {
            writeAll(line);
            return;
        }
        if (mayWait)
            shrunk_.wait(lock, [this] { return backlogBytes_ <= kBacklogLimit; });
        backlogBytes_ += line.size();
        backlog_.push_back(std::move(line));
        startThread();
        grown_.notify_one();
    }

    void flush(double seconds) {
        std::unique_lock lock(mutex_);
        shrunk_.wait_for(lock, std::chrono::duration<double>(seconds), [this] { return isIdle(); });
    }

    void setSink(std::function<void(std::string_view)> sink) {
        const std::scoped_lock lock(mutex_);
        sink_ = std::move(sink);
    }

private:
    bool isIdle() const { return backlogBytes_ == 0; }

    /// The thread lives until the process ends: it may be waiting for a reader that never comes back.
    void startThread() {
        if (threadStarted_)
            return;
        threadStarted_ = true;
        std::thread([this] { writeBacklog(); }).detach();
    }

    [[noreturn]] void writeBacklog() {
        std::unique_lock lock(mutex_);
        for (;;) {
            grown_.wait(lock, [this] { return !backlog_.empty(); });
            const std::string line = std::move(backlog_.front());
            backlog_.pop_front();
            lock.unlock();
            writeAll(line);
            lock.lock();
            backlogBytes_ -= line.size();
            shrunk_.notify_all();
        }
    }

    std::mutex mutex_;
    std::condition_variable grown_;
    std::condition_variable shrunk_;
    std::deque<std::string> backlog_;
    /// The line that the thread is writing counts until it is out.
    std::size_t backlogBytes_ = 0;
    bool threadStarted_ = false;
    std::function<void(std::string_view)> sink_;
};

LogWriter& writer() {
    // Never destroyed: threads may log while the process ends.
    static auto* const theWriter = new LogWriter;
    return *theWriter;
}

} // namespace

void logLine(std::string_view text) { writer().write(text, /*mayWait=*/false); }

void logBulk(std::string_view text) { writer().write(text, /*mayWait=*/true); }

void flushLog(double seconds) { writer().flush(seconds); }

void setLogSink(std::function<void(std::string_view)> sink) { writer().setSink(std::move(sink)); }

} // namespace vantorel
