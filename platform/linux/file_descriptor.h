// Vantorel. MIT licence, see LICENSE.
// Ownership of one file descriptor.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace vantorel::gtk {

/// Closes its descriptor when destroyed; -1 is none.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            close();
            descriptor_ = std::exchange(other.descriptor_, -1);
        }
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { close(); }

    int get() const { return descriptor_; }
    explicit operator bool() const { return descriptor_ >= 0; }
    void close() {
        if (descriptor_ >= 0) {
            ::close(std::exchange(descriptor_, -1));
        }
    }

private:
    int descriptor_ = -1;
};

/// The two ends of a pipe.
struct PipeEnds {
    FileDescriptor reading;
    FileDescriptor writing;
};

/// A new pipe, close-on-exec at both ends; no ends, and errno set, when the system has no descriptors left.
inline PipeEnds openPipe() {
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return {};
    }
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

} // namespace vantorel::gtk
