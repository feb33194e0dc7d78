// Vantorel. MIT licence, see LICENSE.
// Views over NSView. The NSView hierarchy itself keeps subviews alive.
#import "platform/macos/view.h"

#import <QuartzCore/QuartzCore.h>

namespace vantorel::mac {

void MacLayer::setBackgroundColor(const Color& color) {
    view_.layer.backgroundColor = toNSColor(color).CGColor;
}

NSView* nsViewOf(const View* view) {
    const auto* const backed = dynamic_cast<const HasNSView*>(view);
    return backed == nullptr ? nil : backed->nsView();
}

std::shared_ptr<View> makeView(Rect frame) {
    return std::make_shared<MacView>([[NSView alloc] initWithFrame:toNSRect(frame)]);
}

}  // namespace vantorel::mac
