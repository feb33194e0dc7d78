// Vantorel. MIT licence, see LICENSE.
// A platform that passes every call on to another one; a test overrides the call that is to break.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/platform.h"

namespace vantorel::fault {

class ForwardingPlatform : public Platform {
public:
    /// `inner` must outlive this.
    explicit ForwardingPlatform(Platform& inner) : inner_(inner) {}

    Application* application() override { return inner_.application(); }
    Workspace& workspace() override { return inner_.workspace(); }
    EventMonitors& eventMonitors() override { return inner_.eventMonitors(); }
    std::shared_ptr<Window> makeWindow(Rect contentRect, unsigned style) override {
        return inner_.makeWindow(contentRect, style);
    }
    std::shared_ptr<View> makeView(Rect frame) override { return inner_.makeView(frame); }
    std::shared_ptr<TextField> makeTextField(Rect frame) override { return inner_.makeTextField(frame); }
    std::shared_ptr<Alert> makeAlert() override { return inner_.makeAlert(); }
    std::shared_ptr<Menu> makeMenu(const std::string& title) override { return inner_.makeMenu(title); }
    std::shared_ptr<MenuItem> makeMenuItem(const std::string& title, const Selector& action,
                                           const std::string& keyEquivalent) override {
        return inner_.makeMenuItem(title, action, keyEquivalent);
    }
    std::shared_ptr<MenuItem> makeSeparatorItem() override { return inner_.makeSeparatorItem(); }
    std::string stringFromRect(Rect rect) override { return inner_.stringFromRect(rect); }
    Rect rectFromString(const std::string& text) override { return inner_.rectFromString(text); }
    std::shared_ptr<WebsiteDataStore> defaultWebsiteDataStore() override { return inner_.defaultWebsiteDataStore(); }
    std::shared_ptr<WebViewConfiguration> makeWebViewConfiguration() override {
        return inner_.makeWebViewConfiguration();
    }
    std::shared_ptr<WebView> makeWebView(Rect frame, std::shared_ptr<WebViewConfiguration> configuration) override {
        return inner_.makeWebView(frame, std::move(configuration));
    }
    Bundle& mainBundle() override { return inner_.mainBundle(); }
    FileManager& fileManager() override { return inner_.fileManager(); }
    ProcessInfo& processInfo() override { return inner_.processInfo(); }
    UserDefaults& userDefaults() override { return inner_.userDefaults(); }
    UrlSession& sharedUrlSession() override { return inner_.sharedUrlSession(); }
    std::shared_ptr<Process> makeProcess() override { return inner_.makeProcess(); }
    std::shared_ptr<Pipe> makePipe() override { return inner_.makePipe(); }
    bool isAddress(const std::string& text) override { return inner_.isAddress(text); }
    std::shared_ptr<Timer> scheduleRepeatingTimer(double seconds, std::function<void()> block) override {
        return inner_.scheduleRepeatingTimer(seconds, std::move(block));
    }
    Queue& mainQueue() override { return inner_.mainQueue(); }
    Queue& globalQueue() override { return inner_.globalQueue(); }
    ScreenCaptureAccess& screenCaptureAccess() override { return inner_.screenCaptureAccess(); }
    AudioCaptureAccess& audioCaptureAccess() override { return inner_.audioCaptureAccess(); }
    Accessibility& accessibility() override { return inner_.accessibility(); }

protected:
    Platform& inner() const { return inner_; }

private:
    Platform& inner_;
};

class ForwardingFileManager : public FileManager {
public:
    explicit ForwardingFileManager(FileManager& inner) : inner_(inner) {}

    bool fileExists(const std::string& path) const override { return inner_.fileExists(path); }
    std::optional<PlatformError> setPosixPermissions(const std::string& path, unsigned mode) override {
        return inner_.setPosixPermissions(path, mode);
    }
    std::optional<std::string> readUtf8File(const std::string& path) const override {
        return inner_.readUtf8File(path);
    }

private:
    FileManager& inner_;
};

class ForwardingUserDefaults : public UserDefaults {
public:
    explicit ForwardingUserDefaults(UserDefaults& inner) : inner_(inner) {}

    bool hasObject(const std::string& key) const override { return inner_.hasObject(key); }
    bool boolForKey(const std::string& key) const override { return inner_.boolForKey(key); }
    std::optional<std::string> stringForKey(const std::string& key) const override { return inner_.stringForKey(key); }
    void setBool(bool value, const std::string& key) override { inner_.setBool(value, key); }
    void setString(const std::string& value, const std::string& key) override { inner_.setString(value, key); }

private:
    UserDefaults& inner_;
};

class ForwardingProcess : public Process {
public:
    explicit ForwardingProcess(std::shared_ptr<Process> inner) : inner_(std::move(inner)) {}

    void setExecutablePath(const std::string& path) override { inner_->setExecutablePath(path); }
    std::optional<std::string> executablePath() const override { return inner_->executablePath(); }
    void setCurrentDirectoryPath(const std::string& path) override { inner_->setCurrentDirectoryPath(path); }
    std::optional<std::string> currentDirectoryPath() const override { return inner_->currentDirectoryPath(); }
    void setEnvironment(const Environment& environment) override { inner_->setEnvironment(environment); }
    void setStandardOutput(std::shared_ptr<Pipe> pipe) override { inner_->setStandardOutput(std::move(pipe)); }
    void setStandardError(std::shared_ptr<Pipe> pipe) override { inner_->setStandardError(std::move(pipe)); }
    void setTerminationHandler(std::function<void(Process&)> handler) override {
        inner_->setTerminationHandler(std::move(handler));
    }
    std::optional<PlatformError> run() override { return inner_->run(); }
    bool isRunning() const override { return inner_->isRunning(); }
    std::int32_t processIdentifier() const override { return inner_->processIdentifier(); }
    std::int32_t terminationStatus() const override { return inner_->terminationStatus(); }
    void terminate() override { inner_->terminate(); }
    void waitUntilExit() override { inner_->waitUntilExit(); }

private:
    std::shared_ptr<Process> inner_;
};

class ForwardingUrlSession : public UrlSession {
public:
    explicit ForwardingUrlSession(UrlSession& inner) : inner_(inner) {}

    std::shared_ptr<DataTask> dataTask(const UrlRequest& request,
                                       std::function<void(const UrlResult&)> completion) override {
        return inner_.dataTask(request, std::move(completion));
    }

private:
    UrlSession& inner_;
};

class ForwardingEventMonitors : public EventMonitors {
public:
    explicit ForwardingEventMonitors(EventMonitors& inner) : inner_(inner) {}

    std::shared_ptr<EventMonitor> addGlobalMonitorForKeyDown(std::function<void(const KeyEvent&)> handler) override {
        return inner_.addGlobalMonitorForKeyDown(std::move(handler));
    }
    std::shared_ptr<EventMonitor>
    addLocalMonitorForKeyDown(std::function<const KeyEvent*(const KeyEvent&)> handler) override {
        return inner_.addLocalMonitorForKeyDown(std::move(handler));
    }

private:
    EventMonitors& inner_;
};

class ForwardingAudioCaptureAccess : public AudioCaptureAccess {
public:
    explicit ForwardingAudioCaptureAccess(AudioCaptureAccess& inner) : inner_(inner) {}

    AuthorizationStatus authorizationStatus() override { return inner_.authorizationStatus(); }
    void requestAccess(std::function<void(bool granted)> completion) override {
        inner_.requestAccess(std::move(completion));
    }

private:
    AudioCaptureAccess& inner_;
};

} // namespace vantorel::fault
