// Vantorel. MIT licence, see LICENSE.
// Child processes and pipes of the fake, played by the test.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/foundation.h"
#include "tests/unit/fake/fake_files.h"
#include "tests/unit/fake/record.h"

namespace vantorel::fake {

class FakePipe final : public Pipe, public FileHandle {
public:
    FakePipe(Record& record, std::string name) : record_(record), name_(std::move(name)) {}

    FileHandle& fileHandleForReading() override { return *this; }
    void setReadabilityHandler(std::function<void(FileHandle&)> handler) override;
    std::string availableData() override;

    /// Output arrives: the handler is called on a thread of its own until it has read everything, and this returns
    /// then. Without a handler the bytes wait.
    void write(const std::string& bytes);
    /// The end of output: the handler is called once more, with no data.
    void end();
    bool hasHandler() const { return handler_ != nullptr; }
    const std::string& name() const { return name_; }
    /// Lets the handler go, as the end of the platform does.
    void forgetHandler() { handler_ = nullptr; }

private:
    void deliver();

    Record& record_;
    std::string name_;
    std::function<void(FileHandle&)> handler_;
    std::string unread_;
};

class FakeProcess final : public Process {
public:
    FakeProcess(Record& record, std::string name, FakeFileManager& files, std::int32_t identifier)
        : record_(record),
          name_(std::move(name)),
          files_(files),
          futureIdentifier_(identifier) {}

    void setExecutablePath(const std::string& path) override;
    std::optional<std::string> executablePath() const override { return executablePath_; }
    void setCurrentDirectoryPath(const std::string& path) override;
    std::optional<std::string> currentDirectoryPath() const override { return currentDirectoryPath_; }
    void setEnvironment(const Environment& environment) override;
    void setStandardOutput(std::shared_ptr<Pipe> pipe) override;
    void setStandardError(std::shared_ptr<Pipe> pipe) override;
    void setTerminationHandler(std::function<void(Process&)> handler) override;
    std::optional<PlatformError> run() override;
    bool isRunning() const override;
    std::int32_t processIdentifier() const override;
    std::int32_t terminationStatus() const override;
    void terminate() override;
    void waitUntilExit() override;

    /// Every launch fails with this error, where set.
    std::optional<PlatformError> launchError;
    /// Called within a successful run, and at each termination request.
    std::function<void(FakeProcess&)> onLaunch;
    std::function<void(FakeProcess&)> onTerminate;

    /// What the child does.
    void writeOutput(const std::string& bytes);
    void writeError(const std::string& bytes);
    /// The child ends; its termination handler is called on a thread of its own before this returns.
    void end(std::int32_t status);
    /// The child ends, and the platform has not noticed enough to call the handler yet.
    void endUnnoticed(std::int32_t status);
    /// Calls the termination handler, on a thread of its own, as often as it is asked to.
    void callTerminationHandler();
    /// Lets the handlers go, as the end of the platform does.
    void forgetHandlers();

    const std::string& name() const { return name_; }
    const std::optional<Environment>& environment() const { return environment_; }
    /// What reaches the child of it: entries that the system cannot hold are left out.
    Environment childEnvironment() const;
    FakePipe* standardOutput() const { return standardOutput_.get(); }
    FakePipe* standardError() const { return standardError_.get(); }
    int terminateRequests() const { return terminateRequests_; }
    bool hasTerminationHandler() const { return terminationHandler_ != nullptr; }

private:
    std::optional<PlatformError> launchProblem() const;

    Record& record_;
    std::string name_;
    FakeFileManager& files_;
    std::int32_t futureIdentifier_;
    std::optional<std::string> executablePath_;
    std::optional<std::string> currentDirectoryPath_;
    std::optional<Environment> environment_;
    std::shared_ptr<FakePipe> standardOutput_;
    std::shared_ptr<FakePipe> standardError_;
    std::function<void(Process&)> terminationHandler_;
    int terminateRequests_ = 0;

    enum class State {
        notLaunched,
        running,
        ended,
    };
    mutable std::mutex mutex_;
    std::condition_variable ended_;
    State state_ = State::notLaunched;
    std::int32_t status_ = 0;
};

} // namespace vantorel::fake
