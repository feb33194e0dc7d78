// Vantorel. MIT licence, see LICENSE.
// Callbacks that come late, twice, never, or on the wrong thread.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/fault/fault_fixture.h"

namespace vantorel::fault {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Keeps every completion of the session, for the test to call when and as often as it likes.
class LooseSession : public ForwardingPlatform, ForwardingUrlSession {
public:
    using Completion = std::function<void(const UrlResult&)>;

    explicit LooseSession(Platform& inner)
        : ForwardingPlatform(inner),
          ForwardingUrlSession(inner.sharedUrlSession()) {}
    UrlSession& sharedUrlSession() override { return *this; }
    std::shared_ptr<DataTask> dataTask(const UrlRequest& request, Completion completion) override {
        completions.push_back(completion);
        return ForwardingUrlSession::dataTask(request, std::move(completion));
    }
    std::vector<Completion> completions;
};
using ProbeCallbacks = FaultTest<LooseSession>;

TEST_F(ProbeCallbacks, SecondAnswerIsShownAsTheLatest) {
    launchQuietly();
    platform_.advance(2);
    fake::onBackgroundThread([this] { broken_.completions.at(0)(fake::FakeUrlSession::status(200)); });
    fake::onBackgroundThread([this] { broken_.completions.at(0)(fake::FakeUrlSession::failure("late")); });
    expectStatus("⚠️ Server running but not responding...", SystemColor::orange);
}

TEST_F(ProbeCallbacks, AnswerAfterTheEndOfTheApplicationDoesNoHarm) {
    launchQuietly();
    platform_.advance(2);
    platform_.app.terminate();
    fake::onBackgroundThread([this] { broken_.completions.at(0)(fake::FakeUrlSession::status(200)); });
    expectStatus("✅ Connected to server on port 8080", SystemColor::systemGreen);
}

TEST_F(ProbeCallbacks, AnswerAfterTheControllerIsGoneDoesNothing) {
    launchQuietly();
    platform_.advance(2);
    releaseShell();
    platform_.recorder.clear();
    fake::onBackgroundThread([this] { broken_.completions.at(0)(fake::FakeUrlSession::status(200)); });
    platform_.runMainQueue();
    EXPECT_EQ(platform_.recorder.countStartingWith("textField1."), 0U);
    broken_.completions.clear();
}

TEST_F(ProbeCallbacks, AnswersThatNeverComeDoNotStopTheProbes) {
    launchQuietly();
    platform_.advance(20);
    EXPECT_EQ(broken_.completions.size(), 10U);
    fake::onBackgroundThread([this] { broken_.completions.at(9)(fake::FakeUrlSession::status(200)); });
    expectStatus("✅ Connected to server on port 8080", SystemColor::systemGreen);
}

/// Keeps the termination handler, for the test to call when and as often as it likes.
class LooseProcess : public ForwardingProcess {
public:
    using ForwardingProcess::ForwardingProcess;
    void setTerminationHandler(std::function<void(Process&)> handler) override { handler_ = std::move(handler); }
    void callHandler() {
        fake::onBackgroundThread([this] { handler_(*this); });
    }
    void dropHandler() { handler_ = nullptr; }

private:
    std::function<void(Process&)> handler_;
};
class LooseProcesses : public ForwardingPlatform {
public:
    using ForwardingPlatform::ForwardingPlatform;
    ~LooseProcesses() override {
        if (process)
            process->dropHandler();
    }
    std::shared_ptr<Process> makeProcess() override {
        process = std::make_shared<LooseProcess>(inner().makeProcess());
        return process;
    }
    std::shared_ptr<LooseProcess> process;
};
using EndCallbacks = FaultTest<LooseProcesses>;

TEST_F(EndCallbacks, SecondNoticeOfTheEndOnlyRepeatsItself) {
    launchQuietly();
    child().endUnnoticed(2);
    broken_.process->callHandler();
    broken_.process->callHandler();
    EXPECT_EQ(log_.count("🛑 Server process terminated with exit code: 2"), 2U);
    expectStatus("❌ Server exited with code 2", SystemColor::red);
}

TEST_F(EndCallbacks, EndThatIsNeverNoticedStillLeavesAQuietShutdown) {
    launchQuietly();
    child().endUnnoticed(2);
    shell_->applicationWillTerminate();
    EXPECT_EQ(child().terminateRequests(), 0);
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(EndCallbacks, NoticeAfterTheShutdownIsLogged) {
    launchQuietly();
    shell_->applicationWillTerminate();
    child().endUnnoticed(15);
    broken_.process->callHandler();
    EXPECT_THAT(log_.lines(),
                ElementsAre("🛑 Stopping Go server...", "🛑 Server process terminated with exit code: 15"));
    platform_.runGlobalQueue();
    EXPECT_EQ(log_.count("✅ Go server stopped"), 1U);
}

TEST_F(EndCallbacks, ChildThatEndsBetweenTheTestAndTheRequestIsNotAskedAnyMore) {
    launchQuietly();
    shell_->applicationWillTerminate();
    EXPECT_EQ(child().terminateRequests(), 1);
    child().endUnnoticed(0);
    shell_->applicationWillTerminate();
    EXPECT_EQ(child().terminateRequests(), 1);
    EXPECT_EQ(log_.count("🛑 Stopping Go server..."), 1U);
}

/// Answers at once and inside the call, which the seam allows ("on any thread").
class PromptGrants : public ForwardingPlatform, ForwardingAudioCaptureAccess {
public:
    explicit PromptGrants(Platform& inner)
        : ForwardingPlatform(inner),
          ForwardingAudioCaptureAccess(inner.audioCaptureAccess()) {}
    AudioCaptureAccess& audioCaptureAccess() override { return *this; }
    void requestAccess(std::function<void(bool)> completion) override { completion(false); }
};
using GrantIsAnsweredAtOnce = FaultTest<PromptGrants>;

TEST_F(GrantIsAnsweredAtOnce, AccessibilityStillComesAfterTheMarker) {
    launch();
    const auto& record = platform_.recorder;
    EXPECT_EQ(record.countStartingWith("accessibility.isProcessTrustedWithOptions"), 0U);
    platform_.runMainQueue();
    EXPECT_GT(record.numberOf("accessibility.isProcessTrustedWithOptions(true)"),
              record.numberOf("userDefaults.setBool(true, \"hasRequestedPermissions\")"));
    EXPECT_EQ(log_.count("❌ Microphone access denied"), 1U);
}

using NothingBroken = FaultTest<ForwardingPlatform>;

TEST_F(NothingBroken, ForwardingChangesNothing) {
    launch();
    const auto record = platform_.recorder.lines();
    fake::FakePlatform plain;
    plain.files.addDirectory(fake::kResources);
    plain.files.addFile(fake::kServer, fake::kProgram, 0755);
    std::vector<std::string> expected;
    {
        const fake::LogCapture capture(plain.recorder);
        const auto shell = std::make_shared<AppDelegate>(plain);
        plain.app.setDelegate(shell);
        shell->applicationDidFinishLaunching();
        expected = plain.recorder.lines();
    }
    EXPECT_EQ(fake::joined(record), fake::joined(expected));
}

TEST_F(NothingBroken, TenThousandLatePostsFindNoController) {
    launchQuietly();
    for (int i = 0; i < 10'000; ++i)
        shell_->updateStatus("late", SystemColor::red);
    releaseShell();
    platform_.recorder.clear();
    platform_.runMainQueue();
    EXPECT_THAT(platform_.recorder.lines(), IsEmpty());
}

TEST_F(NothingBroken, PageThatFailsOverAndOverIsReportedEachTime) {
    launchQuietly();
    for (int i = 0; i < 3; ++i) {
        page().failProvisionally({"refused", "refused"});
        page().fail({"broken", "broken"});
    }
    EXPECT_EQ(log_.count("❌ Provisional navigation failed: refused"), 3U);
    EXPECT_EQ(log_.count("❌ Page load failed: broken"), 3U);
    expectStatus("❌ Failed to load page: broken", SystemColor::red);
    EXPECT_THAT(platform_.alerts, IsEmpty());
}

TEST_F(NothingBroken, QuitInsideAnAlertRunsTheShutdownOnce) {
    launchQuietly();
    platform_.user.willAnswer([this](fake::FakeAlert&) {
        platform_.app.terminate();
        return -1L;
    });
    int completions = 0;
    page().confirm("Sure?", [&completions](bool answer) {
        EXPECT_FALSE(answer);
        ++completions;
    });
    EXPECT_EQ(completions, 1);
    EXPECT_EQ(child().terminateRequests(), 1);
}

TEST_F(NothingBroken, ServerThatEndsInsideAnAlertIsShownAfterIt) {
    launchQuietly();
    platform_.user.willAnswer([this](fake::FakeAlert&) {
        child().end(1);
        return kAlertFirstButtonReturn;
    });
    page().alert("x", [] {});
    expectStatus("❌ Server exited with code 1", SystemColor::red);
}

TEST_F(NothingBroken, OutputThatEndsWithoutTheChildIsNoEnd) {
    launchQuietly();
    platform_.pipes.at(0)->end();
    platform_.pipes.at(0)->end();
    EXPECT_THAT(log_.lines(), IsEmpty());
    EXPECT_TRUE(child().isRunning());
}

} // namespace
} // namespace vantorel::fault
