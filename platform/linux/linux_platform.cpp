// Vantorel. MIT licence, see LICENSE.
// The Linux platform: preparation of the process, and the makers of this folder behind the seam.
#include "platform/linux/linux_platform.h"

#include <fcntl.h>
#include <gtk/gtk.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <vector>

#include "platform/linux/alert.h"
#include "platform/linux/bundle.h"
#include "platform/linux/event_monitors.h"
#include "platform/linux/files.h"
#include "platform/linux/grants.h"
#include "platform/linux/graphics.h"
#include "platform/linux/menu.h"
#include "platform/linux/pipe.h"
#include "platform/linux/process.h"
#include "platform/linux/process_info.h"
#include "platform/linux/queue.h"
#include "platform/linux/text_field.h"
#include "platform/linux/timer.h"
#include "platform/linux/url_session.h"
#include "platform/linux/user_defaults.h"
#include "platform/linux/view.h"
#include "platform/linux/web_view.h"
#include "platform/linux/web_view_configuration.h"
#include "platform/linux/website_data.h"
#include "platform/linux/window.h"
#include "platform/linux/workspace.h"
#include "platform/portable/rect_text.h"

namespace vantorel::gtk {
namespace {

/// A descriptor of the standard streams that is closed would be given to the first file or socket that is opened, and
/// log lines would end up in it.
void fillStandardDescriptors() {
    int descriptor = -1;
    do {
        descriptor = ::open("/dev/null", O_RDWR);
    } while (descriptor >= STDIN_FILENO && descriptor <= STDERR_FILENO);
    if (descriptor > STDERR_FILENO)
        ::close(descriptor);
}

/// A home folder whose path leads through a file is named anew, as one that is not there: the engine's sandbox puts up
/// with that, but not with the other. Nothing can be created under the new name, not even by root.
Environment homeVariables(const Environment& inherited) {
    const auto home = inherited.find("HOME");
    if (home == inherited.end())
        return {};
    struct stat status = {};
    if (::stat((home->second + "/.").c_str(), &status) == 0 || errno != ENOTDIR)
        return {};
    return {{"HOME", "/proc/no-home"}};
}

/// Everything that must be so before GTK looks; returns the variables that it added to the environment.
Environment prepareProcess(const Environment& inherited) {
    fillStandardDescriptors();
    // A reader of the log that goes away is no reason to end.
    std::signal(SIGPIPE, SIG_IGN);
    Environment added = graphicsVariables(inherited, hasGraphicsProcessor());
    added.merge(homeVariables(inherited));
    for (const auto& [name, value] : added) {
        ::setenv(name.c_str(), value.c_str(), 1);
    }
    // Only on X11, XWayland included, can a window be placed and kept above others.
    gdk_set_allowed_backends("x11,wayland");
    // The name becomes WM_CLASS, which must agree with the desktop file's name.
    g_set_prgname(kApplicationId);
    g_set_application_name(kShortName);
    return added;
}

template<typename T, typename Make>
T& madeOnce(std::unique_ptr<T>& holder, Make make) {
    if (!holder)
        holder = make();
    return *holder;
}

} // namespace

LinuxPlatform::LinuxPlatform(Environment inherited)
    : added_(prepareProcess(inherited)),
      processInfo_(makeProcessInfo(std::move(inherited))),
      bundle_(makeBundle()),
      fileManager_(makeFileManager()) {}

LinuxPlatform::~LinuxPlatform() = default;

Workspace& LinuxPlatform::workspace() {
    return madeOnce(workspace_, [this] {
        std::vector<std::string> names;
        for (const auto& [name, value] : added_) {
            names.push_back(name);
        }
        return makeWorkspace(std::move(names));
    });
}

EventMonitors& LinuxPlatform::eventMonitors() { return madeOnce(eventMonitors_, makeEventMonitors); }

std::shared_ptr<Window> LinuxPlatform::makeWindow(Rect contentRect, unsigned style) {
    return gtk::makeWindow(application_, contentRect, style);
}

std::shared_ptr<View> LinuxPlatform::makeView(Rect frame) { return gtk::makeView(frame); }

std::shared_ptr<TextField> LinuxPlatform::makeTextField(Rect frame) { return gtk::makeTextField(frame); }

std::shared_ptr<Alert> LinuxPlatform::makeAlert() { return gtk::makeAlert(application_); }

std::shared_ptr<Menu> LinuxPlatform::makeMenu(const std::string& title) { return gtk::makeMenu(title); }

std::shared_ptr<MenuItem> LinuxPlatform::makeMenuItem(const std::string& title, const Selector& action,
                                                      const std::string& keyEquivalent) {
    return gtk::makeMenuItem(application_, title, action, keyEquivalent);
}

std::shared_ptr<MenuItem> LinuxPlatform::makeSeparatorItem() { return gtk::makeSeparatorItem(application_); }

std::string LinuxPlatform::stringFromRect(Rect rect) { return rectText(rect); }

Rect LinuxPlatform::rectFromString(const std::string& text) { return rectFromText(text); }

std::shared_ptr<WebsiteDataStore> LinuxPlatform::defaultWebsiteDataStore() { return gtk::defaultWebsiteDataStore(); }

std::shared_ptr<WebViewConfiguration> LinuxPlatform::makeWebViewConfiguration() {
    return gtk::makeWebViewConfiguration();
}

std::shared_ptr<WebView> LinuxPlatform::makeWebView(Rect frame, std::shared_ptr<WebViewConfiguration> configuration) {
    return gtk::makeWebView(frame, std::move(configuration));
}

Bundle& LinuxPlatform::mainBundle() { return *bundle_; }

FileManager& LinuxPlatform::fileManager() { return *fileManager_; }

ProcessInfo& LinuxPlatform::processInfo() { return *processInfo_; }

UserDefaults& LinuxPlatform::userDefaults() {
    return madeOnce(userDefaults_, [] { return makeUserDefaults(); });
}

UrlSession& LinuxPlatform::sharedUrlSession() { return madeOnce(urlSession_, makeUrlSession); }

std::shared_ptr<Process> LinuxPlatform::makeProcess() { return gtk::makeProcess(); }

std::shared_ptr<Pipe> LinuxPlatform::makePipe() { return gtk::makePipe(); }

bool LinuxPlatform::isAddress(const std::string& text) { return gtk::isAddress(text); }

std::shared_ptr<Timer> LinuxPlatform::scheduleRepeatingTimer(double seconds, std::function<void()> block) {
    return gtk::scheduleRepeatingTimer(seconds, std::move(block));
}

Queue& LinuxPlatform::mainQueue() { return gtk::mainQueue(); }

Queue& LinuxPlatform::globalQueue() { return gtk::globalQueue(); }

ScreenCaptureAccess& LinuxPlatform::screenCaptureAccess() {
    return madeOnce(screenCaptureAccess_, makeScreenCaptureAccess);
}

AudioCaptureAccess& LinuxPlatform::audioCaptureAccess() {
    return madeOnce(audioCaptureAccess_, makeAudioCaptureAccess);
}

Accessibility& LinuxPlatform::accessibility() { return madeOnce(accessibility_, makeAccessibility); }

} // namespace vantorel::gtk

namespace vantorel {

std::unique_ptr<Platform> makeNativePlatform() {
    return std::make_unique<gtk::LinuxPlatform>(gtk::currentEnvironment());
}

} // namespace vantorel
