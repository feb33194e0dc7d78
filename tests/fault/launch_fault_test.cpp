// Vantorel. MIT licence, see LICENSE.
// Faults around the launch: files, store, process, monitors.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "tests/fault/fault_fixture.h"

namespace vantorel::fault {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

/// Everything behind the server's start has been reached.
void expectLaunchCompleted(const fake::FakePlatform& platform) {
    EXPECT_EQ(platform.keyboard.localCount(), 1U);
    EXPECT_EQ(platform.loop.activeTimers(), 1U);
    EXPECT_TRUE(platform.windows.at(0)->visible());
}

// Files ---------------------------------------------------------------------------------------------------------------

class UnreadableFiles : public ForwardingPlatform, ForwardingFileManager {
public:
    explicit UnreadableFiles(Platform& inner) : ForwardingPlatform(inner), ForwardingFileManager(inner.fileManager()) {}
    FileManager& fileManager() override { return *this; }
    std::optional<std::string> readUtf8File(const std::string&) const override { return std::nullopt; }
};
using EnvFileUnreadable = FaultTest<UnreadableFiles>;

TEST_F(EnvFileUnreadable, ServerRunsWithInheritedAndFixedVariables) {
    platform_.files.addFile(fake::kEnvFile, "A=1");
    platform_.surroundings.variables = {{"HOME", "/home/me"}};
    launch();
    EXPECT_EQ(log_.count("✅ .env file found (will be loaded into environment)"), 1U);
    EXPECT_EQ(child().environment()->size(), 4U);
    EXPECT_TRUE(shell_->isServerRunning());
    expectLaunchCompleted(platform_);
}

class StubbornFiles : public ForwardingPlatform, ForwardingFileManager {
public:
    explicit StubbornFiles(Platform& inner) : ForwardingPlatform(inner), ForwardingFileManager(inner.fileManager()) {}
    FileManager& fileManager() override { return *this; }
    std::optional<PlatformError> setPosixPermissions(const std::string&, unsigned) override {
        return PlatformError{"Read-only file system.", "Error 30"};
    }
};
using ModeChangeFails = FaultTest<StubbornFiles>;

TEST_F(ModeChangeFails, ServerThatIsExecutableAlreadyRunsAllTheSame) {
    launch();
    EXPECT_EQ(log_.count("⚠️ Warning: Could not set executable permissions: Error 30"), 1U);
    EXPECT_TRUE(shell_->isServerRunning());
    EXPECT_THAT(platform_.alerts, IsEmpty());
}

TEST_F(ModeChangeFails, ServerThatIsNotExecutableIsReportedAsAFailedStart) {
    platform_.files.addFile(fake::kServer, fake::kProgram, 0644);
    launch();
    platform_.runMainQueue();
    EXPECT_FALSE(shell_->isServerRunning());
    ASSERT_EQ(platform_.alerts.size(), 1U);
    EXPECT_EQ(alert().messageText(), "Server Start Failed");
    expectLaunchCompleted(platform_);
}

/// The server's file vanishes right after it was found.
class VanishingServer : public ForwardingPlatform, ForwardingFileManager {
public:
    explicit VanishingServer(fake::FakePlatform& inner)
        : ForwardingPlatform(inner),
          ForwardingFileManager(inner.files),
          fake_(inner) {}
    FileManager& fileManager() override { return *this; }
    bool fileExists(const std::string& path) const override {
        const bool exists = ForwardingFileManager::fileExists(path);
        if (path == fake::kServer)
            fake_.files.remove(path);
        return exists;
    }

private:
    fake::FakePlatform& fake_;
};
using ServerVanishes = FaultTest<VanishingServer>;

TEST_F(ServerVanishes, BothFailuresAreReportedAndTheLaunchGoesOn) {
    launch();
    platform_.runMainQueue();
    EXPECT_EQ(log_.count("⚠️ Warning: Could not set executable permissions: FakeError(No such file.)"), 1U);
    EXPECT_EQ(log_.count("❌ Failed to start server: The server file doesn’t exist."), 1U);
    EXPECT_FALSE(shell_->isServerRunning());
    expectLaunchCompleted(platform_);
}

// Store ---------------------------------------------------------------------------------------------------------------

/// Accepts everything and keeps nothing.
class ForgetfulStore : public ForwardingPlatform, ForwardingUserDefaults {
public:
    explicit ForgetfulStore(Platform& inner)
        : ForwardingPlatform(inner),
          ForwardingUserDefaults(inner.userDefaults()) {}
    UserDefaults& userDefaults() override { return *this; }
    void setBool(bool, const std::string&) override {}
    void setString(const std::string&, const std::string&) override {}
};
using StoreCannotBeWritten = FaultTest<ForgetfulStore>;

TEST_F(StoreCannotBeWritten, ModesWorkForThisRun) {
    launch();
    shell_->toggleAlwaysOnTop();
    EXPECT_EQ(window().level(), WindowLevel::floating);
    EXPECT_TRUE(shell_->alwaysOnTop());
    shell_->toggleAlwaysOnTop();
    EXPECT_EQ(window().level(), WindowLevel::normal);
}

TEST_F(StoreCannotBeWritten, QuittingStopsTheServerAllTheSame) {
    launchQuietly();
    platform_.app.terminate();
    EXPECT_EQ(child().terminateRequests(), 1);
    EXPECT_EQ(platform_.loop.activeTimers(), 0U);
    EXPECT_THAT(log_.lines(), ElementsAre("🛑 Stopping Go server..."));
}

/// Says that a key is there and has no value for it.
class HollowStore : public ForwardingPlatform, ForwardingUserDefaults {
public:
    explicit HollowStore(Platform& inner) : ForwardingPlatform(inner), ForwardingUserDefaults(inner.userDefaults()) {}
    UserDefaults& userDefaults() override { return *this; }
    bool hasObject(const std::string&) const override { return true; }
};
using StoreContradictsItself = FaultTest<HollowStore>;

TEST_F(StoreContradictsItself, BooleansReadAsFalseAndTheDefaultFrameIsUsed) {
    launch();
    EXPECT_FALSE(shell_->hideInScreenshots());
    EXPECT_FALSE(shell_->alwaysOnTop());
    EXPECT_EQ(window().content().bounds().size, (Size{900, 750}));
}

// Process -------------------------------------------------------------------------------------------------------------

class FailingProcess : public ForwardingProcess {
public:
    using ForwardingProcess::ForwardingProcess;
    std::optional<PlatformError> run() override { return PlatformError{"Exec format error", "Error 8"}; }
};
class NoLaunch : public ForwardingPlatform {
public:
    using ForwardingPlatform::ForwardingPlatform;
    std::shared_ptr<Process> makeProcess() override { return std::make_shared<FailingProcess>(inner().makeProcess()); }
};
using LaunchFails = FaultTest<NoLaunch>;

TEST_F(LaunchFails, IsReportedThreeTimesAndNothingIsRetried) {
    launch();
    platform_.advance(120);
    EXPECT_EQ(log_.count("❌ Failed to start server: Exec format error"), 1U);
    expectStatus("❌ Failed to start server: Exec format error", SystemColor::red);
    ASSERT_EQ(platform_.alerts.size(), 1U);
    EXPECT_EQ(alert().informativeText(), "Exec format error");
    EXPECT_EQ(platform_.http.taskCount(), 0U);
    EXPECT_THAT(page().loads(), IsEmpty());
    EXPECT_EQ(platform_.processes.size(), 1U);
}

TEST_F(LaunchFails, PageIsNotLoadedWhileTheAlertIsUp) {
    platform_.user.willAnswer([this](fake::FakeAlert&) {
        platform_.advance(30);
        return kAlertFirstButtonReturn;
    });
    launch();
    platform_.runMainQueue();
    EXPECT_THAT(page().loads(), IsEmpty());
    platform_.app.terminate();
    EXPECT_EQ(child().terminateRequests(), 0);
}

/// Forgets what was set on it.
class BlankProcess : public ForwardingProcess {
public:
    using ForwardingProcess::ForwardingProcess;
    std::optional<std::string> executablePath() const override { return std::nullopt; }
    std::optional<std::string> currentDirectoryPath() const override { return std::nullopt; }
};
class BlankProcesses : public ForwardingPlatform {
public:
    using ForwardingPlatform::ForwardingPlatform;
    std::shared_ptr<Process> makeProcess() override { return std::make_shared<BlankProcess>(inner().makeProcess()); }
};
using PathsDoNotReadBack = FaultTest<BlankProcesses>;

TEST_F(PathsDoNotReadBack, MissingPathsAreLoggedAsNil) {
    launch();
    EXPECT_THAT(log_.lines(), Contains("⚙️ Executable URL set: nil"));
    EXPECT_THAT(log_.lines(), Contains("⚙️ Working directory set: nil"));
    EXPECT_TRUE(shell_->isServerRunning());
}

class NoProcesses : public ForwardingPlatform {
public:
    using ForwardingPlatform::ForwardingPlatform;
    std::shared_ptr<Process> makeProcess() override { return nullptr; }
};
using ProcessCannotBeMade = FaultTest<NoProcesses>;

TEST_F(ProcessCannotBeMade, IsLoggedAndTakenAsStarted) {
    launch();
    EXPECT_THAT(
        fake::between(log_.lines(), "⚙️ Creating Process object...", "✅ Server process started successfully"),
        ElementsAre("⚙️ Creating Process object...", "⚙️ Process object created: false",
                    "⚙️ Executable URL set: nil", "⚙️ Working directory set: nil",
                    std::string("🚀 Launching server from directory: ") + fake::kResources,
                    "🌍 Environment: WEBSOCKET_ENABLED=true, WEBSOCKET_PORT=8080, DISABLE_NATIVE_HOTKEYS=true",
                    "🚀 About to call serverProcess?.run()...", "🚀 Calling run() on process...",
                    "✅ run() returned successfully", "❌ serverProcess is nil after run()!",
                    "✅ Server process started successfully"));
    EXPECT_TRUE(shell_->isServerRunning());
    expectStatus("🔄 Server starting... Waiting for connection...", SystemColor::orange);
    expectLaunchCompleted(platform_);
    platform_.advance(3);
    EXPECT_EQ(page().loads().size(), 1U);
    platform_.app.terminate();
    EXPECT_EQ(log_.count("🛑 Stopping Go server..."), 0U);
}

/// Launches, and the controller's field is empty by the time that this returns.
class DroppedProcess : public ForwardingProcess {
public:
    DroppedProcess(std::shared_ptr<Process> inner, std::function<void()> drop)
        : ForwardingProcess(std::move(inner)),
          drop_(std::move(drop)) {}
    std::optional<PlatformError> run() override {
        drop_();
        return ForwardingProcess::run();
    }

private:
    std::function<void()> drop_;
};
class DroppedProcesses : public ForwardingPlatform {
public:
    using ForwardingPlatform::ForwardingPlatform;
    std::shared_ptr<Process> makeProcess() override {
        auto process = std::make_shared<DroppedProcess>(inner().makeProcess(), [this] {
            drop();
            outlivesItsRun = !made.expired();
        });
        made = process;
        return process;
    }
    std::function<void()> drop;
    std::weak_ptr<Process> made;
    bool outlivesItsRun = false;
};
using ProcessIsDropped = FaultTest<DroppedProcesses>;

TEST_F(ProcessIsDropped, WithinItsRunIsLogged) {
    broken_.drop = [this] { shell_->setServerProcess(nullptr); };
    launch();
    EXPECT_TRUE(broken_.outlivesItsRun);
    EXPECT_THAT(fake::between(log_.lines(), "✅ run() returned successfully", "✅ Server process started successfully"),
                ElementsAre("✅ run() returned successfully", "❌ serverProcess is nil after run()!",
                            "✅ Server process started successfully"));
    EXPECT_TRUE(shell_->isServerRunning());
    expectLaunchCompleted(platform_);
}

// Monitors ------------------------------------------------------------------------------------------------------------

class NoMonitors : public ForwardingPlatform, ForwardingEventMonitors {
public:
    explicit NoMonitors(Platform& inner) : ForwardingPlatform(inner), ForwardingEventMonitors(inner.eventMonitors()) {}
    EventMonitors& eventMonitors() override { return *this; }
    std::shared_ptr<EventMonitor> addGlobalMonitorForKeyDown(std::function<void(const KeyEvent&)>) override {
        return nullptr;
    }
    std::shared_ptr<EventMonitor> addLocalMonitorForKeyDown(std::function<const KeyEvent*(const KeyEvent&)>) override {
        return nullptr;
    }
};
using MonitorsCannotBeHad = FaultTest<NoMonitors>;

TEST_F(MonitorsCannotBeHad, IsLoggedAndTheTimerScheduledAllTheSame) {
    launch();
    EXPECT_THAT(log_.lines(), Contains("❌ Failed to register global event monitor!"));
    EXPECT_THAT(log_.lines(), Contains("❌ Failed to register local event monitor!"));
    EXPECT_THAT(log_.lines(), Not(Contains("✅ Global event monitor registered successfully")));
    EXPECT_THAT(log_.lines(), Contains("✅ Global and local hotkeys registered (Shift + Ctrl + Option + Cmd + key)"));
    EXPECT_EQ(platform_.loop.activeTimers(), 1U);
}

} // namespace
} // namespace vantorel::fault
