// Vantorel. MIT licence, see LICENSE.
// The seam to AppKit: application, window, views, menus, alerts, key event monitors, workspace.
//
// Rules for every object here, unless a function says otherwise:
// - It is made, used and released on the main thread.
// - Objects are shared: the logic keeps what it needs, the platform keeps what is on screen. A delegate is held
//   weakly; a call for a delegate that is gone does nothing.
// - Geometry is in points with the origin at the bottom left.
// - Texts are UTF-8. Setters take effect before they return, as far as the object itself can tell.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/color.h"
#include "platform/geometry.h"

namespace vantorel {

/// The name of a menu action: "toggleAlwaysOnTop", "terminate:". The platform looks for a receiver when the item is
/// chosen; an empty selector has none.
using Selector = std::string;

/// What the application tells its delegate. Every call comes on the main thread.
class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;

    /// Once, as soon as the event loop runs.
    virtual void applicationDidFinishLaunching() = 0;
    /// After the last window was closed: true ends the application.
    virtual bool applicationShouldTerminateAfterLastWindowClosed() = 0;
    /// Once, before a normal end of the application, whatever asked for it. The process ends after it returns.
    virtual void applicationWillTerminate() = 0;
    /// A menu action that travelled to the application's delegate: performs it and returns true, or returns false when
    /// the delegate has no such action.
    virtual bool performAction(const Selector& action) = 0;
};

// Views ---------------------------------------------------------------------------------------------------------------

/// Autoresizing bits, as AppKit numbers them; combine with |. A margin that is not flexible stays as it is.
enum class Autoresizing : unsigned {
    widthSizable = 2,
    minYMargin = 8,
    heightSizable = 16,
};
constexpr unsigned operator|(Autoresizing a, Autoresizing b) {
    return static_cast<unsigned>(a) | static_cast<unsigned>(b);
}

/// Where a subview goes relative to a sibling in the stacking order.
enum class OrderingMode {
    below,
    above,
};

/// The drawing layer behind a view.
class Layer {
public:
    virtual ~Layer() = default;

    virtual void setBackgroundColor(const Color& color) = 0;
};

/// A rectangle in a window that may hold others.
class View {
public:
    virtual ~View() = default;

    /// The view's own rectangle in its own coordinates: origin (0, 0) and its present size.
    virtual Rect bounds() const = 0;
    /// The view's rectangle in its parent's coordinates.
    virtual Rect frame() const = 0;
    /// Which parts of the frame follow the parent's size: bits of Autoresizing. 0 by default.
    virtual void setAutoresizingMask(unsigned mask) = 0;
    /// Gives the view a layer, or lets it go.
    virtual void setWantsLayer(bool wantsLayer) = 0;
    /// The layer, or null while the view has none. Belongs to the view.
    virtual Layer* layer() = 0;
    /// Adds `view` on top of the other subviews and keeps it.
    virtual void addSubview(std::shared_ptr<View> view) = 0;
    /// Adds `view` directly below or above `sibling` and keeps it; with a null sibling, below or above all of them.
    virtual void addSubview(std::shared_ptr<View> view, OrderingMode mode, const View* sibling) = 0;
};

/// A single line of text. As made it is editable, has a border and a background.
class TextField : public View {
public:
    virtual void setEditable(bool editable) = 0;
    virtual void setBordered(bool bordered) = 0;
    virtual void setBackgroundColor(const Color& color) = 0;
    /// The system's font for controls at `points`.
    virtual void setSystemFont(double points) = 0;
    virtual void setStringValue(const std::string& text) = 0;
    virtual std::string stringValue() const = 0;
    virtual void setTextColor(const Color& color) = 0;
};

// Window --------------------------------------------------------------------------------------------------------------

/// Window style bits, as AppKit numbers them; combine with |.
enum class WindowStyle : unsigned {
    titled = 1,
    closable = 2,
    miniaturizable = 4,
    resizable = 8,
};

/// The stacking level: floating windows stay above the normal windows of every application.
enum class WindowLevel : int {
    normal = 0,
    floating = 3,
};

/// Who may read the window's content when the screen is captured.
enum class WindowSharingType : int {
    none = 0,
    readOnly = 1,
};

/// A top level window. It stays hidden until it is ordered front.
class Window {
public:
    virtual ~Window() = default;

    virtual void setTitle(const std::string& title) = 0;
    /// The least size of the outer frame that a user can give the window.
    virtual void setMinSize(Size size) = 0;
    /// Kept and applied as soon as the window is on screen, and again each time it comes back. A platform without a way
    /// to do it keeps the value only.
    virtual void setLevel(WindowLevel level) = 0;
    /// As setLevel: kept, and applied where the system has a way to honour it.
    virtual void setSharingType(WindowSharingType type) = 0;
    /// The view that fills the window below its title bar (and menu bar, where the window bears one), or null.
    virtual std::shared_ptr<View> contentView() = 0;
    /// Shows the window, raises it and gives it the keyboard.
    virtual void makeKeyAndOrderFront() = 0;
    /// Puts the window into the middle of its screen.
    virtual void center() = 0;
    /// The outer frame in screen coordinates, title bar included. A menu bar inside the window does not count.
    virtual Rect frame() const = 0;
};

