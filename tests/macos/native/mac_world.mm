// Vantorel. MIT licence, see LICENSE.
// The world of the macOS platform: its event loop, a folder on disk, shell scripts and servers on the loopback host.
#import "tests/macos/native/mac_world.h"

#include <sys/stat.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <list>
#include <stdexcept>
#include <utility>

#import "platform/macos/bridge.h"
#import "platform/macos/view.h"
#include "tests/macos/native/raw_server.h"

namespace vantorel::mac::test {

namespace {

/// A recursive search, for an alert's buttons lie in views of its own.
NSButton* buttonIn(NSView* view, NSString* title) {
    for (NSView* child in view.subviews) {
        if ([child isKindOfClass:NSButton.class] && [static_cast<NSButton*>(child).title isEqualToString:title]) {
            return static_cast<NSButton*>(child);
        }
        if (NSButton* const found = buttonIn(child, title)) {
            return found;
        }
    }
    return nil;
}

} // namespace

double secondsNow() {
    return NSProcessInfo.processInfo.systemUptime;
}

Platform& nativePlatform() {
    static Platform* const platform = [] {
        Platform* const made = makeNativePlatform().release();
        [NSApplication.sharedApplication finishLaunching];
        return made;
    }();
    return *platform;
}

bool runUntil(const std::function<bool()>& condition, double seconds) {
    constexpr double kPulse = 0.002;
    NSApplication* const app = NSApplication.sharedApplication;
    const double end = secondsNow() + seconds;
    while (!condition()) {
        if (secondsNow() >= end) {
            return false;
        }
        @autoreleasepool {
            NSEvent* const event = [app nextEventMatchingMask:static_cast<NSEventMask>(~0ULL)
                                                    untilDate:[NSDate dateWithTimeIntervalSinceNow:kPulse]
                                                       inMode:NSDefaultRunLoopMode
                                                      dequeue:YES];
            if (event != nil) {
                [app sendEvent:event];
            }
        }
    }
    return true;
}

void runFor(double seconds) {
    runUntil([] { return false; }, seconds);
}

NSWindow* nativeWindow(Window& window) {
    return nsViewOf(window.contentView().get()).window;
}

void whenModal(std::function<void(NSWindow* modal)> action) {
    constexpr double kPulse = 0.005;
    NSTimer* const timer = [NSTimer timerWithTimeInterval:kPulse
                                                  repeats:YES
                                                    block:^(NSTimer* fired) {
                                                        NSWindow* const modal = NSApplication.sharedApplication.modalWindow;
                                                        if (modal == nil || !modal.visible) {
                                                            return;
                                                        }
                                                        [fired invalidate];
                                                        action(modal);
                                                    }];
    [NSRunLoop.mainRunLoop addTimer:timer forMode:NSRunLoopCommonModes];
}

NSButton* buttonTitled(NSWindow* window, const std::string& title) {
    return buttonIn(window.contentView, toNSString(title));
}

} // namespace vantorel::mac::test

namespace vantorel::contract {
namespace {

class MacWorld final : public World {
public:
    MacWorld() {
        std::string name = (std::filesystem::temp_directory_path() / "vantorel-contract.XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no folder");
        folder_ = std::filesystem::canonical(name).string();
        // What an earlier run of this program has stored.
        [NSUserDefaults.standardUserDefaults removePersistentDomainForName:NSProcessInfo.processInfo.processName];
    }
    MacWorld(const MacWorld&) = delete;
    MacWorld& operator=(const MacWorld&) = delete;
    ~MacWorld() override { std::filesystem::remove_all(folder_); }

    Platform& platform() override { return mac::test::nativePlatform(); }
    bool runUntil(const std::function<bool()>& condition, double seconds) override {
        return mac::test::runUntil(condition, seconds);
    }
    double now() override { return mac::test::secondsNow(); }

    std::string folder() override { return folder_; }
    void makeFile(const std::string& path, const std::string& bytes, unsigned mode) override {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
        if (::chmod(path.c_str(), static_cast<mode_t>(mode)) != 0)
            throw std::runtime_error("no file");
    }
    void makeLink(const std::string& path, const std::string& target) override {
        std::filesystem::create_symlink(target, path);
    }
    unsigned modeOf(const std::string& path) override {
        struct stat found {};
        if (::stat(path.c_str(), &found) != 0)
            throw std::runtime_error("no file");
        return found.st_mode & 07777U;
    }
    std::string makeProgram(const std::vector<ChildStep>& steps) override {
        const std::string path = folder_ + "/program" + std::to_string(programs_++);
        makeFile(path, "#!/bin/sh\n" + shellScript(steps), 0755);
        return path;
    }

    int serve(const ServerBehaviour& behaviour) override {
        auto* const server = &servers_.emplace_back([this, behaviour](const std::string& /*head*/) {
            ++requests_;
            return replyFor(behaviour);
        });
        return server->port();
    }
    int closedPort() override { return mac::test::freePort(); }
    int requestCount() override { return requests_; }

    void resizeContent(Window& window, Size size) override {
        [mac::test::nativeWindow(window) setContentSize:NSMakeSize(size.width, size.height)];
    }

private:
    static mac::test::Reply replyFor(const ServerBehaviour& behaviour) {
        if (behaviour.garbage)
            return {"this is no answer\n\n"};
        if (behaviour.endlessBody)
            return {"HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nbegun", /*keepOpen=*/true};
        if (!behaviour.status)
            return {"", /*keepOpen=*/true};
        // A redirect leads back here, so that following it would be counted.
        return mac::test::answer("", std::to_string(*behaviour.status) + " Status", "Location: /next\r\n");
    }

    std::string folder_;
    int programs_ = 0;
    std::atomic<int> requests_ = 0;
    std::list<mac::test::RawServer> servers_;
};

} // namespace

std::unique_ptr<World> makeWorld() {
    return std::make_unique<MacWorld>();
}

} // namespace vantorel::contract
