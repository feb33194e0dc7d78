// Vantorel. MIT licence, see LICENSE.
// The main queue on the default main context, and the global queue on threads of its own.

#include "platform/linux/queue.h"

#include <glib.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <deque>
#include <limits>
#include <mutex>
#include <system_error>
#include <utility>

#include "platform/linux/object.h"
#include "platform/linux/thread.h"

namespace vantorel::gtk {

namespace {

using Block = std::function<void()>;

// A block on its way to the main thread. The context hands it over under locks of its own, which the thread sanitizer
// does not see; the flag tells it.
struct PostedBlock {
    explicit PostedBlock(Block posted) : block(std::move(posted)) { isComplete.store(true, std::memory_order_release); }
    Block block;
    std::atomic<bool> isComplete = false;
};

gboolean runBlock(gpointer data) {
    auto& posted = *static_cast<PostedBlock*>(data);
    if (posted.isComplete.load(std::memory_order_acquire)) {
        guarded(posted.block);
    }
    return G_SOURCE_REMOVE;
}

void deleteBlock(gpointer data) { delete static_cast<PostedBlock*>(data); }

// Every block is a source of its own: the context runs sources of one priority in the order in which they were
// attached, and a nested loop that one block runs takes the next ones.
void attach(GSource* source, Block block) {
    g_source_set_priority(source, G_PRIORITY_DEFAULT);
    g_source_set_callback(source, runBlock, new PostedBlock(std::move(block)), deleteBlock);
    g_source_attach(source, nullptr);
    g_source_unref(source);
}

guint wholeMilliseconds(double seconds) {
    const double milliseconds = std::ceil(seconds * 1000);
    if (!(milliseconds > 0)) {
        return 0;
    }
    constexpr guint kMost = std::numeric_limits<guint>::max();
    return milliseconds < static_cast<double>(kMost) ? static_cast<guint>(milliseconds) : kMost;
}

class MainQueue : public Queue {
public:
    void async(Block block) override { attach(g_idle_source_new(), std::move(block)); }
    void asyncAfter(double seconds, Block block) override {
        attach(g_timeout_source_new(wholeMilliseconds(seconds)), std::move(block));
    }
};

class GlobalQueue : public Queue {
public:
    void async(Block block) override {
        const std::lock_guard lock(mutex_);
        blocks_.push_back(std::move(block));
        if (idleThreads_ >= blocks_.size()) {
            wake_.notify_one();
        } else if (threads_ < kMostThreads) {
            startWorker();
        }
    }

    // The wait is the main loop's; the block itself runs on a thread as ever.
    void asyncAfter(double seconds, Block block) override {
        mainQueue().asyncAfter(seconds, [this, block = std::move(block)]() mutable { async(std::move(block)); });
    }

private:
    static constexpr std::size_t kMostThreads = 64;
    static constexpr std::chrono::seconds kIdleLife{10};

    void startWorker() {
        try {
            startThread("global-queue", [this] { work(); }).detach();
            ++threads_;
        } catch (const std::system_error&) {
            // The block waits for a thread that is there already, or for the next call.
        }
    }

    void work() {
        std::unique_lock lock(mutex_);
        while (true) {
            ++idleThreads_;
            const bool found = wake_.wait_for(lock, kIdleLife, [this] { return !blocks_.empty(); });
            --idleThreads_;
            if (!found) {
                --threads_;
                return;
            }
            {
                Block block = std::move(blocks_.front());
                blocks_.pop_front();
                lock.unlock();
                block();
            }
            lock.lock();
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Block> blocks_;
    std::size_t threads_ = 0;
    std::size_t idleThreads_ = 0;
};

} // namespace

// Neither is ever destroyed: threads that outlive main use them while the process ends.

Queue& mainQueue() {
    static auto* const queue = new MainQueue;
    return *queue;
}

Queue& globalQueue() {
    static auto* const queue = new GlobalQueue;
    return *queue;
}

} // namespace vantorel::gtk
