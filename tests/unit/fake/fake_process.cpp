// Vantorel. MIT licence, see LICENSE.
// Child processes and pipes of the fake.
#include "tests/unit/fake/fake_process.h"

#include <utility>

#include "tests/unit/fake/describe.h"

namespace vantorel::fake {

namespace {

constexpr std::size_t kLargestChunk = 64 * 1024;

} // namespace

void FakePipe::setReadabilityHandler(std::function<void(FileHandle&)> handler) {
    record_.addOnMain(name_ + ".setReadabilityHandler()");
    handler_ = std::move(handler);
}

std::string FakePipe::availableData() {
    std::string chunk = unread_.substr(0, kLargestChunk);
    unread_.erase(0, chunk.size());
    return chunk;
}

void FakePipe::deliver() {
    std::size_t before = unread_.size() + 1;
    while (handler_ && !unread_.empty() && unread_.size() < before) {
        before = unread_.size();
        handler_(*this);
    }
}

void FakePipe::write(const std::string& bytes) {
    unread_ += bytes;
    onBackgroundThread([this] { deliver(); });
}

void FakePipe::end() {
    onBackgroundThread([this] {
        if (handler_)
            handler_(*this);
    });
}

void FakeProcess::setExecutablePath(const std::string& path) {
    record_.addOnMain(name_ + ".setExecutablePath(" + quoted(path) + ")");
    executablePath_ = path;
}

void FakeProcess::setCurrentDirectoryPath(const std::string& path) {
    record_.addOnMain(name_ + ".setCurrentDirectoryPath(" + quoted(path) + ")");
    currentDirectoryPath_ = path;
}

void FakeProcess::setEnvironment(const Environment& environment) {
    record_.addOnMain(name_ + ".setEnvironment(" + std::to_string(environment.size()) + " variables)");
    environment_ = environment;
}

void FakeProcess::setStandardOutput(std::shared_ptr<Pipe> pipe) {
    standardOutput_ = std::dynamic_pointer_cast<FakePipe>(pipe);
    record_.addOnMain(name_ + ".setStandardOutput(" + (standardOutput_ ? standardOutput_->name() : "nil") + ")");
}

void FakeProcess::setStandardError(std::shared_ptr<Pipe> pipe) {
    standardError_ = std::dynamic_pointer_cast<FakePipe>(pipe);
    record_.addOnMain(name_ + ".setStandardError(" + (standardError_ ? standardError_->name() : "nil") + ")");
}

void FakeProcess::setTerminationHandler(std::function<void(Process&)> handler) {
    record_.addOnMain(name_ + ".setTerminationHandler()");
    terminationHandler_ = std::move(handler);
}

std::optional<PlatformError> FakeProcess::launchProblem() const {
    if (launchError)
        return launchError;
    if (!executablePath_ || !files_.exists(*executablePath_))
        return makeError("The server file doesn’t exist.");
    if (!files_.isExecutable(*executablePath_))
        return makeError("The server file can’t be executed.");
    if (!files_.isProgram(*executablePath_))
        return makeError("The server file is no program of this machine.");
    if (currentDirectoryPath_ && !files_.isDirectory(*currentDirectoryPath_)) {
        return makeError("The working directory doesn’t exist.");
    }
    return std::nullopt;
}

std::optional<PlatformError> FakeProcess::run() {
    record_.addOnMain(name_ + ".run()");
    if (auto problem = launchProblem())
        return problem;
    {
        const std::lock_guard lock(mutex_);
        if (state_ != State::notLaunched) {
            record_.addViolation(name_ + " launched twice");
            return makeError("The process was launched before.");
        }
        state_ = State::running;
    }
    if (onLaunch)
        onLaunch(*this);
    return std::nullopt;
}

bool FakeProcess::isRunning() const {
    const std::lock_guard lock(mutex_);
    return state_ == State::running;
}

std::int32_t FakeProcess::processIdentifier() const {
    const std::lock_guard lock(mutex_);
    return state_ == State::notLaunched ? 0 : futureIdentifier_;
}

std::int32_t FakeProcess::terminationStatus() const {
    const std::lock_guard lock(mutex_);
    return status_;
}

void FakeProcess::terminate() {
    record_.addOnMain(name_ + ".terminate()");
    if (!isRunning())
        return;
    ++terminateRequests_;
    if (onTerminate)
        onTerminate(*this);
}

void FakeProcess::waitUntilExit() {
    if (record_.onMainThread())
        record_.addViolation("on the main thread: " + name_ + ".waitUntilExit()");
    std::unique_lock lock(mutex_);
    ended_.wait(lock, [this] { return state_ != State::running; });
}

void FakeProcess::writeOutput(const std::string& bytes) {
    if (standardOutput_)
        standardOutput_->write(bytes);
}

void FakeProcess::writeError(const std::string& bytes) {
    if (standardError_)
        standardError_->write(bytes);
}

void FakeProcess::endUnnoticed(std::int32_t status) {
    const std::lock_guard lock(mutex_);
    state_ = State::ended;
    status_ = status;
    ended_.notify_all();
}

void FakeProcess::callTerminationHandler() {
    const auto handler = terminationHandler_;
    if (!handler)
        return;
    onBackgroundThread([this, &handler] { handler(*this); });
}

void FakeProcess::end(std::int32_t status) {
    endUnnoticed(status);
    callTerminationHandler();
    terminationHandler_ = nullptr;
}

void FakeProcess::forgetHandlers() {
    terminationHandler_ = nullptr;
    onLaunch = nullptr;
    onTerminate = nullptr;
}

Environment FakeProcess::childEnvironment() const {
    Environment held;
    if (!environment_)
        return held;
    for (const auto& [name, value] : *environment_) {
        const bool holdable = !name.empty() && name.find('=') == std::string::npos &&
                              name.find('\0') == std::string::npos && value.find('\0') == std::string::npos;
        if (holdable)
            held.emplace(name, value);
    }
    return held;
}

} // namespace vantorel::fake
