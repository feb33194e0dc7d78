// Vantorel. MIT licence, see LICENSE.
// A pipe over NSPipe, read on a queue of its own.
//
// NSFileHandle's own readabilityHandler is called without end once the writers are gone. Here the descriptor is watched by
// a dispatch source, which ends at the end of output.
#import "platform/macos/pipe.h"

#include <dispatch/dispatch.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#import "platform/macos/bridge.h"

namespace vantorel::mac {

namespace {

constexpr std::size_t kChunkBytes = 64 * 1024;

class MacFileHandle : public FileHandle {
public:
    explicit MacFileHandle(NSFileHandle* handle) : handle_(handle) {}
    MacFileHandle(const MacFileHandle&) = delete;
    MacFileHandle& operator=(const MacFileHandle&) = delete;
    ~MacFileHandle() override {
        if (source_ == nil) return;
        dispatch_source_cancel(source_);
        // Handlers run on the queue one after the other: behind this none is left that uses the object.
        dispatch_sync(queue_, ^{
                      });
    }

    void setReadabilityHandler(std::function<void(FileHandle&)> handler) override {
        handler_ = std::move(handler);
        source_ = dispatch_source_create(DISPATCH_SOURCE_TYPE_READ,
                                         static_cast<uintptr_t>(handle_.fileDescriptor), 0, queue_);
        dispatch_source_set_event_handler(source_, ^{
            guarded(handler_, *this);
            if (ended_) dispatch_source_cancel(source_);
        });
        dispatch_resume(source_);
    }

    std::string availableData() override {
        std::string chunk(kChunkBytes, '\0');
        ssize_t count = 0;
        do {
            count = ::read(handle_.fileDescriptor, chunk.data(), chunk.size());
        } while (count < 0 && errno == EINTR);
        ended_ = count <= 0;
        chunk.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return chunk;
    }

private:
    NSFileHandle* handle_;
    dispatch_queue_t queue_ = dispatch_queue_create("app.vantorel.output", DISPATCH_QUEUE_SERIAL);
    dispatch_source_t source_ = nil;
    std::function<void(FileHandle&)> handler_;
    /// For the queue alone.
    bool ended_ = false;
};

class MacPipe : public Pipe {
public:
    NSPipe* nsPipe() const { return pipe_; }
    FileHandle& fileHandleForReading() override { return reading_; }

private:
    NSPipe* pipe_ = [NSPipe pipe];
    MacFileHandle reading_{pipe_.fileHandleForReading};
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
