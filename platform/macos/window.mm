// Vantorel. MIT licence, see LICENSE.
// The top level window over NSWindow.
#import "platform/macos/window.h"

#include <algorithm>

#import "platform/macos/view.h"

namespace vantorel::mac {

namespace {

/// What the window server can place and show; beyond it AppKit raises an exception.
constexpr double kLargestCoordinate = 16000;
constexpr double kLargestSize = 10000;

NSRect withinReach(const Rect& rect) {
    return NSMakeRect(std::clamp(rect.origin.x, -kLargestCoordinate, kLargestCoordinate),
                      std::clamp(rect.origin.y, -kLargestCoordinate, kLargestCoordinate),
                      std::clamp(rect.size.width, 0.0, kLargestSize), std::clamp(rect.size.height, 0.0, kLargestSize));
}

class MacWindow : public Window {
public:
    explicit MacWindow(NSWindow* window) : window_(window), contentView_(std::make_shared<MacView>(window.contentView)) {
        // A window made in code gives up one reference when it is closed. That setting stays as it is, so the window
        // gets a reference to give up: its frame is still asked for after the close.
        CFBridgingRetain(window);
    }

    void setTitle(const std::string& title) override { window_.title = toNSString(title); }
    void setMinSize(Size size) override { [window_ setMinSize:NSMakeSize(size.width, size.height)]; }
    void setLevel(WindowLevel level) override { [window_ setLevel:static_cast<NSWindowLevel>(level)]; }
    void setSharingType(WindowSharingType type) override {
        [window_ setSharingType:static_cast<NSWindowSharingType>(type)];
    }
    std::shared_ptr<View> contentView() override { return window_.contentView == nil ? nullptr : contentView_; }
    void makeKeyAndOrderFront() override { [window_ makeKeyAndOrderFront:nil]; }
    void center() override { [window_ center]; }
    Rect frame() const override { return toRect(window_.frame); }

private:
    NSWindow* window_;
    std::shared_ptr<View> contentView_;
};

}  // namespace

std::shared_ptr<Window> makeWindow(Rect contentRect, unsigned style) {
    NSWindow* const window = [[NSWindow alloc] initWithContentRect:withinReach(contentRect)
                                                         styleMask:static_cast<NSWindowStyleMask>(style)
                                                           backing:NSBackingStoreBuffered
                                                             defer:NO];
    return std::make_shared<MacWindow>(window);
}

}  // namespace vantorel::mac
