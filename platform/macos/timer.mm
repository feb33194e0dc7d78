// Vantorel. MIT licence, see LICENSE.
// Repeating timers over NSTimer.
#import "platform/macos/timer.h"

#import "platform/macos/bridge.h"

namespace vantorel::mac {

namespace {

class MacTimer : public Timer {
public:
    explicit MacTimer(NSTimer* timer) : timer_(timer) {}
    void invalidate() override { [timer_ invalidate]; }

private:
    NSTimer* timer_;
};

}  // namespace

std::shared_ptr<Timer> scheduleRepeatingTimer(double seconds, std::function<void()> block) {
    NSTimer* const timer = [NSTimer timerWithTimeInterval:seconds
                                                  repeats:YES
                                                    block:^(NSTimer* __unused fired) {
                                                        guarded(block);
                                                    }];
    // The common modes: the probe goes on while a menu is open or an alert is up.
    [NSRunLoop.mainRunLoop addTimer:timer forMode:NSRunLoopCommonModes];
    return std::make_shared<MacTimer>(timer);
}

}  // namespace vantorel::mac
