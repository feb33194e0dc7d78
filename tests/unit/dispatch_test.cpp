// Vantorel. MIT licence, see LICENSE.
// A hotkey's way to the page: the script and the log lines around it.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "hotkeys/hotkey_script.h"
#include "hotkeys/hotkey_table.h"
#include "tests/unit/fake/shell_fixture.h"

namespace vantorel::fake {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string expectedScript(const std::string& name) {
    return "if (window.ws && window.ws.readyState === WebSocket.OPEN) {\n"
           "    window.ws.send(JSON.stringify({\n"
           "        type: 'trigger_hotkey',\n"
           "        hotkey: '" +
           name +
           "'\n"
           "    }));\n"
           "    console.log('✅ Hotkey sent: " +
           name +
           "');\n"
           "} else {\n"
           "    console.error('❌ WebSocket not connected');\n"
           "}";
}

TEST(HotkeyScript, IsExactlyThisForEveryName) {
    for (const auto& [code, name] : hotkeyTable())
        EXPECT_EQ(hotkeyScript(name), expectedScript(name));
}

class DispatchTest : public ShellTest {
protected:
    void SetUp() override { launchQuietly(); }
};

TEST_F(DispatchTest, ScriptIsRunInThePage) {
    shell_->triggerHotkey("voice");
    EXPECT_THAT(log_.lines(), ElementsAre("📤 Triggering hotkey via WebSocket: voice"));
    EXPECT_THAT(page().scripts(), ElementsAre(expectedScript("voice")));
    EXPECT_EQ(platform_.loop.pendingMainBlocks(), 0U);
}

TEST_F(DispatchTest, SuccessIsLogged) {
    shell_->triggerHotkey("voice");
    log_.take();
    page().complete(0, std::nullopt);
    EXPECT_THAT(log_.lines(), ElementsAre("✅ Hotkey voice sent successfully"));
}

TEST_F(DispatchTest, ErrorIsLoggedWithItsDescription) {
    shell_->triggerHotkey("voice");
    log_.take();
    page().complete(0, PlatformError{"for people", "for the log"});
    EXPECT_THAT(log_.lines(), ElementsAre("❌ Error triggering hotkey: for people"));
    EXPECT_EQ(page().scripts().size(), 1U);
}

TEST_F(DispatchTest, EachHotkeyHasItsOwnCompletionInAnyOrder) {
    shell_->triggerHotkey("voice");
    shell_->triggerHotkey("sql");
    shell_->triggerHotkey("stop");
    log_.take();
    page().complete(2, std::nullopt);
    page().complete(0, std::nullopt);
    page().complete(1, PlatformError{"no", "no"});
    EXPECT_THAT(log_.lines(), ElementsAre("✅ Hotkey stop sent successfully", "✅ Hotkey voice sent successfully",
                                          "❌ Error triggering hotkey: no"));
}

TEST_F(DispatchTest, CompletionNeedsNoController) {
    shell_->triggerHotkey("voice");
    releaseShell();
    log_.take();
    page().complete(0, std::nullopt);
    EXPECT_THAT(log_.lines(), ElementsAre("✅ Hotkey voice sent successfully"));
}

TEST_F(DispatchTest, StripAndStateAreLeftAlone) {
    shell_->triggerHotkey("voice");
    page().complete(0, PlatformError{"no", "no"});
    EXPECT_EQ(platform_.recorder.count("mainQueue.async()"), 0U);
    EXPECT_THAT(platform_.alerts, IsEmpty());
}

class DispatchDeathTest : public ShellTest {
protected:
    DispatchDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(DispatchDeathTest, WithoutAWebViewTheProcessEnds) {
    construct();
    EXPECT_DEATH(shell_->triggerHotkey("voice"), "webView");
}

} // namespace
} // namespace vantorel::fake
