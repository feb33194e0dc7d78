// Vantorel. MIT licence, see LICENSE.
// The fake's event loop.
#include "tests/unit/fake/fake_loop.h"

#include <algorithm>

#include "tests/unit/fake/describe.h"

namespace vantorel::fake {

class FakeLoop::LoopTimer : public Timer {
public:
    LoopTimer(Record& record, std::string name, double interval, std::function<void()> block)
        : record_(record),
          name_(std::move(name)),
          interval_(interval),
          block_(std::move(block)) {}

    void invalidate() override {
        record_.addOnMain(name_ + ".invalidate()");
        valid_ = false;
    }
    bool valid() const { return valid_; }
    double interval() const { return interval_; }
    void fire() const { block_(); }

private:
    Record& record_;
    std::string name_;
    double interval_;
    std::function<void()> block_;
    bool valid_ = true;
};

void FakeLoop::LoopQueue::async(std::function<void()> block) {
    loop_.record_.add(isMain_ ? "mainQueue.async()" : "globalQueue.async()");
    loop_.enqueue(isMain_, std::move(block));
}

void FakeLoop::LoopQueue::asyncAfter(double seconds, std::function<void()> block) {
    loop_.record_.add((isMain_ ? "mainQueue.asyncAfter(" : "globalQueue.asyncAfter(") + shown(seconds) + ")");
    const std::lock_guard lock(loop_.mutex_);
    loop_.schedule(loop_.now_ + seconds, [&loop = loop_, isMain = isMain_, block = std::move(block)]() mutable {
        loop.enqueue(isMain, std::move(block));
    });
}

void FakeLoop::enqueue(bool isMain, std::function<void()> block) {
    const std::lock_guard lock(mutex_);
    (isMain ? mainBlocks_ : globalBlocks_).push_back(std::move(block));
}

void FakeLoop::schedule(double due, std::function<void()> step) {
    scheduled_.emplace(std::pair(due, nextNumber_++), std::move(step));
}

std::shared_ptr<Timer> FakeLoop::scheduleTimer(double seconds, std::function<void()> block, std::string name) {
    auto timer = std::make_shared<LoopTimer>(record_, std::move(name), seconds, std::move(block));
    timers_.push_back(timer);
    armTimer(timer, now_ + seconds);
    return timer;
}

void FakeLoop::armTimer(const std::shared_ptr<LoopTimer>& timer, double due) {
    const std::lock_guard lock(mutex_);
    schedule(due, [this, timer, due] {
        if (!timer->valid())
            return;
        armTimer(timer, due + timer->interval());
        timer->fire();
    });
}

void FakeLoop::after(double seconds, std::function<void()> step) {
    const std::lock_guard lock(mutex_);
    schedule(now_ + seconds, std::move(step));
}

bool FakeLoop::runOneMainBlock() {
    record_.checkMainThread("running the main queue");
    std::function<void()> block;
    {
        const std::lock_guard lock(mutex_);
        if (mainBlocks_.empty())
            return false;
        block = std::move(mainBlocks_.front());
        mainBlocks_.pop_front();
    }
    block();
    return true;
}

void FakeLoop::runMainQueue() {
    while (runOneMainBlock()) {
    }
}

std::thread FakeLoop::startGlobalBlock() {
    const std::lock_guard lock(mutex_);
    if (globalBlocks_.empty())
        return std::thread([] {});
    std::function<void()> block = std::move(globalBlocks_.front());
    globalBlocks_.pop_front();
    return std::thread(std::move(block));
}

void FakeLoop::runGlobalQueue() {
    while (pendingGlobalBlocks() > 0)
        startGlobalBlock().join();
}

void FakeLoop::advance(double seconds) {
    const double target = now_ + seconds;
    runMainQueue();
    while (true) {
        std::function<void()> step;
        {
            const std::lock_guard lock(mutex_);
            const auto next = scheduled_.begin();
            if (next == scheduled_.end() || next->first.first > target)
                break;
            now_ = std::max(now_, next->first.first);
            step = std::move(next->second);
            scheduled_.erase(next);
        }
        step();
        runMainQueue();
    }
    const std::lock_guard lock(mutex_);
    now_ = std::max(now_, target);
}

std::size_t FakeLoop::pendingMainBlocks() const {
    const std::lock_guard lock(mutex_);
    return mainBlocks_.size();
}

std::size_t FakeLoop::pendingGlobalBlocks() const {
    const std::lock_guard lock(mutex_);
    return globalBlocks_.size();
}

std::size_t FakeLoop::activeTimers() const {
    return static_cast<std::size_t>(std::count_if(timers_.begin(), timers_.end(), [](const auto& weak) {
        const auto timer = weak.lock();
        return timer && timer->valid();
    }));
}

void FakeLoop::clear() {
    const std::lock_guard lock(mutex_);
    mainBlocks_.clear();
    globalBlocks_.clear();
    scheduled_.clear();
}

} // namespace vantorel::fake
