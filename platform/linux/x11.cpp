// Vantorel. MIT licence, see LICENSE.
// The window manager's protocol (Extended Window Manager Hints) on GDK's own connection.
#include "platform/linux/x11.h"

#include <gdk/x11/gdkx.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

// GTK 4 marks its X11 functions as deprecated from 4.18 on, without an other way to reach a window's frame.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace vantorel::gtk::x11 {
namespace {

struct XFreeMemory {
    void operator()(unsigned char* memory) const { XFree(memory); }
};

/// Errors of requests about a window that went away meanwhile are nobody's concern.
class ErrorTrap {
public:
    explicit ErrorTrap(GdkDisplay* display) : display_(display) { gdk_x11_display_error_trap_push(display_); }
    ErrorTrap(const ErrorTrap&) = delete;
    ErrorTrap& operator=(const ErrorTrap&) = delete;
    ~ErrorTrap() { gdk_x11_display_error_trap_pop_ignored(display_); }

private:
    GdkDisplay* display_;
};

/// One surface with everything that a request needs.
struct Target {
    GdkDisplay* gdk = nullptr;
    Display* display = nullptr;
    Window window = 0;
    Window root = 0;
    double scale = 1;

    Atom atom(const char* name) const { return gdk_x11_get_xatom_by_name_for_display(gdk, name); }
    long device(double value) const { return std::lround(value * scale); }
};

std::optional<Target> targetOf(GdkSurface* surface) {
    if (surface == nullptr || !GDK_IS_X11_SURFACE(surface))
        return std::nullopt;
    Target target;
    target.gdk = gdk_surface_get_display(surface);
    target.display = gdk_x11_display_get_xdisplay(target.gdk);
    target.window = gdk_x11_surface_get_xid(surface);
    target.root = gdk_x11_display_get_xrootwindow(target.gdk);
    target.scale = std::max(1, gdk_surface_get_scale_factor(surface));
    return target;
}

/// A property of 32-bit items; Xlib hands each of them out as a long.
std::vector<long> longProperty(GdkDisplay* gdk, Window window, const char* name, Atom type) {
    Display* display = gdk_x11_display_get_xdisplay(gdk);
    const ErrorTrap trap(gdk);
    Atom actualType = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    constexpr long kMostItems = 4096;
    if (XGetWindowProperty(display, window, gdk_x11_get_xatom_by_name_for_display(gdk, name), 0, kMostItems, False,
                           type, &actualType, &format, &count, &left, &data) != Success) {
        return {};
    }
    const std::unique_ptr<unsigned char, XFreeMemory> owner(data);
    if (data == nullptr || format != 32)
        return {};
    const long* items = reinterpret_cast<const long*>(data);
    return {items, items + count};
}

void tellManager(const Target& target, const char* message, const std::vector<long>& data) {
    const ErrorTrap trap(target.gdk);
    XEvent event = {};
    event.xclient.type = ClientMessage;
    event.xclient.window = target.window;
    event.xclient.message_type = target.atom(message);
    event.xclient.format = 32;
    std::copy(data.begin(), data.end(), event.xclient.data.l);
    XSendEvent(target.display, target.root, False, SubstructureNotifyMask | SubstructureRedirectMask, &event);
    XFlush(target.display);
}

bool managerSupports(const Target& target, const char* protocol) {
    const std::vector<long> supported = longProperty(target.gdk, target.root, "_NET_SUPPORTED", XA_ATOM);
    return std::find(supported.begin(), supported.end(), static_cast<long>(target.atom(protocol))) != supported.end();
}

} // namespace

bool isX11(GdkDisplay* display) { return display != nullptr && GDK_IS_X11_DISPLAY(display); }

void setProgramClass(GdkDisplay* display, const char* name) {
    if (isX11(display))
        gdk_x11_display_set_program_class(display, name);
}

bool willHaveFrameExtents(GdkSurface* surface) {
    const std::optional<Target> target = targetOf(surface);
    if (!target)
        return false;
    const char* const kCheck = "_NET_SUPPORTING_WM_CHECK";
    const std::vector<long> check = longProperty(target->gdk, target->root, kCheck, XA_WINDOW);
    if (check.empty())
        return false;
    // A manager that crashed leaves the property behind, but not the window that it names.
    const std::vector<long> itself = longProperty(target->gdk, static_cast<Window>(check.front()), kCheck, XA_WINDOW);
    return itself == check && managerSupports(*target, "_NET_FRAME_EXTENTS");
}

std::optional<FrameExtents> frameExtents(GdkSurface* surface) {
    const std::optional<Target> target = targetOf(surface);
    if (!target)
        return std::nullopt;
    const std::vector<long> sides = longProperty(target->gdk, target->window, "_NET_FRAME_EXTENTS", XA_CARDINAL);
    if (sides.size() < 4)
        return std::nullopt;
    const auto side = [&](std::size_t index) { return static_cast<double>(sides[index]) / target->scale; };
    return FrameExtents{side(0), side(1), side(2), side(3)};
}

