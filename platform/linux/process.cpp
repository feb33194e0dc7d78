// Vantorel. MIT licence, see LICENSE.
// The child process: launch, termination request, exit.

#include "platform/linux/process.h"

#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <utility>

#include "platform/linux/bundle.h"
#include "platform/linux/launch.h"
#include "platform/linux/main_thread.h"
#include "platform/linux/pipe.h"
#include "platform/linux/process_info.h"
#include "platform/linux/queue.h"
#include "platform/linux/system_error.h"
#include "platform/linux/thread.h"
#include "platform/portable/guard_protocol.h"

namespace vantorel::gtk {

namespace {

constexpr std::chrono::seconds kLauncherPatience{1};

bool isFolder(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool exists(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0;
}

// The system has one number for a launch that failed; which of the files it means is looked up afterwards.
PlatformError launchError(const std::string& program, const std::string& folder, int code) {
    if (!folder.empty() && !isFolder(folder)) {
        return systemError("Could not start in the folder", folder, exists(folder) ? ENOTDIR : ENOENT);
    }
    if (code == EACCES && isFolder(program)) {
        return systemError("Could not run", program, EISDIR);
    }
    if (code == ENOENT && exists(program)) {
        return systemError("Could not run", program, code, "its interpreter is missing");
    }
    return systemError("Could not run", program, code);
}

// With SIGCHLD ignored, as a parent may have left it, the system throws exit codes away.
void keepExitCodes() {
    struct sigaction action {};
    if (::sigaction(SIGCHLD, nullptr, &action) == 0 &&
        (action.sa_handler == SIG_IGN || (action.sa_flags & SA_NOCLDWAIT) != 0)) {
        ::signal(SIGCHLD, SIG_DFL);
    }
}

int exitStatusOf(int waitStatus) { return WIFSIGNALED(waitStatus) ? WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus); }

class ChildProcess : public Process, public std::enable_shared_from_this<ChildProcess> {
public:
    explicit ChildProcess(std::string guardProgram) : guardProgram_(std::move(guardProgram)) {}

    void setExecutablePath(const std::string& path) override { executable_ = path; }
    std::optional<std::string> executablePath() const override { return executable_; }
    void setCurrentDirectoryPath(const std::string& path) override { folder_ = path; }
    std::optional<std::string> currentDirectoryPath() const override { return folder_; }
    void setEnvironment(const Environment& environment) override { environment_ = environment; }
    void setStandardOutput(std::shared_ptr<Pipe> pipe) override { output_ = std::move(pipe); }
    void setStandardError(std::shared_ptr<Pipe> pipe) override { error_ = std::move(pipe); }
    void setTerminationHandler(std::function<void(Process&)> handler) override {
        const std::lock_guard lock(mutex_);
        handler_ = std::move(handler);
    }

    std::optional<PlatformError> run() override {
        assertMainThread();
        if (processIdentifier() != 0) {
            return systemError("Could not run a second time", executable_.value_or(""), EALREADY);
        }
        if (!executable_ || executable_->empty()) {
            return systemError("Could not run a program without a path", "", ENOENT);
        }
        for (const std::shared_ptr<Pipe>& pipe : {output_, error_}) {
            if (const int code = pipe ? childPipe(*pipe).errorCode() : 0; code != 0) {
                return systemError("Could not make a pipe for", *executable_, code);
            }
        }
        std::optional<PlatformError> error = launch();
        // The end of output can be seen only when the child has the last copy.
        for (const std::shared_ptr<Pipe>& pipe : {output_, error_}) {
            if (pipe) {
                childPipe(*pipe).closeWritingEnd();
            }
        }
        return error;
    }

    bool isRunning() const override {
        const std::lock_guard lock(mutex_);
        return pid_ != 0 && !hasEnded_;
    }
    std::int32_t processIdentifier() const override {
        const std::lock_guard lock(mutex_);
        return pid_;
    }
    std::int32_t terminationStatus() const override {
        const std::lock_guard lock(mutex_);
        return status_;
    }

    void terminate() override {
        assertMainThread();
        // Under the lock: a child that was not reaped keeps its number, so the signal cannot reach another process.
        const std::lock_guard lock(mutex_);
        if (pid_ != 0 && !hasEnded_) {
            announceQuit(guardLine_);
            ::kill(pid_, SIGTERM);
        }
    }

