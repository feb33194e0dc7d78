// Vantorel. MIT licence, see LICENSE.
// The first launch's requests for screen recording, microphone and accessibility.
#include <gtest/gtest.h>

#include <memory>
#include <variant>

#include "tests/unit/fake/shell_fixture.h"

namespace vantorel::fake {
namespace {

using ::testing::ElementsAre;

class PermissionsTest : public ShellTest {
protected:
    void request() {
        construct();
        platform_.recorder.clear();
        shell_->requestPermissions();
    }
    bool marker() {
        const auto found = platform_.defaults.values.find("hasRequestedPermissions");
        return found != platform_.defaults.values.end() && std::get<bool>(found->second);
    }
};

TEST_F(PermissionsTest, LaterLaunchesOnlySaySo) {
    platform_.defaults.values["hasRequestedPermissions"] = true;
    request();
    EXPECT_THAT(platform_.recorder.lines(), ElementsAre("userDefaults.boolForKey(\"hasRequestedPermissions\")",
                                                        "log \"✅ Permissions already requested in previous launch\""));
}

TEST_F(PermissionsTest, MarkerThatIsFalseAsksAgain) {
    platform_.defaults.values["hasRequestedPermissions"] = false;
    request();
    EXPECT_EQ(log_.lines().at(0), "🔐 First launch - requesting system permissions...");
    EXPECT_TRUE(marker());
}

TEST_F(PermissionsTest, NothingGrantedSoFar) {
    request();
    EXPECT_THAT(platform_.recorder.lines(),
                ElementsAre("userDefaults.boolForKey(\"hasRequestedPermissions\")",
                            "log \"🔐 First launch - requesting system permissions...\"",
                            "screenCaptureAccess.preflight()", "log \"🖥️ Requesting screen recording access...\"",
                            "screenCaptureAccess.request()", "audioCaptureAccess.authorizationStatus()",
                            "log \"🎤 Requesting microphone access...\"", "audioCaptureAccess.requestAccess()",
                            "userDefaults.setBool(true, \"hasRequestedPermissions\")"));

    platform_.recorder.clear();
    platform_.microphone.answer(true);
    EXPECT_THAT(platform_.recorder.lines(), ElementsAre("mainQueue.async()"));
    platform_.runMainQueue();
    EXPECT_THAT(platform_.recorder.lines(),
                ElementsAre("mainQueue.async()", "log \"✅ Microphone access granted\"",
                            "accessibility.isProcessTrustedWithOptions(true)",
                            "log \"🔑 Accessibility access requested (system prompt shown)\""));
}

TEST_F(PermissionsTest, MicrophoneRefused) {
    request();
    log_.take();
    platform_.microphone.answer(false);
    platform_.runMainQueue();
    EXPECT_THAT(log_.lines(),
                ElementsAre("❌ Microphone access denied", "🔑 Accessibility access requested (system prompt shown)"));
    EXPECT_TRUE(marker());
}

TEST_F(PermissionsTest, EverythingGrantedBefore) {
    platform_.screenCapture.allowed = true;
    platform_.microphone.status = AuthorizationStatus::authorized;
    platform_.trust.trusted = true;
    request();
    EXPECT_THAT(platform_.recorder.lines(),
                ElementsAre("userDefaults.boolForKey(\"hasRequestedPermissions\")",
                            "log \"🔐 First launch - requesting system permissions...\"",
                            "screenCaptureAccess.preflight()", "log \"✅ Screen recording already authorized\"",
                            "audioCaptureAccess.authorizationStatus()", "log \"✅ Microphone status: authorized\"",
                            "accessibility.isProcessTrustedWithOptions(true)",
                            "log \"✅ Accessibility already authorized\"",
                            "userDefaults.setBool(true, \"hasRequestedPermissions\")"));
}

TEST_F(PermissionsTest, DeniedOrRestrictedMicrophoneGoesOnAtOnce) {
    for (const AuthorizationStatus status : {AuthorizationStatus::denied, AuthorizationStatus::restricted}) {
        platform_.defaults.values.clear();
        platform_.microphone.status = status;
        log_.take();
        request();
        EXPECT_THAT(log_.lines(), ElementsAre("🔐 First launch - requesting system permissions...",
                                              "🖥️ Requesting screen recording access...",
                                              "✅ Microphone status: denied/restricted",
                                              "🔑 Accessibility access requested (system prompt shown)"));
        EXPECT_EQ(platform_.microphone.requestCount(), 0U);
        EXPECT_TRUE(marker());
    }
}

TEST_F(PermissionsTest, MicrophoneAnswerHoldsTheController) {
    request();
    log_.take();
    const std::weak_ptr<AppDelegate> weak = shell_;
    shell_.reset();
    EXPECT_FALSE(weak.expired());
    platform_.microphone.answer(true);
    platform_.runMainQueue();
    EXPECT_THAT(log_.lines(),
                ElementsAre("✅ Microphone access granted", "🔑 Accessibility access requested (system prompt shown)"));
    EXPECT_TRUE(weak.expired());
}

TEST_F(PermissionsTest, QuittingBeforeTheAnswerKeepsTheMarker) {
    launch();
    platform_.app.terminate();
    EXPECT_TRUE(marker());
    EXPECT_EQ(platform_.recorder.countStartingWith("accessibility.isProcessTrustedWithOptions"), 0U);
}

TEST_F(PermissionsTest, SecondLaunchAsksNothing) {
    launch();
    FakePlatform next;
    next.defaults.values = platform_.defaults.values;
    const auto again = std::make_shared<AppDelegate>(next);
    again->applicationDidFinishLaunching();
    EXPECT_EQ(next.recorder.countStartingWith("screenCaptureAccess."), 0U);
    EXPECT_EQ(next.recorder.countStartingWith("audioCaptureAccess."), 0U);
    EXPECT_EQ(next.recorder.countStartingWith("accessibility.isProcessTrustedWithOptions"), 0U);
}

} // namespace
} // namespace vantorel::fake
