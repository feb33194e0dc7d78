// Vantorel. MIT licence, see LICENSE.
// A connection to the X server of our own, beside the toolkit's.
#pragma once

#include <X11/Xlib.h>

#include <memory>
#include <string>

namespace vantorel::gtk {

/// Closed when destroyed; none when the server could not be reached. For one thread at a time.
class XConnection {
public:
    XConnection() = default;
    /// Connects to the display of that name ("" for the one that the environment names).
    explicit XConnection(const std::string& name) : display_(XOpenDisplay(name.empty() ? nullptr : name.c_str())) {}

    Display* get() const { return display_.get(); }
    int descriptor() const { return ConnectionNumber(display_.get()); }
    explicit operator bool() const { return display_ != nullptr; }

private:
    struct Close {
        void operator()(Display* display) const { XCloseDisplay(display); }
    };
    std::unique_ptr<Display, Close> display_;
};

/// Whether the server of `display` has the extension `name`. Unlike the extensions' own questions it says nothing on
/// standard error when there is none.
inline bool hasExtension(Display* display, const char* name) {
    int opcode = 0;
    int event = 0;
    int error = 0;
    return XQueryExtension(display, name, &opcode, &event, &error) != 0;
}

} // namespace vantorel::gtk