    void waitUntilExit() override {
        std::unique_lock lock(mutex_);
        ended_.wait(lock, [this] { return pid_ == 0 || hasEnded_; });
    }

private:
    static ChildPipe& childPipe(Pipe& pipe) { return static_cast<ChildPipe&>(pipe); }

    std::optional<PlatformError> launch() {
        if (executable_->find('\0') != std::string::npos || folder_.value_or("").find('\0') != std::string::npos) {
            return systemError("Could not run", *executable_, ENOENT);
        }
        SpawnRequest request;
        request.program = *executable_;
        request.arguments = {*executable_};
        request.folder = folder_.value_or("");
        request.environment = environment_ ? *environment_ : currentEnvironment();
        request.standardOutput = output_ ? childPipe(*output_).writingEnd() : -1;
        request.standardError = error_ ? childPipe(*error_).writingEnd() : -1;

        keepExitCodes();
        Launched launched = launchGuarded(request, guardProgram_);
        if (launched.errorCode != 0) {
            return launchError(request.program, request.folder, launched.errorCode);
        }
        {
            const std::lock_guard lock(mutex_);
            pid_ = launched.pid;
            guardLine_ = std::move(launched.guardLine);
        }
        try {
            startThread("server-exit", [self = shared_from_this()]() mutable { waitForEnd(std::move(self)); }).detach();
        } catch (const std::system_error&) {
            giveUp();
            return systemError("Could not watch", *executable_, EAGAIN);
        }
        mainQueue().async([self = shared_from_this()] {
            const std::lock_guard lock(self->mutex_);
            self->launcherIsDone_ = true;
            self->launched_.notify_all();
        });
        return std::nullopt;
    }

    // A child whose end nobody would notice.
    void giveUp() {
        const std::lock_guard lock(mutex_);
        ::kill(pid_, SIGKILL);
        while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
        }
        pid_ = 0;
        guardLine_ = {};
    }

    static void waitForEnd(std::shared_ptr<ChildProcess> self) {
        const pid_t pid = self->processIdentifier();
        siginfo_t info{};
        while (::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
        }
        std::function<void(Process&)> handler = self->reap();
        if (handler) {
            self->letTheLauncherFinish();
            handler(*self);
        }
        // What the handler holds belongs to the main thread, and so does its release.
        mainQueue().async([self = std::move(self), handler = std::move(handler)] {});
    }

    // A child may end before run() has returned; its end is reported after what the caller says of its start. The main
    // loop's next turn tells that the caller is done, and where no loop runs the report comes all the same.
    void letTheLauncherFinish() {
        std::unique_lock lock(mutex_);
        launched_.wait_for(lock, kLauncherPatience, [this] { return launcherIsDone_; });
    }

    std::function<void(Process&)> reap() {
        const std::lock_guard lock(mutex_);
        int waitStatus = 0;
        while (::waitpid(pid_, &waitStatus, 0) < 0 && errno == EINTR) {
        }
        status_ = exitStatusOf(waitStatus);
        hasEnded_ = true;
        ended_.notify_all();
        return std::exchange(handler_, nullptr);
    }

    const std::string guardProgram_;
    std::optional<std::string> executable_;
    std::optional<std::string> folder_;
    std::optional<Environment> environment_;
    std::shared_ptr<Pipe> output_;
    std::shared_ptr<Pipe> error_;

    mutable std::mutex mutex_;
    std::condition_variable ended_;
    std::condition_variable launched_;
    std::function<void(Process&)> handler_;
    FileDescriptor guardLine_;
    pid_t pid_ = 0;
    int status_ = 0;
    bool hasEnded_ = false;
    bool launcherIsDone_ = false;
};

} // namespace

std::shared_ptr<Process> makeProcess() {
    const std::filesystem::path folder = std::filesystem::path(executablePath()).parent_path();
    return makeProcess((folder / kGuardProgramName).string());
}

std::shared_ptr<Process> makeProcess(const std::string& guardProgram) {
    return std::make_shared<ChildProcess>(guardProgram);
}

} // namespace vantorel::gtk
