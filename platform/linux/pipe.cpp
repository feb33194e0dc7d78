// Vantorel. MIT licence, see LICENSE.
// A pipe whose reading end is watched by a thread of its own.

#include "platform/linux/pipe.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <cerrno>
#include <cstdint>
#include <mutex>
#include <system_error>
#include <utility>

#include "platform/linux/thread.h"

namespace vantorel::gtk {

namespace {

constexpr std::size_t kLargestChunk = 64 * 1024;
// Room for a child that prints in bursts; what the system grants without privileges.
constexpr int kPipeCapacity = 1024 * 1024;

} // namespace

/// Shared by the pipe and its thread, so that either may go first.
class PipeReader : public FileHandle, public std::enable_shared_from_this<PipeReader> {
public:
    explicit PipeReader(FileDescriptor reading)
        : reading_(std::move(reading)),
          stop_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

    void setReadabilityHandler(std::function<void(FileHandle&)> handler) override {
        const std::lock_guard lock(mutex_);
        handler_ = std::make_shared<std::function<void(FileHandle&)>>(std::move(handler));
        if (!watching_ && reading_ && stop_) {
            startWatching();
        }
    }

    std::string availableData() override {
        // A text of the full size would be cleared first, each time.
        if (!buffer_) {
            buffer_ = std::make_unique_for_overwrite<char[]>(kLargestChunk);
        }
        ssize_t count = 0;
        do {
            count = ::read(reading_.get(), buffer_.get(), kLargestChunk);
        } while (count < 0 && errno == EINTR);
        if (count <= 0) {
            ended_ = ended_ || count == 0 || errno != EAGAIN;
            return {};
        }
        return std::string(buffer_.get(), static_cast<std::size_t>(count));
    }

    /// No call of the handler begins after the thread has seen this.
    void stop() {
        const std::uint64_t one = 1;
        // A full counter has been seen already.
        [[maybe_unused]] const ssize_t written = ::write(stop_.get(), &one, sizeof one);
    }

private:
    void startWatching() {
        try {
            startThread("pipe-reader", [self = shared_from_this()] { self->watch(); }).detach();
            watching_ = true;
        } catch (const std::system_error&) {
            // No thread is left: the output stays unread, as on a pipe without a handler.
        }
    }

    void watch() {
        while (!ended_) {
            pollfd watched[2] = {{reading_.get(), POLLIN, 0}, {stop_.get(), POLLIN, 0}};
            if (::poll(watched, 2, -1) < 0) {
                if (errno == EINTR) {
                    continue;
                }
                return;
            }
            if (watched[1].revents != 0) {
                return;
            }
            std::shared_ptr<std::function<void(FileHandle&)>> handler;
            {
                const std::lock_guard lock(mutex_);
                handler = handler_;
            }
            if (*handler) {
                (*handler)(*this);
            }
            // Nothing is left and nothing can come: a handler that does not read must not be called for ever.
            ended_ = ended_ || (watched[0].revents & POLLIN) == 0;
        }
    }

    const FileDescriptor reading_;
    const FileDescriptor stop_;
    std::mutex mutex_;
    std::shared_ptr<std::function<void(FileHandle&)>> handler_;
    bool watching_ = false;
    // These two are for the thread that calls the handler.
    std::unique_ptr<char[]> buffer_;
    bool ended_ = false;
};

ChildPipe::ChildPipe() {
    PipeEnds ends = openPipe();
    errorCode_ = ends.reading ? 0 : errno;
    if (ends.reading) {
        ::fcntl(ends.reading.get(), F_SETPIPE_SZ, kPipeCapacity);
        ::fcntl(ends.reading.get(), F_SETFL, O_NONBLOCK);
    }
    writing_ = std::move(ends.writing);
    reader_ = std::make_shared<PipeReader>(std::move(ends.reading));
}

ChildPipe::~ChildPipe() { reader_->stop(); }

FileHandle& ChildPipe::fileHandleForReading() { return *reader_; }

std::shared_ptr<Pipe> makePipe() { return std::make_shared<ChildPipe>(); }

} // namespace vantorel::gtk
