// Vantorel. MIT licence, see LICENSE.
// The application: one instance for each user and session bus, its event loop, and every way in which it ends.
#pragma once

#include <gtk/gtk.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "platform/appkit.h"
#include "platform/linux/modal.h"
#include "platform/linux/object.h"

namespace vantorel::gtk {

class NativeMenu;
class NativeWindow;

/// The application's identifier: of its windows, its bus name, its desktop file and its icon.
inline constexpr const char* kApplicationId = "app.vantorel.Vantorel";
/// The product's short name.
inline constexpr const char* kShortName = "Vantor";

class GtkApp : public Application {
public:
    GtkApp();
    GtkApp(const GtkApp&) = delete;
    GtkApp& operator=(const GtkApp&) = delete;
    ~GtkApp() override;

    void setDelegate(std::weak_ptr<ApplicationDelegate> delegate) override;
    int run() override;
    void activateIgnoringOtherApps(bool ignoring) override;
    void setMainMenu(std::shared_ptr<Menu> menu) override;
    std::shared_ptr<Menu> mainMenu() const override;

    GtkApplication* application() const { return application_.get(); }
    ModalStack& modals() { return modals_; }
    bool isTerminating() const { return terminating_; }
    /// A number that has not been handed out before, to name things by.
    unsigned long nextNumber() { return ++lastNumber_; }

    /// Ends the application: tells the delegate, once; ends modal loops; lets `run` return.
    void terminate();
    /// The same as soon as everything that is ready now has had its turn, so that nothing comes after the delegate's
    /// end.
    void terminateSoon();
    /// Carries out a menu's action: the application's and the window's own, all others by the delegate. While an alert
    /// is up only "terminate:" is heard.
    void perform(const Selector& action);

    /// Windows enter themselves while they live. The front window is the one that was made first.
    void addWindow(NativeWindow& window);
    void removeWindow(NativeWindow& window);
    /// The user closes `window`: ends the application if it was the last one and the delegate wants it, else hides it.
    void windowWantsToClose(NativeWindow& window);
    /// The main window, or null.
    NativeWindow* frontWindow() const;

private:
    void activated();

    Object<GtkApplication> application_;
    std::weak_ptr<ApplicationDelegate> delegate_;
    std::shared_ptr<NativeMenu> mainMenu_;
    std::vector<NativeWindow*> windows_;
    ModalStack modals_;
    std::vector<SignalConnection> connections_;
    std::array<SourceId, 3> quitSignals_;
    SourceId quitRequest_;
    unsigned long lastNumber_ = 0;
    bool launched_ = false;
    bool terminating_ = false;
};

} // namespace vantorel::gtk
