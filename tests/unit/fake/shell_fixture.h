// Vantorel. MIT licence, see LICENSE.
// The controller over the fake platform, with its log caught: what most unit tests begin with.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "app/app_delegate.h"
#include "tests/unit/fake/fake_platform.h"
#include "tests/unit/fake/log_capture.h"

namespace vantorel::fake {

inline constexpr const char* kBundle = "/Applications/Vantorel.app";
inline constexpr const char* kResources = "/Applications/Vantorel.app/Contents/Resources";
inline constexpr const char* kServer = "/Applications/Vantorel.app/Contents/Resources/vantor-srv";
inline constexpr const char* kEnvFile = "/Applications/Vantorel.app/Contents/Resources/.env";

/// What makes a file a program.
inline constexpr const char* kProgram = "#!server";

/// The lines of a record from the first that is `from` to the first after it that is `to`, both included. Empty when
/// they are not there in this order.
inline std::vector<std::string> between(const std::vector<std::string>& lines, const std::string& from,
                                        const std::string& to) {
    const auto begin = std::find(lines.begin(), lines.end(), from);
    const auto end = std::find(begin, lines.end(), to);
    return end == lines.end() ? std::vector<std::string>{} : std::vector<std::string>{begin, end + 1};
}

/// `lines` as one text, for a comparison that shows the lines that differ.
inline std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    return text;
}

/// A machine with the server in its place, no .env file, an empty store, and no permission given or refused so far.
class ShellTest : public ::testing::Test {
protected:
    ShellTest() {
        platform_.files.addDirectory(kResources);
        platform_.files.addFile(kServer, kProgram, 0755);
    }

    void TearDown() override { EXPECT_THAT(platform_.recorder.violations(), ::testing::IsEmpty()); }

    /// What the controller is given: the fake itself, or one that forwards to it.
    virtual Platform& platform() { return platform_; }

    void construct() {
        shell_ = std::make_shared<AppDelegate>(platform());
        platform_.app.setDelegate(shell_);
    }
    void launch() {
        construct();
        shell_->applicationDidFinishLaunching();
    }
    /// Launches, lets everything queued run, and forgets record and log so far.
    void launchQuietly() {
        launch();
        platform_.runMainQueue();
        platform_.recorder.clear();
        log_.take();
    }
    /// Lets go of the controller and proves that nothing keeps it besides the two handlers that may: the child's
    /// termination handler and the answer about the microphone, which are forgotten.
    void releaseShell() {
        platform_.microphone.forget();
        for (const auto& process : platform_.processes)
            process->forgetHandlers();
        const std::weak_ptr<AppDelegate> weak = shell_;
        shell_.reset();
        ASSERT_TRUE(weak.expired()) << "something holds the controller";
    }

    FakeWindow& window() { return *platform_.windows.at(0); }
    FakeWebView& page() { return *platform_.webViews.at(0); }
    FakeProcess& child() { return *platform_.processes.at(0); }
    FakeTextField& label() { return *platform_.textFields.at(0); }
    FakeAlert& alert(std::size_t index = 0) { return *platform_.alerts.at(index); }

    /// Runs the main queue and compares what the strip shows then.
    void expectStatus(const std::string& text, SystemColor color) {
        platform_.runMainQueue();
        EXPECT_EQ(label().stringValue(), text);
        ASSERT_TRUE(label().textColor().has_value());
        EXPECT_EQ(*label().textColor(), Color(color));
    }

    FakePlatform platform_;
    LogCapture log_{platform_.recorder};
    std::shared_ptr<AppDelegate> shell_;
};

} // namespace vantorel::fake
