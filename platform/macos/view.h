// Vantorel. MIT licence, see LICENSE.
// Views over NSView.
#pragma once

#import <AppKit/AppKit.h>

#include <memory>
#include <utility>

#include "platform/appkit.h"
#include "platform/macos/bridge.h"

namespace vantorel::mac {

/// The background of a layer-backed view.
class MacLayer : public Layer {
public:
    explicit MacLayer(NSView* view) : view_(view) {}
    void setBackgroundColor(const Color& color) override;

private:
    __weak NSView* view_;
};

/// How the backend gets from a view of the seam to its NSView.
class HasNSView {
public:
    virtual ~HasNSView() = default;
    virtual NSView* nsView() const = 0;
};

/// The NSView behind `view`; nil when it is no view of this platform.
NSView* nsViewOf(const View* view);

/// Every function of View over an NSView, for View itself and for what builds on it.
template <typename Interface>
class ViewOf : public Interface, public HasNSView {
public:
    explicit ViewOf(NSView* view) : view_(view), layer_(view) {}

    NSView* nsView() const override { return view_; }
    Rect bounds() const override { return toRect(view_.bounds); }
    Rect frame() const override { return toRect(view_.frame); }
    void setAutoresizingMask(unsigned mask) override { view_.autoresizingMask = mask; }
    void setWantsLayer(bool wantsLayer) override { view_.wantsLayer = wantsLayer; }
    Layer* layer() override { return view_.layer == nil ? nullptr : &layer_; }
    void addSubview(std::shared_ptr<View> view) override { [view_ addSubview:nsViewOf(view.get())]; }
    void addSubview(std::shared_ptr<View> view, OrderingMode mode, const View* sibling) override {
        [view_ addSubview:nsViewOf(view.get())
               positioned:mode == OrderingMode::below ? NSWindowBelow : NSWindowAbove
               relativeTo:nsViewOf(sibling)];
    }

private:
    NSView* view_;
    MacLayer layer_;
};

using MacView = ViewOf<View>;

std::shared_ptr<View> makeView(Rect frame);

}  // namespace vantorel::mac
