// Vantorel. MIT licence, see LICENSE.
// The fake's application, desktop and keyboard.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/appkit.h"
#include "tests/unit/fake/fake_menu.h"
#include "tests/unit/fake/fake_window.h"
#include "tests/unit/fake/record.h"

namespace vantorel::fake {

class FakeApplication final : public Application {
public:
    explicit FakeApplication(Record& record) : record_(record) {}

    void setDelegate(std::weak_ptr<ApplicationDelegate> delegate) override;
    /// Tells the delegate that launching has finished, calls `whileRunning`, and terminates unless that happened.
    int run() override;
    void activateIgnoringOtherApps(bool ignoring) override;
    void setMainMenu(std::shared_ptr<Menu> menu) override;
    std::shared_ptr<Menu> mainMenu() const override { return mainMenu_; }

    std::function<void()> whileRunning;
    /// The window that menu actions reach.
    std::weak_ptr<FakeWindow> keyWindow;

    /// Chooses the first menu item titled `title`: its action goes to the key window, the application or the delegate.
    /// False when there is no such item or nothing answers.
    bool choose(const std::string& title);
    /// As choose, for the first item with that key equivalent: Command and `key` were pressed.
    bool pressCommand(const std::string& key);
    /// Ends the application; the delegate is told once.
    void terminate();
    /// Asks the delegate whether the end of the last window is the end of the application, and acts by it.
    void lastWindowClosed();
    bool terminated() const { return terminated_; }
    std::shared_ptr<ApplicationDelegate> delegate() const { return delegate_.lock(); }
    /// The first item of the installed menus that `matches`, searched through all submenus; null when there is none.
    FakeMenuItem* find(const std::function<bool(const FakeMenuItem&)>& matches) const;

private:
    bool send(const Selector& action);

    Record& record_;
    std::weak_ptr<ApplicationDelegate> delegate_;
    std::shared_ptr<Menu> mainMenu_;
    bool terminated_ = false;
};

class FakeWorkspace final : public Workspace {
public:
    explicit FakeWorkspace(Record& record) : record_(record) {}

    void openUrl(const std::string& address) override;
    const std::vector<std::string>& opened() const { return opened_; }

private:
    Record& record_;
    std::vector<std::string> opened_;
};

/// Whose window a key press is meant for.
enum class KeyTarget {
    ownWindow,
    otherApplication,
};

class FakeEventMonitors final : public EventMonitors {
public:
    explicit FakeEventMonitors(Record& record) : record_(record) {}

    std::shared_ptr<EventMonitor> addGlobalMonitorForKeyDown(std::function<void(const KeyEvent&)> handler) override;
    std::shared_ptr<EventMonitor>
    addLocalMonitorForKeyDown(std::function<const KeyEvent*(const KeyEvent&)> handler) override;

    /// With false, registration gives null and the handler is never called.
    bool globalAvailable = true;
    bool localAvailable = true;
    /// Without trust the system delivers nothing to global monitors.
    bool trusted = true;

    /// A key goes down. True when the press went on to the window it was meant for, as the very event that came in.
    bool press(const KeyEvent& event, KeyTarget target);
    std::size_t globalCount() const { return globals_.size(); }
    std::size_t localCount() const { return locals_.size(); }

private:
    Record& record_;
    std::vector<std::function<void(const KeyEvent&)>> globals_;
    std::vector<std::function<const KeyEvent*(const KeyEvent&)>> locals_;
};

} // namespace vantorel::fake
