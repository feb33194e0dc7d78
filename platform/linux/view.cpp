// Vantorel. MIT licence, see LICENSE.
// Views: the container widget, autoresizing, stacking.
#include "platform/linux/view.h"

#include <algorithm>
#include <cmath>

#include "platform/linux/main_thread.h"

namespace vantorel::gtk {
namespace {

/// The widget behind every view. It owns no geometry: it tells its core the size it got and lets the core place the
/// children. Its core may be gone before it, when GTK still holds a reference.
struct ViewWidget {
    GtkWidget parent;
    ViewCore* core;
    gboolean demanding;
};
struct ViewWidgetClass {
    GtkWidgetClass parent;
};

GType viewWidgetType();

ViewWidget* asViewWidget(gpointer instance) { return static_cast<ViewWidget*>(instance); }

GtkWidgetClass* parentClass() { return static_cast<GtkWidgetClass*>(g_type_class_peek(GTK_TYPE_WIDGET)); }

GtkSizeRequestMode requestMode(GtkWidget*) { return GTK_SIZE_REQUEST_CONSTANT_SIZE; }

void measure(GtkWidget* widget, GtkOrientation orientation, int, int* minimum, int* natural, int* minimumBaseline,
             int* naturalBaseline) {
    const ViewWidget* self = asViewWidget(widget);
    const Size size = self->core == nullptr ? Size{} : self->core->frame().size;
    const double extent = orientation == GTK_ORIENTATION_HORIZONTAL ? size.width : size.height;
    *natural = static_cast<int>(std::lround(std::clamp(extent, 0.0, 32767.0)));
    *minimum = 0;
    if (self->demanding != FALSE) {
        int needed = 0;
        if (GtkWidget* content = self->core == nullptr ? nullptr : self->core->content())
            gtk_widget_measure(content, orientation, -1, &needed, nullptr, nullptr, nullptr);
        *minimum = *natural = std::max(*natural, needed);
    }
    *minimumBaseline = -1;
    *naturalBaseline = -1;
}

void sizeAllocate(GtkWidget* widget, int width, int height, int) {
    if (ViewCore* core = asViewWidget(widget)->core) {
        guarded([=] { core->resizedTo({static_cast<double>(width), static_cast<double>(height)}); });
    }
}

void snapshot(GtkWidget* widget, GtkSnapshot* picture) {
    if (ViewCore* core = asViewWidget(widget)->core) {
        core->pictureBegins();
    }
    parentClass()->snapshot(widget, picture);
}

void dispose(GObject* object) {
    while (GtkWidget* child = gtk_widget_get_first_child(GTK_WIDGET(object))) {
        gtk_widget_unparent(child);
    }
    G_OBJECT_CLASS(parentClass())->dispose(object);
}

void initClass(gpointer classPointer, gpointer) {
    auto* widgetClass = static_cast<GtkWidgetClass*>(classPointer);
    widgetClass->get_request_mode = requestMode;
    widgetClass->measure = measure;
    widgetClass->size_allocate = sizeAllocate;
    widgetClass->snapshot = snapshot;
    G_OBJECT_CLASS(classPointer)->dispose = dispose;
    gtk_widget_class_set_css_name(widgetClass, "vantorel-view");
    gtk_widget_class_set_accessible_role(widgetClass, GTK_ACCESSIBLE_ROLE_GROUP);
}

void initInstance(GTypeInstance* instance, gpointer) {
    gtk_widget_set_overflow(reinterpret_cast<GtkWidget*>(instance), GTK_OVERFLOW_HIDDEN);
}

GType viewWidgetType() {
    static const GType type = g_type_register_static_simple(GTK_TYPE_WIDGET, "VantorelView", sizeof(ViewWidgetClass),
                                                            initClass, sizeof(ViewWidget), initInstance, GTypeFlags{});
    return type;
}

int whole(double value) { return static_cast<int>(std::lround(std::clamp(value, -32768.0, 32767.0))); }

int leastSize(GtkWidget* widget, GtkOrientation orientation, int forSize) {
    int least = 0;
    gtk_widget_measure(widget, orientation, forSize, &least, nullptr, nullptr, nullptr);
    return least;
}

/// Gives `child` the rectangle with its top left corner at (left, top). A widget that needs more height gets more,
/// around the same middle, up to `mostHeight`; one that needs still more is drawn smaller. So large text is neither cut
/// nor squeezed.
void allocate(GtkWidget* child, double left, double top, Size size, double mostHeight) {
    const int x = whole(left);
    int y = whole(top);
    int width = std::max(0, whole(left + size.width) - x);
    int height = std::max(0, whole(top + size.height) - y);
    const int room = std::max(height, whole(mostHeight));
    width = std::max(width, leastSize(child, GTK_ORIENTATION_HORIZONTAL, -1));
    const int needed = leastSize(child, GTK_ORIENTATION_VERTICAL, width);
    if (needed > room && room > 0) {
        const float scale = static_cast<float>(room) / static_cast<float>(needed);
        const graphene_point_t corner = {static_cast<float>(x),
                                         static_cast<float>(y) - static_cast<float>(room - height) / 2};
        gtk_widget_allocate(child, whole(width / static_cast<double>(scale)), needed, -1,
                            gsk_transform_scale(gsk_transform_translate(nullptr, &corner), scale, scale));
        return;
    }
    if (needed > height) {
        y -= (needed - height) / 2;
        height = needed;
    }
    const GtkAllocation allocation = {x, y, width, height};
    gtk_widget_size_allocate(child, &allocation, -1);
}

class PlainView : public ViewOf<View> {
public:
    using ViewOf::ViewOf;
};

} // namespace

ViewCore* coreOf(View& view) {
    auto* owner = dynamic_cast<HasViewCore*>(&view);
    return owner == nullptr ? nullptr : &owner->core();
}

const ViewCore* coreOf(const View& view) {
    const auto* owner = dynamic_cast<const HasViewCore*>(&view);
    return owner == nullptr ? nullptr : &owner->core();
}

Rect autoresized(Rect frame, unsigned mask, Size before, Size after) {
    const auto has = [mask](Autoresizing bit) { return (mask & static_cast<unsigned>(bit)) != 0; };
    if (has(Autoresizing::widthSizable))
        frame.size.width += after.width - before.width;

    const double change = after.height - before.height;
    const bool stretches = has(Autoresizing::heightSizable);
    const bool floats = has(Autoresizing::minYMargin);
    if (stretches && floats) {
        const double whole = frame.size.height + frame.origin.y;
        const double share = whole > 0 ? frame.size.height / whole : 0.5;
        frame.size.height += change * share;
        frame.origin.y += change * (1 - share);
    } else if (stretches) {
        frame.size.height += change;
    } else if (floats) {
        frame.origin.y += change;
    }
    frame.size.width = std::max(0.0, frame.size.width);
    frame.size.height = std::max(0.0, frame.size.height);
    return frame;
}

ViewCore::ViewCore(Rect frame, GtkWidget* content)
    : widget_(Object<GtkWidget>::share(static_cast<GtkWidget*>(g_object_new(viewWidgetType(), nullptr)))),
      frame_(frame),
      setFrame_(frame) {
    assertMainThread();
    asViewWidget(widget_.get())->core = this;
    if (content != nullptr)
        setContent(content);
}

ViewCore::~ViewCore() {
    asViewWidget(widget_.get())->core = nullptr;
    for (const Child& child : children_) {
        child.core->parent_ = nullptr;
        gtk_widget_unparent(child.core->widget());
    }
    if (content_ && gtk_widget_get_parent(content_.get()) == widget_.get())
        gtk_widget_unparent(content_.get());
}

void ViewCore::setContent(GtkWidget* content) {
    assertMainThread();
    if (content_)
        gtk_widget_unparent(content_.get());
    content_ = Object<GtkWidget>::share(content);
    gtk_widget_insert_after(content, widget_.get(), nullptr);
}

void ViewCore::hideContent() {
    assertMainThread();
    drawing_ = Drawing::off;
    // Without opacity a widget still takes part, and what changes in it still asks for a picture, but is not drawn.
    gtk_widget_set_opacity(content_.get(), 0);
}

void ViewCore::showContentOnceChanged() {
    assertMainThread();
    if (drawing_ == Drawing::off)
        drawing_ = Drawing::onceChanged;
}

void ViewCore::pictureBegins() {
    if (drawing_ == Drawing::onceChanged) {
        drawing_ = Drawing::on;
        gtk_widget_set_opacity(content_.get(), 1);
    }
}

void ViewCore::setAutoresizingMask(unsigned mask) {
    assertMainThread();
    mask_ = mask;
}

std::vector<ViewCore::Child>::iterator ViewCore::findChild(const View* view) {
    return std::find_if(children_.begin(), children_.end(),
                        [view](const Child& child) { return view != nullptr && child.view.get() == view; });
}

void ViewCore::addSubview(std::shared_ptr<View> view, OrderingMode mode, const View* sibling) {
    assertMainThread();
    ViewCore* core = view ? coreOf(*view) : nullptr;
    if (core == nullptr || core == this)
        return;
    if (core->parent_ != nullptr)
        core->parent_->removeChild(*core);

    // Children are drawn in widget order: the content first, then children_ from its front to its back.
    auto place = mode == OrderingMode::above ? children_.end() : children_.begin();
    if (const auto found = findChild(sibling); found != children_.end()) {
        place = mode == OrderingMode::above ? found + 1 : found;
    }
    GtkWidget* below = place == children_.begin() ? content_.get() : (place - 1)->core->widget();
    gtk_widget_insert_after(core->widget(), widget_.get(), below);
    children_.insert(place, Child{std::move(view), core});
    core->parent_ = this;
    core->setFrame_ = core->frame_;
    core->setParentSize_ = frame_.size;
}

void ViewCore::removeChild(const ViewCore& child) {
    const auto found =
        std::find_if(children_.begin(), children_.end(), [&child](const Child& c) { return c.core == &child; });
    if (found == children_.end())
        return;
    found->core->parent_ = nullptr;
    gtk_widget_unparent(found->core->widget());
    children_.erase(found);
}

void ViewCore::setWantsLayer(bool wantsLayer) {
    assertMainThread();
    wantsLayer_ = wantsLayer;
    if (!wantsLayer)
        style_.set(widget_.get(), "");
}

void ViewCore::setBackgroundColor(const Color& color) {
    assertMainThread();
    const GdkRGBA background = rgbaOf(color);
    std::string declarations = "background-color: " + cssColor(background) + ";";
    // A background of its own leaves the desktop's scheme behind; text on it must follow.
    if (background.alpha >= 0.5F)
        declarations += "color: " + cssColor(readableOn(background)) + ";";
    style_.set(widget_.get(), declarations);
}

void ViewCore::requireFrameSize() {
    asViewWidget(widget_.get())->demanding = TRUE;
    gtk_widget_queue_resize(widget_.get());
}

void ViewCore::resizedTo(Size size) {
    frame_.size = size;
    if (content_)
        allocate(content_.get(), 0, 0, size, mostContentHeight());
    for (const Child& child : children_) {
        placeChild(*child.core);
    }
}

void ViewCore::placeChild(ViewCore& child) const {
    child.frame_ = autoresized(child.setFrame_, child.mask_, child.setParentSize_, frame_.size);
    const double top = frame_.size.height - child.frame_.origin.y - child.frame_.size.height;
    allocate(child.widget(), child.frame_.origin.x, top, child.frame_.size, child.frame_.size.height);
}

double ViewCore::mostContentHeight() const {
    if (parent_ == nullptr)
        return frame_.size.height;
    const double below = frame_.origin.y;
    const double above = parent_->frame_.size.height - frame_.size.height - below;
    constexpr double kMargin = 1;
    return frame_.size.height + 2 * std::max(0.0, std::min(below, above) - kMargin);
}

std::shared_ptr<View> makeView(Rect frame) { return std::make_shared<PlainView>(frame); }

} // namespace vantorel::gtk
