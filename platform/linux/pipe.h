// Vantorel. MIT licence, see LICENSE.
// A pipe whose reading end is watched by a thread of its own.
#pragma once

#include <memory>
#include <string>

#include "platform/foundation.h"
#include "platform/linux/file_descriptor.h"

namespace vantorel::gtk {

class PipeReader;

/// The pipe that a child writes to. Released, it stops watching and closes what it holds; a handler that runs at that
/// moment may go on until it returns.
class ChildPipe : public Pipe {
public:
    ChildPipe();
    ~ChildPipe() override;
    ChildPipe(const ChildPipe&) = delete;
    ChildPipe& operator=(const ChildPipe&) = delete;

    FileHandle& fileHandleForReading() override;
    /// The end for the child, or -1 when the system had no descriptors left; errorCode tells then.
    int writingEnd() const { return writing_.get(); }
    /// To be called when the child has its copy: the end of output can be seen only after that.
    void closeWritingEnd() { writing_.close(); }
    int errorCode() const { return errorCode_; }

private:
    int errorCode_ = 0;
    FileDescriptor writing_;
    std::shared_ptr<PipeReader> reader_;
};

std::shared_ptr<Pipe> makePipe();

} // namespace vantorel::gtk
