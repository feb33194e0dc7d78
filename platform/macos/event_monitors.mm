// Vantorel. MIT licence, see LICENSE.
// Key presses of the system and of the application over NSEvent's monitors.
#import "platform/macos/event_monitors.h"

#include <utility>
#include <vector>

#import "platform/macos/bridge.h"

namespace vantorel::mac {

namespace {

class MacEventMonitor : public EventMonitor {};

KeyEvent toKeyEvent(NSEvent* event) {
    KeyEvent key;
    key.keyCode = event.keyCode;
    key.modifierFlags = event.modifierFlags;
    if (NSString* const characters = event.characters) key.characters = toText(characters);
    return key;
}

class MacEventMonitors : public EventMonitors {
public:
    std::shared_ptr<EventMonitor> addGlobalMonitorForKeyDown(std::function<void(const KeyEvent&)> handler) override {
        return keep([NSEvent addGlobalMonitorForEventsMatchingMask:NSEventMaskKeyDown
                                                           handler:^(NSEvent* event) {
                                                               guarded(handler, toKeyEvent(event));
                                                           }]);
    }

    std::shared_ptr<EventMonitor>
    addLocalMonitorForKeyDown(std::function<const KeyEvent*(const KeyEvent&)> handler) override {
        return keep([NSEvent addLocalMonitorForEventsMatchingMask:NSEventMaskKeyDown
                                                          handler:^NSEvent*(NSEvent* event) {
                                                              const KeyEvent key = toKeyEvent(event);
                                                              return guarded(handler, key) == nullptr ? nil : event;
                                                          }]);
    }

private:
    std::shared_ptr<EventMonitor> keep(id token) {
        if (token == nil) return nullptr;
        tokens_.push_back(token);
        return std::make_shared<MacEventMonitor>();
    }

    /// Monitors stay for the life of the process: nobody takes them away, and taking one away twice would crash.
    std::vector<id> tokens_;
};

}  // namespace

std::unique_ptr<EventMonitors> makeEventMonitors() {
    return std::make_unique<MacEventMonitors>();
}

}  // namespace vantorel::mac
