// Vantorel. MIT licence, see LICENSE.
// A child process with a pipe and a termination handler, for the contract's cases about them.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "tests/contract/world.h"

namespace vantorel::contract {

/// What a child has written, and how its reader was called. Any thread.
struct Output {
    void read(FileHandle& handle) {
        if (busy.exchange(true))
            overlapping = true;
        const std::string chunk = handle.availableData();
        {
            const std::lock_guard lock(mutex);
            bytes += chunk;
            largest = std::max(largest, chunk.size());
        }
        if (chunk.empty())
            ++emptyCalls;
        busy = false;
    }
    std::string text() const {
        const std::lock_guard lock(mutex);
        return bytes;
    }

    mutable std::mutex mutex;
    std::string bytes;
    std::size_t largest = 0;
    std::atomic<bool> busy = false;
    std::atomic<bool> overlapping = false;
    std::atomic<bool> onMain = false;
    std::atomic<int> emptyCalls = 0;
};

class ProcessContract : public ContractTest {
protected:
    ~ProcessContract() override {
        // No child may outlive its case.
        if (process_ && process_->isRunning()) {
            process_->terminate();
            runUntil([this] { return !process_->isRunning(); }, 5);
        }
    }

    void prepare(const std::string& path) {
        process_ = platform().makeProcess();
        process_->setExecutablePath(path);
        process_->setCurrentDirectoryPath(world_->folder());
        process_->setEnvironment({{"PATH", "/usr/bin:/bin"}});
        output_ = attach();
        process_->setStandardOutput(pipe_);
        process_->setStandardError(pipe_);
        process_->setTerminationHandler([ends = ends_, onMain = endedOnMain_, status = endStatus_](Process& process) {
            *onMain = onMainThread();
            *status = process.terminationStatus();
            ++*ends;
        });
    }
    /// A fresh pipe with a reader.
    std::shared_ptr<Output> attach() {
        pipe_ = platform().makePipe();
        auto output = std::make_shared<Output>();
        pipe_->fileHandleForReading().setReadabilityHandler([output](FileHandle& handle) {
            output->onMain = output->onMain || onMainThread();
            output->read(handle);
        });
        return output;
    }
    void launch(const std::vector<ChildStep>& steps) {
        prepare(world_->makeProgram(steps));
        const auto error = process_->run();
        ASSERT_FALSE(error.has_value()) << error->localizedDescription;
    }
    bool ended() {
        return runUntil([this] { return *ends_ > 0; });
    }
    bool wrote(const std::string& text) {
        return runUntil([this, &text] { return output_->text() == text; });
    }
    void expectLaunchError() {
        const auto error = process_->run();
        ASSERT_TRUE(error.has_value());
        EXPECT_FALSE(error->localizedDescription.empty());
        EXPECT_FALSE(error->description.empty());
        EXPECT_FALSE(process_->isRunning());
        EXPECT_EQ(process_->processIdentifier(), 0);
        EXPECT_EQ(process_->terminationStatus(), 0);
        runFor(0.1);
        EXPECT_EQ(*ends_, 0);
        process_->terminate();
    }

    std::shared_ptr<Process> process_;
    std::shared_ptr<Pipe> pipe_;
    std::shared_ptr<Output> output_;
    std::shared_ptr<std::atomic<int>> ends_ = std::make_shared<std::atomic<int>>(0);
    std::shared_ptr<std::atomic<bool>> endedOnMain_ = std::make_shared<std::atomic<bool>>(false);
    std::shared_ptr<std::atomic<int>> endStatus_ = std::make_shared<std::atomic<int>>(-1);
};

} // namespace vantorel::contract
