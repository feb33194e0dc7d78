// Vantorel. MIT licence, see LICENSE.
// Key presses in the application's own windows as GTK delivers them, for displays where there is no other way.

#include "platform/linux/key_controllers.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>

#include "platform/linux/key_events.h"
#include "platform/linux/object.h"

namespace vantorel::gtk {

namespace {

// WebKitGTK (2.50) puts a key event that the page did not use into the queue a second time: the very same object, which
// is kept here so that no other can take its address.
class RecentEvents {
public:
    bool isNew(GdkEvent* event) {
        if (std::any_of(events_.begin(), events_.end(), [event](const Held& held) { return held.get() == event; })) {
            return false;
        }
        events_[next_].reset(gdk_event_ref(event));
        next_ = (next_ + 1) % events_.size();
        return true;
    }

    // Events hold their window's surface, also when the window has gone.
    void forgetClosedWindows() {
        for (Held& held : events_) {
            if (held && gdk_surface_is_destroyed(gdk_event_get_surface(held.get()))) {
                held.reset();
            }
        }
    }

private:
    struct Unref {
        void operator()(GdkEvent* event) const { gdk_event_unref(event); }
    };
    using Held = std::unique_ptr<GdkEvent, Unref>;
    // A page that is busy may give keys back late, after others.
    std::array<Held, 64> events_;
    std::size_t next_ = 0;
};

// GDK (4.8, on Wayland) leaves the Super modifier out of a key event's state, so its keys are followed. A key that went
// down before the application had the keyboard is not known.
class CommandKeys {
public:
    bool areDown() const { return !down_.empty(); }
    void press(unsigned symbol, unsigned keyCode) {
        if (symbol == GDK_KEY_Super_L || symbol == GDK_KEY_Super_R) {
            down_.insert(keyCode);
        }
    }
    void release(unsigned keyCode) { down_.erase(keyCode); }
    void releaseAll() { down_.clear(); }

private:
    std::set<unsigned> down_;
};

PressedKey pressedKeyOf(unsigned symbol, unsigned keyCode, GdkModifierType state) {
    PressedKey press;
    press.keyCode = keyCode;
    press.symbol = symbol == GDK_KEY_VoidSymbol ? 0 : symbol;
    press.held.capsLock = (state & GDK_LOCK_MASK) != 0;
    press.held.shift = (state & GDK_SHIFT_MASK) != 0;
    press.held.control = (state & GDK_CONTROL_MASK) != 0;
    press.held.option = (state & GDK_ALT_MASK) != 0;
    press.held.command = (state & GDK_SUPER_MASK) != 0;
    return press;
}

class ToplevelControllers : public KeyControllers {
public:
    explicit ToplevelControllers(Handler handler)
        : handler_(std::move(handler)),
          toplevels_(Object<GListModel>::share(gtk_window_get_toplevels())) {
        changes_ = connect<void(guint, guint, guint)>(toplevels_.get(), "items-changed",
                                                      [this](guint, guint, guint) { follow(); });
        follow();
    }

    ~ToplevelControllers() override {
        for (auto& [window, watch] : watches_) {
            detach(window, watch);
        }
    }
    ToplevelControllers(const ToplevelControllers&) = delete;
    ToplevelControllers& operator=(const ToplevelControllers&) = delete;

private:
    struct Watch {
        SignalConnection mapping;
        SignalConnection activation;
        SignalConnection pressing;
        SignalConnection releasing;
        // Belongs to its window; only to be touched while that is in the list.
        GtkEventController* controller = nullptr;
    };

    void follow() {
        recent_.forgetClosedWindows();
        std::map<GtkWidget*, Watch> known = std::move(watches_);
        watches_.clear();
        for (guint index = 0; index < g_list_model_get_n_items(toplevels_.get()); ++index) {
            const auto window =
                Object<GtkWidget>::take(static_cast<GtkWidget*>(g_list_model_get_item(toplevels_.get(), index)));
            if (auto old = known.extract(window.get())) {
                watches_.insert(std::move(old));
            } else {
                add(window.get());
            }
        }
    }

    // Of the controllers of a widget the one added last sees a key first. A window's own shortcuts come while it is
    // set up, so the controller is put in front of them when the window appears.
    void add(GtkWidget* window) {
        Watch& watch = watches_[window];
        watch.mapping = connect<void()>(window, "map", [this, window] { attach(window, watches_[window]); });
        watch.activation =
            connect<void(GParamSpec*)>(window, "notify::is-active", [this](GParamSpec*) { commandKeys_.releaseAll(); });
        if (gtk_widget_get_mapped(window)) {
            attach(window, watch);
        }
    }

    void attach(GtkWidget* window, Watch& watch) {
        detach(window, watch);
        watch.controller = gtk_event_controller_key_new();
        gtk_event_controller_set_propagation_phase(watch.controller, GTK_PHASE_CAPTURE);
        GtkEventController* controller = watch.controller;
        watch.pressing = connect<gboolean(guint, guint, GdkModifierType)>(
            controller, "key-pressed", [this, controller](guint symbol, guint keyCode, GdkModifierType state) {
                const bool isNew = recent_.isNew(gtk_event_controller_get_current_event(controller));
                return static_cast<gboolean>(isNew && !goesOn(symbol, keyCode, state));
            });
        watch.releasing = connect<void(guint, guint, GdkModifierType)>(
            controller, "key-released", [this, controller](guint, guint keyCode, GdkModifierType) {
                if (recent_.isNew(gtk_event_controller_get_current_event(controller))) {
                    commandKeys_.release(keyCode);
                }
            });
        gtk_widget_add_controller(window, controller);
    }

    static void detach(GtkWidget* window, Watch& watch) {
        watch.pressing.disconnect();
        watch.releasing.disconnect();
        if (watch.controller != nullptr) {
            gtk_widget_remove_controller(window, std::exchange(watch.controller, nullptr));
        }
    }

    bool goesOn(unsigned symbol, unsigned keyCode, GdkModifierType state) {
        PressedKey press = pressedKeyOf(symbol, keyCode, state);
        press.held.command = press.held.command || commandKeys_.areDown();
        commandKeys_.press(symbol, keyCode);
        const std::optional<KeyEvent> event = keyEventOf(press);
        return !event || handler_(*event);
    }

    const Handler handler_;
    const Object<GListModel> toplevels_;
    SignalConnection changes_;
    std::map<GtkWidget*, Watch> watches_;
    RecentEvents recent_;
    CommandKeys commandKeys_;
};

} // namespace

std::unique_ptr<KeyControllers> KeyControllers::start(Handler handler) {
    return std::make_unique<ToplevelControllers>(std::move(handler));
}

} // namespace vantorel::gtk