// Menus ---------------------------------------------------------------------------------------------------------------

/// The check mark of a menu item, as AppKit numbers it.
enum class ControlState : int {
    off = 0,
    on = 1,
};

class Menu;

/// One entry of a menu. Changes show at once, also in an installed menu.
class MenuItem {
public:
    virtual ~MenuItem() = default;

    virtual Selector action() const = 0;
    virtual void setState(ControlState state) = 0;
    virtual void setSubmenu(std::shared_ptr<Menu> submenu) = 0;
    /// The submenu, or null.
    virtual std::shared_ptr<Menu> submenu() const = 0;
};

/// A list of entries.
class Menu {
public:
    virtual ~Menu() = default;

    virtual void addItem(std::shared_ptr<MenuItem> item) = 0;
    /// The item at `index` from 0, or null when there is none.
    virtual std::shared_ptr<MenuItem> itemAtIndex(std::size_t index) const = 0;
    /// All items in order, separators included.
    virtual std::vector<std::shared_ptr<MenuItem>> itemArray() const = 0;
};

// Alerts --------------------------------------------------------------------------------------------------------------

/// The kind of an alert, as AppKit numbers it.
enum class AlertStyle : unsigned {
    warning = 0,
    informational = 1,
    critical = 2,
};

/// What runModal gives for the button that was added first; the next one gives 1001, and so on.
inline constexpr long kAlertFirstButtonReturn = 1000;

/// An application-modal message box. As made its style is warning.
class Alert {
public:
    virtual ~Alert() = default;

    virtual void setMessageText(const std::string& text) = 0;
    virtual void setInformativeText(const std::string& text) = 0;
    virtual void setAlertStyle(AlertStyle style) = 0;
    /// The first button is the default one (Return); a button titled "Cancel" also answers to Escape.
    virtual void addButtonWithTitle(const std::string& title) = 0;
    /// A field between the texts and the buttons; it gets the keyboard first.
    virtual void setAccessoryView(std::shared_ptr<TextField> field) = 0;
    /// Shows the box and returns when it was answered, with the button's code. Events, timers and the main queue go on
    /// meanwhile; the application's other windows take no input. Ended without a button (Escape without "Cancel" and
    /// with more than one button, the box closed, the application quitting): a code below kAlertFirstButtonReturn.
    virtual long runModal() = 0;
};

// Key events ----------------------------------------------------------------------------------------------------------

/// A key press. Modifier bits are AppKit's: Caps Lock 0x10000, Shift 0x20000, Control 0x40000, Option 0x80000, Command
/// 0x100000, number pad 0x200000, Help 0x400000, function key 0x800000; other bits may be set.
struct KeyEvent {
    /// The virtual key code: a physical position, whatever the layout.
    std::uint16_t keyCode = 0;
    std::uint64_t modifierFlags = 0;
    /// What the key types under the present layout and modifiers; empty when the event has no characters.
    std::optional<std::string> characters;
};

/// An installed monitor. It stays installed when the handle is released.
class EventMonitor {
public:
    virtual ~EventMonitor() = default;
};

/// Key presses of the whole system, and of the application. Repeats of a held key are presses; releases and changes of
/// a modifier alone are not. Handlers run on the main thread, once for each press.
class EventMonitors {
public:
    virtual ~EventMonitors() = default;

    /// Calls `handler` for presses meant for other applications. Null when no monitor can be had.
    virtual std::shared_ptr<EventMonitor> addGlobalMonitorForKeyDown(std::function<void(const KeyEvent&)> handler) = 0;
    /// Calls `handler` for presses meant for the application's own windows, alerts included. The handler returns the
    /// event that goes on into the application; null drops it where the platform can. Null when no monitor can be had.
    virtual std::shared_ptr<EventMonitor>
    addLocalMonitorForKeyDown(std::function<const KeyEvent*(const KeyEvent&)> handler) = 0;
};

// Application and workspace -------------------------------------------------------------------------------------------

/// The application and its event loop.
class Application {
public:
    virtual ~Application() = default;

    virtual void setDelegate(std::weak_ptr<ApplicationDelegate> delegate) = 0;
    /// Runs the event loop until the application ends and returns its exit status. Where the platform ends the process
    /// by itself it does not return.
    virtual int run() = 0;
    virtual void activateIgnoringOtherApps(bool ignoring) = 0;
    virtual void setMainMenu(std::shared_ptr<Menu> menu) = 0;
    /// The installed main menu, or null.
    virtual std::shared_ptr<Menu> mainMenu() const = 0;
};

/// The user's desktop.
class Workspace {
public:
    virtual ~Workspace() = default;

    /// Hands `address` to the user's handler for its scheme. Returns at once; failures are not reported.
    virtual void openUrl(const std::string& address) = 0;
};

} // namespace vantorel
