// Vantorel. MIT licence, see LICENSE.
// Views: a container widget for each, children laid out by frames and autoresizing masks, y turned over in one place.
#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/appkit.h"
#include "platform/linux/css.h"
#include "platform/linux/object.h"

namespace vantorel::gtk {

class ViewCore;

/// How a backend object tells that it is one of the views of this platform.
class HasViewCore {
public:
    virtual ~HasViewCore() = default;
    virtual ViewCore& core() = 0;
    virtual const ViewCore& core() const = 0;
};

/// The core of `view`; null when it is no view of this platform.
ViewCore* coreOf(View& view);
const ViewCore* coreOf(const View& view);

/// What `frame` becomes when its parent grows from `before` to `after`, by the bits of `mask`. Height and bottom margin
/// share the change by their sizes when both are flexible. Sizes do not fall below 0.
Rect autoresized(Rect frame, unsigned mask, Size before, Size after);

/// The state behind every view. Its widget holds the widgets of the subviews, and below them one content widget (a
/// label, a web view) that fills it where the view is more than a rectangle.
class ViewCore : public Layer {
public:
    /// `content` may be null; a floating reference is taken over.
    explicit ViewCore(Rect frame, GtkWidget* content = nullptr);
    ViewCore(const ViewCore&) = delete;
    ViewCore& operator=(const ViewCore&) = delete;
    ~ViewCore() override;

    /// The widget to put into a parent widget. Belongs to the core.
    GtkWidget* widget() const { return widget_.get(); }
    GtkWidget* content() const { return content_.get(); }
    /// Puts `content` in the place of the present one.
    void setContent(GtkWidget* content);
    /// Leaves the content (there must be one) out of the picture, so that what lies behind the view shows. It keeps its
    /// place, size, focus and events.
    void hideContent();
    /// Has hidden content drawn again, but not before it has changed: from the next time on that it asks for a picture.
    void showContentOnceChanged();
    bool drawsContent() const { return drawing_ == Drawing::on; }

    Rect bounds() const { return {{0, 0}, frame_.size}; }
    Rect frame() const { return frame_; }
    void setAutoresizingMask(unsigned mask);
    void addSubview(std::shared_ptr<View> view, OrderingMode mode, const View* sibling);

    void setWantsLayer(bool wantsLayer);
    Layer* layer() { return wantsLayer_ ? this : nullptr; }
    void setBackgroundColor(const Color& color) override;

    /// Makes the widget ask its parent for the frame's size, and for more where the content needs more; otherwise it
    /// takes what it is given.
    void requireFrameSize();
    /// The widget got `size`: lays the content and the subviews out anew. For the widget alone.
    void resizedTo(Size size);
    /// A picture of the widget begins. For the widget alone.
    void pictureBegins();

private:
    enum class Drawing { on, onceChanged, off };
    struct Child {
        std::shared_ptr<View> view;
        ViewCore* core = nullptr;
    };

    void placeChild(ViewCore& child) const;
    /// How high the content may grow around the frame's middle without leaving the parent.
    double mostContentHeight() const;
    void removeChild(const ViewCore& child);
    std::vector<Child>::iterator findChild(const View* view);

    Object<GtkWidget> widget_;
    Object<GtkWidget> content_;
    ViewCore* parent_ = nullptr;
    std::vector<Child> children_;
    Rect frame_;
    /// The frame as it was set, and the parent's size at that time: each layout starts from them, so that a window made
    /// tiny and large again finds every view where it was.
    Rect setFrame_;
    Size setParentSize_;
    unsigned mask_ = 0;
    bool wantsLayer_ = false;
    Drawing drawing_ = Drawing::on;
    Style style_;
};

/// All functions of View over a ViewCore, for the backend's own classes: `class GtkWebView : public ViewOf<WebView>`.
template<typename Interface>
class ViewOf : public Interface, public HasViewCore {
public:
    explicit ViewOf(Rect frame, GtkWidget* content = nullptr) : core_(frame, content) {}

    Rect bounds() const override { return core_.bounds(); }
    Rect frame() const override { return core_.frame(); }
    void setAutoresizingMask(unsigned mask) override { core_.setAutoresizingMask(mask); }
    void setWantsLayer(bool wantsLayer) override { core_.setWantsLayer(wantsLayer); }
    Layer* layer() override { return core_.layer(); }
    void addSubview(std::shared_ptr<View> view) override {
        core_.addSubview(std::move(view), OrderingMode::above, nullptr);
    }
    void addSubview(std::shared_ptr<View> view, OrderingMode mode, const View* sibling) override {
        core_.addSubview(std::move(view), mode, sibling);
    }

    ViewCore& core() override { return core_; }
    const ViewCore& core() const override { return core_; }

private:
    ViewCore core_;
};

std::shared_ptr<View> makeView(Rect frame);

} // namespace vantorel::gtk
