// Vantorel. MIT licence, see LICENSE.
// The main queue and the global queue over Dispatch.
#import "platform/macos/queue.h"

#include <dispatch/dispatch.h>

#include <utility>

#import "platform/macos/bridge.h"

namespace vantorel::mac {

namespace {

class MacQueue : public Queue {
public:
    explicit MacQueue(dispatch_queue_t queue) : queue_(queue) {}

    void async(std::function<void()> block) override {
        dispatch_async(queue_, ^{
            guarded(block);
        });
    }
    void asyncAfter(double seconds, std::function<void()> block) override {
        const auto delay = static_cast<int64_t>(seconds * static_cast<double>(NSEC_PER_SEC));
        dispatch_after(dispatch_time(DISPATCH_TIME_NOW, delay), queue_, ^{
            guarded(block);
        });
    }

private:
    dispatch_queue_t queue_;
};

}  // namespace

std::unique_ptr<Queue> makeMainQueue() {
    return std::make_unique<MacQueue>(dispatch_get_main_queue());
}

std::unique_ptr<Queue> makeGlobalQueue() {
    return std::make_unique<MacQueue>(dispatch_get_global_queue(QOS_CLASS_DEFAULT, 0));
}

}  // namespace vantorel::mac
