// Vantorel. MIT licence, see LICENSE.
// Files: existence, permission bits, reading text.

#include "platform/linux/files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/linux/file_descriptor.h"
#include "platform/linux/system_error.h"
#include "platform/portable/text.h"

namespace vantorel::gtk {

namespace {

// The system's calls would take such a path for the part before its NUL.
bool isPath(const std::string& path) { return path.find('\0') == std::string::npos; }

std::optional<std::string> readAll(int descriptor, std::size_t expectedSize) {
    std::string content;
    constexpr std::size_t kChunk = 64 * 1024;
    content.resize(expectedSize + 1);
    std::size_t used = 0;
    while (true) {
        if (used == content.size()) {
            content.resize(content.size() + kChunk);
        }
        const ssize_t count = ::read(descriptor, content.data() + used, content.size() - used);
        if (count == 0) {
            content.resize(used);
            return content;
        }
        if (count > 0) {
            used += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            return std::nullopt;
        }
    }
}

class PosixFileManager : public FileManager {
public:
    bool fileExists(const std::string& path) const override {
        struct stat info {};
        return isPath(path) && ::stat(path.c_str(), &info) == 0;
    }

    std::optional<PlatformError> setPosixPermissions(const std::string& path, unsigned mode) override {
        errno = ENOENT;
        if (isPath(path) && ::chmod(path.c_str(), static_cast<mode_t>(mode)) == 0) {
            return std::nullopt;
        }
        return systemError("Could not change the permissions of", path, errno);
    }

    std::optional<std::string> readUtf8File(const std::string& path) const override {
        if (!isPath(path)) {
            return std::nullopt;
        }
        // A FIFO must not hold up the main thread, nor a terminal become the shell's own.
        const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
        struct stat info {};
        if (!file || ::fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode)) {
            return std::nullopt;
        }
        std::optional<std::string> content = readAll(file.get(), static_cast<std::size_t>(info.st_size));
        if (content && !isValidUtf8(*content)) {
            return std::nullopt;
        }
        return content;
    }
};

} // namespace

std::unique_ptr<FileManager> makeFileManager() { return std::make_unique<PosixFileManager>(); }

} // namespace vantorel::gtk