std::optional<Rect> clientArea(GdkSurface* surface) {
    const std::optional<Target> target = targetOf(surface);
    if (!target)
        return std::nullopt;
    const ErrorTrap trap(target->gdk);
    int x = 0;
    int y = 0;
    Window child = 0;
    if (XTranslateCoordinates(target->display, target->window, target->root, 0, 0, &x, &y, &child) == False) {
        return std::nullopt;
    }
    Window root = 0;
    int relativeX = 0;
    int relativeY = 0;
    unsigned width = 0;
    unsigned height = 0;
    unsigned border = 0;
    unsigned depth = 0;
    if (XGetGeometry(target->display, target->window, &root, &relativeX, &relativeY, &width, &height, &border,
                     &depth) == 0) {
        return std::nullopt;
    }
    return Rect{{x / target->scale, y / target->scale}, {width / target->scale, height / target->scale}};
}

std::optional<Rect> workArea(GdkSurface* surface) {
    if (surface == nullptr || !GDK_IS_X11_SURFACE(surface))
        return std::nullopt;
    GdkMonitor* monitor = gdk_display_get_monitor_at_surface(gdk_surface_get_display(surface), surface);
    if (monitor == nullptr)
        return std::nullopt;
    GdkRectangle area = {};
    gdk_x11_monitor_get_workarea(monitor, &area);
    return Rect{{static_cast<double>(area.x), static_cast<double>(area.y)},
                {static_cast<double>(area.width), static_cast<double>(area.height)}};
}

std::optional<double> screenHeight(GdkSurface* surface) {
    const std::optional<Target> target = targetOf(surface);
    if (!target)
        return std::nullopt;
    const ErrorTrap trap(target->gdk);
    XWindowAttributes attributes = {};
    if (XGetWindowAttributes(target->display, target->root, &attributes) == 0)
        return std::nullopt;
    return attributes.height / target->scale;
}

void moveClientTo(GdkSurface* surface, Point corner, const FrameExtents& extents) {
    const std::optional<Target> target = targetOf(surface);
    if (!target)
        return;
    if (managerSupports(*target, "_NET_MOVERESIZE_WINDOW")) {
        constexpr long kHasX = 1L << 8;
        constexpr long kHasY = 1L << 9;
        constexpr long kFromApplication = 1L << 12;
        tellManager(*target, "_NET_MOVERESIZE_WINDOW",
                    {StaticGravity | kHasX | kHasY | kFromApplication, target->device(corner.x),
                     target->device(corner.y), 0, 0});
        return;
    }
    // Without that message a manager takes the position as that of its frame; with no manager there is no frame.
    const ErrorTrap trap(target->gdk);
    XMoveWindow(target->display, target->window, static_cast<int>(target->device(corner.x - extents.left)),
                static_cast<int>(target->device(corner.y - extents.top)));
    XFlush(target->display);
}

void setAbove(GdkSurface* surface, bool above) {
    const std::optional<Target> target = targetOf(surface);
    if (!target)
        return;
    constexpr long kFromApplication = 1;
    tellManager(*target, "_NET_WM_STATE",
                {above ? 1 : 0, static_cast<long>(target->atom("_NET_WM_STATE_ABOVE")), 0, kFromApplication, 0});
}

bool isAbove(GdkSurface* surface) {
    const std::optional<Target> target = targetOf(surface);
    if (!target)
        return false;
    const std::vector<long> states = longProperty(target->gdk, target->window, "_NET_WM_STATE", XA_ATOM);
    const auto above = static_cast<long>(target->atom("_NET_WM_STATE_ABOVE"));
    return std::find(states.begin(), states.end(), above) != states.end();
}

guint32 serverTime(GdkSurface* surface) {
    return surface != nullptr && GDK_IS_X11_SURFACE(surface) ? gdk_x11_get_server_time(surface) : GDK_CURRENT_TIME;
}

SignalConnection watchFrameExtents(GdkSurface* surface, std::function<void()> changed) {
    const std::optional<Target> target = targetOf(surface);
    if (!target)
        return {};
    const Window window = target->window;
    const Atom extents = target->atom("_NET_FRAME_EXTENTS");
    return connect<gboolean(gpointer)>(target->gdk, "xevent", [=, changed = std::move(changed)](gpointer data) {
        const XEvent* event = static_cast<const XEvent*>(data);
        if (event->type == PropertyNotify && event->xproperty.window == window && event->xproperty.atom == extents) {
            changed();
        }
        return FALSE;
    });
}

} // namespace vantorel::gtk::x11
