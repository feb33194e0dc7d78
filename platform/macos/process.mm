// Vantorel. MIT licence, see LICENSE.
// A child process over NSTask, with a guard beside it that ends it when the application is gone.
#import "platform/macos/process.h"

#include <dispatch/dispatch.h>

#include <atomic>

#import "platform/macos/bridge.h"
#import "platform/macos/guard_link.h"
#import "platform/macos/pipe.h"

namespace vantorel::mac {

namespace {

/// What the system can hold: a name with text in it and no "=", and no NUL anywhere.
bool isHoldable(const std::string& name, const std::string& value) {
    return !name.empty() && name.find('=') == std::string::npos && name.find('\0') == std::string::npos &&
           value.find('\0') == std::string::npos;
}

class MacProcess : public Process, public std::enable_shared_from_this<MacProcess> {
public:
    void setExecutablePath(const std::string& path) override {
        task_.executableURL = [NSURL fileURLWithPath:toPath(path)];
    }
    std::optional<std::string> executablePath() const override { return pathOf(task_.executableURL); }
    void setCurrentDirectoryPath(const std::string& path) override {
        task_.currentDirectoryURL = [NSURL fileURLWithPath:toPath(path)];
    }
    std::optional<std::string> currentDirectoryPath() const override { return pathOf(task_.currentDirectoryURL); }

    void setEnvironment(const Environment& environment) override {
        NSMutableDictionary<NSString*, NSString*>* const entries = [NSMutableDictionary dictionary];
        for (const auto& [name, value] : environment) {
            if (isHoldable(name, value)) entries[toNSString(name)] = toNSString(value);
        }
        task_.environment = entries;
    }
    void setStandardOutput(std::shared_ptr<Pipe> pipe) override {
        output_ = std::move(pipe);
        task_.standardOutput = nsPipeOf(output_);
    }
    void setStandardError(std::shared_ptr<Pipe> pipe) override {
        errors_ = std::move(pipe);
        task_.standardError = nsPipeOf(errors_);
    }
    void setTerminationHandler(std::function<void(Process&)> handler) override {
        handler_ = std::move(handler);
    }

    std::optional<PlatformError> run() override {
        for (const std::shared_ptr<Pipe>& pipe : {output_, errors_}) {
            if (pipe && nsPipeOf(pipe) == nil) return PlatformError{kNoPipe, kNoPipe};
        }
        task_.standardInput = NSFileHandle.fileHandleWithNullDevice;
        // The child's end is reported in any case, so it keeps this object alive until then.
        const std::shared_ptr<MacProcess> self = shared_from_this();
        task_.terminationHandler = ^(NSTask* __unused task) {
            guarded([&] { self->tellEnd(); });
        };
        const std::optional<PlatformError> error = launch();
        // The child has its own copies; ours would keep the end of output from ever coming.
        for (const std::shared_ptr<Pipe>& pipe : {output_, errors_}) {
            [nsPipeOf(pipe).fileHandleForWriting closeAndReturnError:nil];
        }
        if (error) {
            task_.terminationHandler = nil;
        } else {
            guard_.start(task_.processIdentifier);
            const dispatch_semaphore_t launcherIsDone = launcherIsDone_;
            dispatch_async(dispatch_get_main_queue(), ^{
                dispatch_semaphore_signal(launcherIsDone);
            });
        }
        return error;
    }

    bool isRunning() const override { return launched_ && task_.running; }
    std::int32_t processIdentifier() const override { return launched_ ? task_.processIdentifier : 0; }
    // Asking a running task for its status raises an exception.
    std::int32_t terminationStatus() const override { return launched_ && !task_.running ? task_.terminationStatus : 0; }
    void terminate() override {
        if (!isRunning()) return;
        guard_.tellNormalQuit();
        [task_ terminate];
    }
    void waitUntilExit() override {
        if (launched_) [task_ waitUntilExit];
    }

private:
    static constexpr const char* kNoPipe = "The system has no pipe left";
    static constexpr int64_t kLauncherPatience = NSEC_PER_SEC;

    std::optional<PlatformError> launch() {
        NSError* error = nil;
        @try {
            if (![task_ launchAndReturnError:&error]) return toFailure(error);
        } @catch (NSException* exception) {
            // Raised in place of an error by some systems for a missing executable.
            return PlatformError{toText(exception.reason), toText(exception.description)};
        }
        launched_ = true;
        return std::nullopt;
    }

    /// On a thread of the task's own, perhaps before the launch has returned.
    void tellEnd() {
        launched_ = true;
        // The end is reported after what the caller of run() says of the start. The main queue's next block tells that
        // the caller is done, and where no loop runs the report comes all the same.
        dispatch_semaphore_wait(launcherIsDone_, dispatch_time(DISPATCH_TIME_NOW, kLauncherPatience));
        if (handler_) handler_(*this);
        // What the handler holds belongs to the main thread, and so does its release. The task's block holds this object.
        const std::shared_ptr<MacProcess> self = shared_from_this();
        dispatch_async(dispatch_get_main_queue(), ^{
            self->handler_ = nullptr;
            self->task_.terminationHandler = nil;
        });
    }

    static std::optional<std::string> pathOf(NSURL* url) {
        if (url == nil) return std::nullopt;
        return toText(url.path);
    }

    NSTask* task_ = [[NSTask alloc] init];
    std::shared_ptr<Pipe> output_;
    std::shared_ptr<Pipe> errors_;
    std::function<void(Process&)> handler_;
    std::atomic<bool> launched_ = false;
    dispatch_semaphore_t launcherIsDone_ = dispatch_semaphore_create(0);
    GuardLink guard_;
};

}  // namespace

std::shared_ptr<Process> makeProcess() {
    return std::make_shared<MacProcess>();
}

}  // namespace vantorel::mac
