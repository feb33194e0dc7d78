// Vantorel. MIT licence, see LICENSE.
// The seam to Foundation: child process, pipe, files, bundle, environment, user defaults, HTTP requests, timers.
//
// Objects are made and used on the main thread unless a function says otherwise. Texts are UTF-8; paths and environment
// entries are the system's bytes, unchanged.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/geometry.h"
#include "platform/platform_error.h"

namespace vantorel {

/// Variables by name. The empty name and names or values with blanks are allowed.
using Environment = std::map<std::string, std::string, std::less<>>;

// Child process -------------------------------------------------------------------------------------------------------

/// The reading end of a pipe.
class FileHandle {
public:
    virtual ~FileHandle() = default;

    /// Calls `handler` on a thread of the platform's own whenever output has arrived, one call after the other. At the
    /// end of output the platform stops watching; the handler stays installed and may be called once more with no data.
    virtual void setReadabilityHandler(std::function<void(FileHandle&)> handler) = 0;
    /// All bytes that can be read now, 64 KiB at most; empty at the end of output. For use inside the handler, on its
    /// thread.
    virtual std::string availableData() = 0;
};

class Pipe {
public:
    virtual ~Pipe() = default;

    /// Belongs to the pipe.
    virtual FileHandle& fileHandleForReading() = 0;
};

/// A child process that is launched once.
class Process {
public:
    virtual ~Process() = default;

    virtual void setExecutablePath(const std::string& path) = 0;
    /// As set, or nothing.
    virtual std::optional<std::string> executablePath() const = 0;
    virtual void setCurrentDirectoryPath(const std::string& path) = 0;
    /// As set, or nothing.
    virtual std::optional<std::string> currentDirectoryPath() const = 0;
    /// The child's whole environment: it replaces the inherited one. An entry that the system cannot hold (an empty
    /// name, a name with "=", a NUL in it) is left out; the others are not touched by it.
    virtual void setEnvironment(const Environment& environment) = 0;
    virtual void setStandardOutput(std::shared_ptr<Pipe> pipe) = 0;
    /// The same pipe as for standard output joins the two streams in the order of writing.
    virtual void setStandardError(std::shared_ptr<Pipe> pipe) = 0;
    /// Called once, on a thread of the platform's own, when the launched child has ended. Kept until then.
    virtual void setTerminationHandler(std::function<void(Process&)> handler) = 0;
    /// Starts the child, in a process group of its own and with default signal dispositions. Returns the error when it
    /// could not be started: missing execute permission, not an executable for this machine, and the like.
    virtual std::optional<PlatformError> run() = 0;
    /// True from a successful run until the child has ended. Any thread.
    virtual bool isRunning() const = 0;
    /// The child's identifier; 0 before a successful run. Any thread.
    virtual std::int32_t processIdentifier() const = 0;
    /// The exit code, or the number of the signal that ended the child; 0 while it has not ended. Any thread.
    virtual std::int32_t terminationStatus() const = 0;
    /// Sends the child one polite termination request (SIGTERM); nothing when it has ended.
    virtual void terminate() = 0;
    /// Waits until the child has ended. Any thread but the main one.
    virtual void waitUntilExit() = 0;
};

// Files and surroundings ----------------------------------------------------------------------------------------------

class FileManager {
public:
    virtual ~FileManager() = default;

    /// True when anything is at `path`; symbolic links are followed.
    virtual bool fileExists(const std::string& path) const = 0;
    /// Sets the permission bits; returns the error when it failed.
    virtual std::optional<PlatformError> setPosixPermissions(const std::string& path, unsigned mode) = 0;
    /// The whole file as text, or nothing when it cannot be read or is not valid UTF-8.
    virtual std::optional<std::string> readUtf8File(const std::string& path) const = 0;
};

/// The application's bundle.
class Bundle {
public:
    virtual ~Bundle() = default;

    /// The absolute path of the bundle, without a "/" at its end.
    virtual std::string bundlePath() const = 0;
};

class ProcessInfo {
public:
    virtual ~ProcessInfo() = default;

    /// The application's own environment, as it is now.
    virtual Environment environment() const = 0;
};

/// The user's preferences. Values are kept between launches by the platform, without being asked to; a store that
/// cannot be read is empty, and one that cannot be written keeps its values for this run.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    virtual bool hasObject(const std::string& key) const = 0;
    /// The value as a Boolean by the store's own conversions; false when absent.
    virtual bool boolForKey(const std::string& key) const = 0;
    /// The value as text by the store's own conversions; nothing when absent.
    virtual std::optional<std::string> stringForKey(const std::string& key) const = 0;
    virtual void setBool(bool value, const std::string& key) = 0;
    virtual void setString(const std::string& value, const std::string& key) = 0;
};

// Requests ------------------------------------------------------------------------------------------------------------

/// Which cached answers a request may use.
enum class CachePolicy : unsigned {
    useProtocolCachePolicy = 0,
    reloadIgnoringLocalAndRemoteCacheData = 4,
};

/// A GET request. As made it has the platform's defaults.
struct UrlRequest {
    std::string address;
    CachePolicy cachePolicy = CachePolicy::useProtocolCachePolicy;
    double timeoutSeconds = 60;

    friend bool operator==(const UrlRequest&, const UrlRequest&) = default;
};

/// How a request ended: with an error, or with an answer.
struct UrlResult {
    std::optional<PlatformError> error;
    /// The status of an HTTP answer; nothing when there was no answer or it was not HTTP.
    std::optional<int> statusCode;
};

/// One request of a session.
class DataTask {
public:
    virtual ~DataTask() = default;

    /// Starts the request. It goes on when the handle is released.
    virtual void resume() = 0;
};

/// HTTP without a window. Redirects are not followed: they are answers. Loopback addresses never go through a proxy.
class UrlSession {
public:
    virtual ~UrlSession() = default;

    /// `completion` comes once, on a thread of the platform's own or on the main thread. The request's time-out bounds
    /// the whole task, its answer's body included.
    virtual std::shared_ptr<DataTask> dataTask(const UrlRequest& request,
                                               std::function<void(const UrlResult&)> completion) = 0;
};

// Timer ---------------------------------------------------------------------------------------------------------------

/// A scheduled timer of the main run loop. It goes on when the handle is released.
class Timer {
public:
    virtual ~Timer() = default;

    /// No firing comes after this.
    virtual void invalidate() = 0;
};

} // namespace vantorel
