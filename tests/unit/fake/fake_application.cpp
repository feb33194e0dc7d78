// Vantorel. MIT licence, see LICENSE.
// The fake's application, desktop and keyboard.
#include "tests/unit/fake/fake_application.h"

#include <utility>

namespace vantorel::fake {

namespace {

FakeMenuItem* findIn(const Menu& menu, const std::function<bool(const FakeMenuItem&)>& matches) {
    for (const auto& item : menu.itemArray()) {
        auto& entry = dynamic_cast<FakeMenuItem&>(*item);
        if (matches(entry))
            return &entry;
        if (const auto submenu = entry.submenu()) {
            if (FakeMenuItem* found = findIn(*submenu, matches))
                return found;
        }
    }
    return nullptr;
}

} // namespace

void FakeApplication::setDelegate(std::weak_ptr<ApplicationDelegate> delegate) {
    record_.addOnMain("application.setDelegate()");
    delegate_ = std::move(delegate);
}

int FakeApplication::run() {
    record_.addOnMain("application.run()");
    if (const auto delegate = delegate_.lock())
        delegate->applicationDidFinishLaunching();
    if (whileRunning)
        whileRunning();
    terminate();
    return 0;
}

void FakeApplication::activateIgnoringOtherApps(bool ignoring) {
    record_.addOnMain("application.activateIgnoringOtherApps(" + shown(ignoring) + ")");
}

void FakeApplication::setMainMenu(std::shared_ptr<Menu> menu) {
    record_.addOnMain("application.setMainMenu(" + (menu ? dynamic_cast<FakeMenu&>(*menu).name() : "nil") + ")");
    mainMenu_ = std::move(menu);
}

FakeMenuItem* FakeApplication::find(const std::function<bool(const FakeMenuItem&)>& matches) const {
    return mainMenu_ ? findIn(*mainMenu_, matches) : nullptr;
}

bool FakeApplication::choose(const std::string& title) {
    const FakeMenuItem* item = find([&title](const FakeMenuItem& each) { return each.title() == title; });
    return item != nullptr && send(item->action());
}

bool FakeApplication::pressCommand(const std::string& key) {
    const FakeMenuItem* item = find([&key](const FakeMenuItem& each) { return each.keyEquivalent() == key; });
    return item != nullptr && send(item->action());
}

bool FakeApplication::send(const Selector& action) {
    if (action.empty())
        return false;
    if (action == "terminate:") {
        terminate();
        return true;
    }
    if (const auto window = keyWindow.lock()) {
        if (action == "miniaturize:")
            return window->miniaturize(), true;
        if (action == "zoom:")
            return window->zoom(), true;
    }
    const auto delegate = delegate_.lock();
    return delegate && delegate->performAction(action);
}

void FakeApplication::terminate() {
    if (std::exchange(terminated_, true))
        return;
    if (const auto delegate = delegate_.lock())
        delegate->applicationWillTerminate();
}

void FakeApplication::lastWindowClosed() {
    const auto delegate = delegate_.lock();
    if (delegate && delegate->applicationShouldTerminateAfterLastWindowClosed())
        terminate();
}

void FakeWorkspace::openUrl(const std::string& address) {
    record_.addOnMain("workspace.openUrl(" + quoted(address) + ")");
    opened_.push_back(address);
}

std::shared_ptr<EventMonitor>
FakeEventMonitors::addGlobalMonitorForKeyDown(std::function<void(const KeyEvent&)> handler) {
    record_.addOnMain("eventMonitors.addGlobalMonitorForKeyDown()");
    if (!globalAvailable)
        return nullptr;
    globals_.push_back(std::move(handler));
    return std::make_shared<EventMonitor>();
}

std::shared_ptr<EventMonitor>
FakeEventMonitors::addLocalMonitorForKeyDown(std::function<const KeyEvent*(const KeyEvent&)> handler) {
    record_.addOnMain("eventMonitors.addLocalMonitorForKeyDown()");
    if (!localAvailable)
        return nullptr;
    locals_.push_back(std::move(handler));
    return std::make_shared<EventMonitor>();
}

bool FakeEventMonitors::press(const KeyEvent& event, KeyTarget target) {
    if (target == KeyTarget::otherApplication) {
        if (trusted) {
            for (const auto& handler : globals_)
                handler(event);
        }
        return true;
    }
    const KeyEvent* going = &event;
    for (const auto& handler : locals_) {
        going = handler(*going);
        if (going == nullptr)
            return false;
    }
    return going == &event;
}

} // namespace vantorel::fake
