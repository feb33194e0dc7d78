// Vantorel. MIT licence, see LICENSE.
// Monitors of key presses, of the whole session and of the application.

#include "platform/linux/event_monitors.h"

#include <gdk/gdk.h>

#include <functional>
#include <utility>
#include <vector>

#include "platform/linux/key_controllers.h"
#include "platform/linux/key_session.h"
#include "platform/linux/main_thread.h"
#include "platform/linux/queue.h"
#include "platform/linux/record_source.h"

namespace vantorel::gtk {

namespace {

using GlobalHandler = std::function<void(const KeyEvent&)>;
using LocalHandler = std::function<const KeyEvent*(const KeyEvent&)>;

class InstalledMonitor : public EventMonitor {};

// Shared with presses that are on their way to the main thread, which find it gone when the monitors are.
class Handlers {
public:
    void add(GlobalHandler handler) { global_.push_back(std::move(handler)); }
    void add(LocalHandler handler) { local_.push_back(std::move(handler)); }

    // A handler may add others; those wait for the next press.
    void callGlobal(const KeyEvent& event) const {
        for (const GlobalHandler& handler : std::vector(global_)) {
            handler(event);
        }
    }

    // Whether the press goes on into the application.
    bool callLocal(const KeyEvent& event) const {
        KeyEvent present = event;
        for (const LocalHandler& handler : std::vector(local_)) {
            const KeyEvent* next = handler(present);
            if (next == nullptr) {
                return false;
            }
            present = KeyEvent(*next);
        }
        return true;
    }

private:
    std::vector<GlobalHandler> global_;
    std::vector<LocalHandler> local_;
};

class GtkEventMonitors : public EventMonitors {
public:
    std::shared_ptr<EventMonitor> addGlobalMonitorForKeyDown(GlobalHandler handler) override {
        assertMainThread();
        if (!watchServer()) {
            return nullptr;
        }
        handlers_->add(std::move(handler));
        return std::make_shared<InstalledMonitor>();
    }

    std::shared_ptr<EventMonitor> addLocalMonitorForKeyDown(LocalHandler handler) override {
        assertMainThread();
        if (!watchServer() && !controllers_) {
            controllers_ = KeyControllers::start([this](const KeyEvent& event) { return handlers_->callLocal(event); });
        }
        handlers_->add(std::move(handler));
        return std::make_shared<InstalledMonitor>();
    }

private:
    bool watchServer() {
        const std::string display = xDisplayName();
        if (!record_ && !display.empty()) {
            record_ = RecordSource::start(
                display, windowNumbersOf(gdk_display_get_default()),
                [handlers = std::weak_ptr<Handlers>(handlers_)](const KeyEvent& event, KeyTarget target) {
                    mainQueue().async([handlers, event, target] { pass(handlers, event, target); });
                });
        }
        return record_ != nullptr;
    }

    static void pass(const std::weak_ptr<Handlers>& weak, const KeyEvent& event, KeyTarget target) {
        const std::shared_ptr<Handlers> handlers = weak.lock();
        if (!handlers) {
            return;
        }
        switch (target) {
        case KeyTarget::ownWindow:
            handlers->callLocal(event);
            break;
        case KeyTarget::otherProgram:
            handlers->callGlobal(event);
            break;
        }
    }

    const std::shared_ptr<Handlers> handlers_ = std::make_shared<Handlers>();
    std::unique_ptr<RecordSource> record_;
    std::unique_ptr<KeyControllers> controllers_;
};

} // namespace

std::unique_ptr<EventMonitors> makeEventMonitors() { return std::make_unique<GtkEventMonitors>(); }

} // namespace vantorel::gtk
