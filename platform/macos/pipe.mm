// Vantorel. MIT licence, see LICENSE.
// A pipe over NSPipe, read on a queue of its own.
//
// NSFileHandle's own readabilityHandler is called without end once the writers are gone. Here the descriptor is watched by
// a dispatch source, which ends at the end of output.
#import "platform/macos/pipe.h"

#include <dispatch/dispatch.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#import "platform/macos/bridge.h"

namespace vantorel::mac {

namespace {

constexpr std::size_t kChunkBytes = 64 * 1024;

/// Shared by its pipe and by what is watched, so that either may go first.
class MacFileHandle : public FileHandle, public std::enable_shared_from_this<MacFileHandle> {
public:
    explicit MacFileHandle(NSFileHandle* handle) : handle_(handle) {
        // A handler that asks a second time must not wait for output that is still to come.
        if (handle_ != nil) ::fcntl(handle_.fileDescriptor, F_SETFL, O_NONBLOCK);
    }

    void setReadabilityHandler(std::function<void(FileHandle&)> handler) override {
        stop();
        if (handle_ == nil) return;
        source_ = dispatch_source_create(DISPATCH_SOURCE_TYPE_READ, static_cast<uintptr_t>(handle_.fileDescriptor), 0,
                                         queue_);
        const dispatch_source_t source = source_;
        const std::shared_ptr<MacFileHandle> self = shared_from_this();
        // The source lets go of the block, and with it of this object and the handler, when it is cancelled.
        dispatch_source_set_event_handler(source, ^{
            guarded(handler, *self);
            // Nothing is left and nothing can come: a handler that does not read must not be called for ever.
            const bool isAtEnd = self->ended_ || dispatch_source_get_data(source) == 0;
            if (isAtEnd) dispatch_source_cancel(source);
        });
        dispatch_resume(source);
    }

    std::string availableData() override {
        std::string chunk(kChunkBytes, '\0');
        ssize_t count = 0;
        do {
            count = ::read(handle_.fileDescriptor, chunk.data(), chunk.size());
        } while (count < 0 && errno == EINTR);
        if (count == 0 || (count < 0 && errno != EAGAIN)) ended_ = true;
        chunk.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return chunk;
    }

    /// No call of the handler begins after one that is under way.
    void stop() {
        if (source_ != nil) dispatch_source_cancel(source_);
        source_ = nil;
    }

private:
    NSFileHandle* handle_;
    dispatch_queue_t queue_ = dispatch_queue_create("app.vantorel.output", DISPATCH_QUEUE_SERIAL);
    dispatch_source_t source_ = nil;
    /// For the queue alone.
    bool ended_ = false;
};

class MacPipe : public Pipe {
public:
    MacPipe() = default;
    MacPipe(const MacPipe&) = delete;
    MacPipe& operator=(const MacPipe&) = delete;
    ~MacPipe() override { reading_->stop(); }

    NSPipe* nsPipe() const { return pipe_; }
    FileHandle& fileHandleForReading() override { return *reading_; }

private:
    NSPipe* pipe_ = [NSPipe pipe];
    std::shared_ptr<MacFileHandle> reading_ = std::make_shared<MacFileHandle>(pipe_.fileHandleForReading);
};

}  // namespace

std::shared_ptr<Pipe> makePipe() {
    return std::make_shared<MacPipe>();
}

NSPipe* nsPipeOf(const std::shared_ptr<Pipe>& pipe) {
    const auto* const native = dynamic_cast<const MacPipe*>(pipe.get());
    return native == nullptr ? nil : native->nsPipe();
}

}  // namespace vantorel::mac
