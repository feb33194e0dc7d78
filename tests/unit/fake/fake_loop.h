// Vantorel. MIT licence, see LICENSE.
// The fake's event loop: main queue, global queue, timers, and a clock that moves only when a test moves it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/dispatch.h"
#include "platform/foundation.h"
#include "tests/unit/fake/record.h"

namespace vantorel::fake {

/// Nothing runs by itself: tests run the queues and move the clock, on the main thread.
class FakeLoop {
public:
    explicit FakeLoop(Record& record) : record_(record), mainQueue_(*this, true), globalQueue_(*this, false) {}
    FakeLoop(const FakeLoop&) = delete;
    FakeLoop& operator=(const FakeLoop&) = delete;

    Queue& mainQueue() { return mainQueue_; }
    Queue& globalQueue() { return globalQueue_; }
    /// Calls `block` every `seconds` of the fake's clock until the timer is invalidated.
    std::shared_ptr<Timer> scheduleTimer(double seconds, std::function<void()> block, std::string name);
    /// Calls `step` on the main thread `seconds` from now: for scripted surroundings. Leaves no record.
    void after(double seconds, std::function<void()> step);

    /// The fake's clock, in seconds since the loop was made.
    double now() const { return now_; }
    /// Runs what the main queue holds, and what is added meanwhile, until it is empty. May be called inside a block.
    void runMainQueue();
    /// Runs the oldest block of the main queue; false when there was none.
    bool runOneMainBlock();
    /// Runs each block of the global queue on a thread of its own, one after the other.
    void runGlobalQueue();
    /// Starts the oldest block of the global queue on a thread that the caller joins.
    std::thread startGlobalBlock();
    /// Runs the main queue, then moves the clock on and runs everything that falls due on the way, in order of time.
    void advance(double seconds);

    std::size_t pendingMainBlocks() const;
    std::size_t pendingGlobalBlocks() const;
    /// How many timers are scheduled and not invalidated.
    std::size_t activeTimers() const;
    /// Forgets everything that is queued or scheduled.
    void clear();

private:
    class LoopQueue : public Queue {
    public:
        LoopQueue(FakeLoop& loop, bool isMain) : loop_(loop), isMain_(isMain) {}
        void async(std::function<void()> block) override;
        void asyncAfter(double seconds, std::function<void()> block) override;

    private:
        FakeLoop& loop_;
        bool isMain_;
    };
    class LoopTimer;

    void enqueue(bool isMain, std::function<void()> block);
    void schedule(double due, std::function<void()> step);
    void armTimer(const std::shared_ptr<LoopTimer>& timer, double due);

    Record& record_;
    LoopQueue mainQueue_;
    LoopQueue globalQueue_;
    double now_ = 0;
    mutable std::mutex mutex_;
    std::deque<std::function<void()>> mainBlocks_;
    std::deque<std::function<void()>> globalBlocks_;
    /// By time, then by the order of scheduling.
    std::map<std::pair<double, std::uint64_t>, std::function<void()>> scheduled_;
    std::uint64_t nextNumber_ = 0;
    std::vector<std::weak_ptr<LoopTimer>> timers_;
};

} // namespace vantorel::fake
