// Vantorel. MIT licence, see LICENSE.
// The application's life: registration, activation, actions, end.
#include "platform/linux/application.h"

#include <glib-unix.h>

#include <algorithm>
#include <csignal>

#include "platform/linux/css.h"
#include "platform/linux/main_thread.h"
#include "platform/linux/menu.h"
#include "platform/linux/window.h"
#include "platform/linux/x11.h"

namespace vantorel::gtk {
namespace {

gboolean quitBySignal(gpointer app) {
    guarded([app] { static_cast<GtkApp*>(app)->terminate(); });
    return G_SOURCE_CONTINUE;
}

/// nohup starts programs with SIGHUP ignored, and wants it to stay so.
bool isIgnored(int signal) {
    struct sigaction action = {};
    return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

SourceId watchSignal(int signal, GtkApp* app) {
    return SourceId(g_unix_signal_add_full(G_PRIORITY_HIGH, signal, quitBySignal, app, nullptr));
}

} // namespace

GtkApp::GtkApp()
    : application_(Object<GtkApplication>::take(gtk_application_new(kApplicationId, G_APPLICATION_DEFAULT_FLAGS))) {
    assertMainThread();
    connections_.push_back(connect<void()>(application_.get(), "startup", [] {
        x11::setProgramClass(gdk_display_get_default(), kApplicationId);
        styleMenusFor(gdk_display_get_default());
        gtk_window_set_default_icon_name(kApplicationId);
    }));
    connections_.push_back(connect<void()>(application_.get(), "activate", [this] { activated(); }));
    quitSignals_[0] = watchSignal(SIGINT, this);
    quitSignals_[1] = watchSignal(SIGTERM, this);
    if (!isIgnored(SIGHUP))
        quitSignals_[2] = watchSignal(SIGHUP, this);
}

GtkApp::~GtkApp() = default;

void GtkApp::setDelegate(std::weak_ptr<ApplicationDelegate> delegate) {
    assertMainThread();
    delegate_ = std::move(delegate);
}

int GtkApp::run() {
    assertMainThread();
    auto* application = G_APPLICATION(application_.get());
    // A session bus that is there but refuses the name must not keep the shell from starting.
    if (g_application_register(application, nullptr, nullptr) == FALSE) {
        g_application_set_flags(application, G_APPLICATION_NON_UNIQUE);
    }
    // GIO would end the process when the session bus goes away.
    if (GDBusConnection* bus = g_application_get_dbus_connection(application)) {
        g_dbus_connection_set_exit_on_close(bus, FALSE);
    } else {
        // An address without a bus behind it is worse than none: the engine's sandbox would insist on it.
        g_unsetenv("DBUS_SESSION_BUS_ADDRESS");
    }
    return g_application_run(application, 0, nullptr);
}

void GtkApp::activated() {
    if (launched_) {
        if (NativeWindow* window = frontWindow())
            window->raise();
        if (GtkWindow* alert = modals_.topWindow())
            gtk_window_present(alert);
        return;
    }
    launched_ = true;
    // The application ends when it is told to, not when GTK has no window left.
    g_application_hold(G_APPLICATION(application_.get()));
    if (const auto delegate = delegate_.lock())
        delegate->applicationDidFinishLaunching();
}

void GtkApp::terminate() {
    assertMainThread();
    if (terminating_)
        return;
    terminating_ = true;
    if (const auto delegate = delegate_.lock(); delegate && launched_)
        delegate->applicationWillTerminate();
    modals_.endAll();
    g_application_quit(G_APPLICATION(application_.get()));
}

void GtkApp::terminateSoon() {
    if (quitRequest_ || terminating_)
        return;
    // A source of a priority of its own: the loop runs no other one in the same turn.
    quitRequest_ = SourceId(g_idle_add_full(
        G_PRIORITY_HIGH,
        [](gpointer self) -> gboolean {
            guarded([self] {
                auto* app = static_cast<GtkApp*>(self);
                app->quitRequest_.forget();
                app->terminate();
            });
            return G_SOURCE_REMOVE;
        },
        this, nullptr));
}

void GtkApp::perform(const Selector& action) {
    assertMainThread();
    if (action == "terminate:") {
        terminateSoon();
        return;
    }
    if (!modals_.empty() || terminating_)
        return;
    NativeWindow* window = frontWindow();
    if (window != nullptr)
        window->returnFocusFromMenuBar();
    if (action == "miniaturize:") {
        if (window != nullptr)
            window->miniaturize();
    } else if (action == "zoom:") {
        if (window != nullptr)
            window->zoom();
    } else if (const auto delegate = delegate_.lock()) {
        delegate->performAction(action);
    }
}

void GtkApp::activateIgnoringOtherApps(bool ignoring) {
    assertMainThread();
    if (NativeWindow* window = frontWindow(); window != nullptr && ignoring)
        window->raise();
}

void GtkApp::setMainMenu(std::shared_ptr<Menu> menu) {
    assertMainThread();
    mainMenu_ = std::dynamic_pointer_cast<NativeMenu>(std::move(menu));
    gtk_application_set_menubar(application_.get(), mainMenu_ ? mainMenu_->model() : nullptr);
}

std::shared_ptr<Menu> GtkApp::mainMenu() const {
    assertMainThread();
    return mainMenu_;
}

void GtkApp::addWindow(NativeWindow& window) { windows_.push_back(&window); }

void GtkApp::removeWindow(NativeWindow& window) {
    windows_.erase(std::remove(windows_.begin(), windows_.end(), &window), windows_.end());
}

NativeWindow* GtkApp::frontWindow() const { return windows_.empty() ? nullptr : windows_.front(); }

void GtkApp::windowWantsToClose(NativeWindow& window) {
    const bool last = std::none_of(windows_.begin(), windows_.end(), [&window](const NativeWindow* other) {
        return other != &window && other->isVisible();
    });
    const auto delegate = delegate_.lock();
    if (last && delegate && delegate->applicationShouldTerminateAfterLastWindowClosed()) {
        terminateSoon();
    } else {
        window.hide();
    }
}

} // namespace vantorel::gtk
