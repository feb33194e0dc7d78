// Vantorel. MIT licence, see LICENSE.
// How far key presses can be watched in this session.

#include "platform/linux/key_session.h"

#include <gdk/x11/gdkx.h>

#include <X11/Xlib.h>

#include <X11/extensions/XInput2.h>

#include <cstring>
#include <memory>
#include <string_view>

#include "platform/linux/x_connection.h"

namespace vantorel::gtk {

namespace {

bool saysWayland() {
    const char* socket = g_getenv("WAYLAND_DISPLAY");
    const char* type = g_getenv("XDG_SESSION_TYPE");
    return (socket != nullptr && *socket != '\0') || (type != nullptr && std::string_view(type) == "wayland");
}

// The environment tells of a Wayland session, but it can be scrubbed; the server's input devices cannot.
bool isXWayland(Display* display) {
    if (hasExtension(display, "XWAYLAND")) {
        return true;
    }
    int major = 2;
    int minor = 2;
    if (!hasExtension(display, "XInputExtension") || XIQueryVersion(display, &major, &minor) != Success) {
        return false;
    }
    int count = 0;
    const std::unique_ptr<XIDeviceInfo, void (*)(XIDeviceInfo*)> devices(XIQueryDevice(display, XIAllDevices, &count),
                                                                         XIFreeDeviceInfo);
    for (int index = 0; index < count; ++index) {
        if (std::string_view(devices.get()[index].name).starts_with("xwayland-")) {
            return true;
        }
    }
    return false;
}

} // namespace

std::string xDisplayName() {
    GdkDisplay* display = gdk_display_get_default();
    return GDK_IS_X11_DISPLAY(display) ? gdk_display_get_name(display) : "";
}

KeyReach keyReach() {
    const std::string name = xDisplayName();
    if (name.empty()) {
        return KeyReach::ownWindows;
    }
    const XConnection connection(name);
    if (!connection || !hasExtension(connection.get(), "RECORD")) {
        return KeyReach::ownWindows;
    }
    return saysWayland() || isXWayland(connection.get()) ? KeyReach::xPrograms : KeyReach::everyProgram;
}

} // namespace vantorel::gtk
