// Vantorel. MIT licence, see LICENSE.
// Recognising the thirteen hotkeys inside and outside the application.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "hotkeys/hotkey_table.h"
#include "tests/unit/fake/shell_fixture.h"

namespace vantorel::fake {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

constexpr std::uint64_t kShift = 0x20000;
constexpr std::uint64_t kControl = 0x40000;
constexpr std::uint64_t kOption = 0x80000;
constexpr std::uint64_t kCommand = 0x100000;
constexpr std::uint64_t kChord = kShift | kControl | kOption | kCommand;

TEST(HotkeyTable, ThirteenKeysWithTheirNames) {
    EXPECT_THAT(hotkeyTable(), ElementsAre(Pair(1, "screenshot_active"), Pair(2, "design"), Pair(3, "voice_design"),
                                           Pair(4, "help"), Pair(6, "stop"), Pair(11, "screenshot_browser"),
                                           Pair(12, "sql"), Pair(13, "clear"), Pair(15, "review"), Pair(32, "quiz"),
                                           Pair(34, "status"), Pair(46, "algo"), Pair(49, "voice")));
}

TEST(HotkeyTable, NamesNeedNoEscaping) {
    for (const auto& [code, name] : hotkeyTable()) {
        EXPECT_EQ(name.find_first_not_of("abcdefghijklmnopqrstuvwxyz_"), std::string::npos) << name;
    }
}

TEST(HotkeyTable, ListIsSortedAndBracketed) {
    EXPECT_EQ(keyCodeList(hotkeyTable()), "[1, 2, 3, 4, 6, 11, 12, 13, 15, 32, 34, 46, 49]");
    EXPECT_EQ(keyCodeList({}), "[]");
    EXPECT_EQ(keyCodeList({{7, "x"}}), "[7]");
    EXPECT_EQ(keyCodeList({{65535, "x"}, {0, "y"}}), "[0, 65535]");
}

class HotkeysTest : public ShellTest {
protected:
    void SetUp() override { launchQuietly(); }

    bool press(std::uint16_t keyCode, std::uint64_t flags, KeyTarget target,
               std::optional<std::string> characters = std::nullopt) {
        return platform_.keyboard.press({keyCode, flags, std::move(characters)}, target);
    }
    std::vector<std::string> logOf(std::uint16_t keyCode, std::uint64_t flags, KeyTarget target,
                                   std::optional<std::string> characters = std::nullopt) {
        log_.take();
        press(keyCode, flags, target, std::move(characters));
        return log_.take();
    }
};

TEST_F(HotkeysTest, ChordInAnotherApplication) {
    EXPECT_THAT(logOf(1, kChord, KeyTarget::otherApplication, "S"),
                ElementsAre("🌍 Global event (outside app): keyCode=1",
                            "🔔 Key event detected: keyCode=1, modifiers=1966080, characters=S",
                            "   Modifiers: Shift=true, Ctrl=true, Option=true, Cmd=true", "   ✅ All modifiers present!",
                            "🔥 Hotkey detected: screenshot_active (keyCode: 1)",
                            "📤 Triggering hotkey via WebSocket: screenshot_active"));
    EXPECT_EQ(page().scripts().size(), 1U);
}

TEST_F(HotkeysTest, ChordInTheOwnWindowGoesOnIntoIt) {
    log_.take();
    EXPECT_TRUE(press(49, kChord, KeyTarget::ownWindow));
    EXPECT_THAT(log_.lines(),
                ElementsAre("🏠 Local event (inside app): keyCode=49",
                            "🔔 Key event detected: keyCode=49, modifiers=1966080, characters=nil",
                            "   Modifiers: Shift=true, Ctrl=true, Option=true, Cmd=true", "   ✅ All modifiers present!",
                            "🔥 Hotkey detected: voice (keyCode: 49)", "📤 Triggering hotkey via WebSocket: voice"));
}

TEST_F(HotkeysTest, EveryKeyOfTheTableTriggersItsName) {
    for (const auto& [code, name] : hotkeyTable()) {
        EXPECT_THAT(logOf(code, kChord, KeyTarget::otherApplication),
                    Contains("📤 Triggering hotkey via WebSocket: " + name));
    }
    EXPECT_EQ(page().scripts().size(), 13U);
}

TEST_F(HotkeysTest, OtherBitsDoNotMatter) {
    for (const std::uint64_t more :
         {0x10000ULL, 0x200000ULL, 0x400000ULL, 0x800000ULL, 0x10FULL, 0xFFFFFFFFFFE1FFFFULL}) {
        EXPECT_THAT(logOf(6, kChord | more, KeyTarget::otherApplication),
                    Contains("🔥 Hotkey detected: stop (keyCode: 6)"));
    }
}

TEST_F(HotkeysTest, WholeModifierWordIsPrintedUnsigned) {
    EXPECT_EQ(logOf(0, 0xFFFFFFFFFFFFFFFF, KeyTarget::ownWindow, "").at(1),
              "🔔 Key event detected: keyCode=0, modifiers=18446744073709551615, characters=");
    EXPECT_EQ(logOf(65535, 256, KeyTarget::ownWindow, "é").at(1),
              "🔔 Key event detected: keyCode=65535, modifiers=256, characters=é");
}

TEST_F(HotkeysTest, MissingModifiersAreNamedInOrder) {
    EXPECT_THAT(logOf(1, 0, KeyTarget::ownWindow, "s"),
                ElementsAre("🏠 Local event (inside app): keyCode=1",
                            "🔔 Key event detected: keyCode=1, modifiers=0, characters=s",
                            "   Modifiers: Shift=false, Ctrl=false, Option=false, Cmd=false",
                            "   ⚠️ Missing: Shift", "   ⚠️ Missing: Ctrl", "   ⚠️ Missing: Option",
                            "   ⚠️ Missing: Cmd", "   ❌ Not all modifiers pressed - ignoring"));
    EXPECT_THAT(logOf(1, kChord & ~kCommand, KeyTarget::otherApplication, "S"),
                ElementsAre("🌍 Global event (outside app): keyCode=1",
                            "🔔 Key event detected: keyCode=1, modifiers=917504, characters=S",
                            "   Modifiers: Shift=true, Ctrl=true, Option=true, Cmd=false", "   ⚠️ Missing: Cmd",
                            "   ❌ Not all modifiers pressed - ignoring"));
    EXPECT_THAT(page().scripts(), IsEmpty());
}

TEST_F(HotkeysTest, EachSingleMissingModifierIsFatal) {
    struct Case {
        std::uint64_t bit;
        const char* line;
        const char* missing;
    };
    for (const Case& each :
         {Case{kShift, "   Modifiers: Shift=false, Ctrl=true, Option=true, Cmd=true", "   ⚠️ Missing: Shift"},
          Case{kControl, "   Modifiers: Shift=true, Ctrl=false, Option=true, Cmd=true", "   ⚠️ Missing: Ctrl"},
          Case{kOption, "   Modifiers: Shift=true, Ctrl=true, Option=false, Cmd=true", "   ⚠️ Missing: Option"},
          Case{kCommand, "   Modifiers: Shift=true, Ctrl=true, Option=true, Cmd=false", "   ⚠️ Missing: Cmd"}}) {
        const auto lines = logOf(49, kChord & ~each.bit, KeyTarget::otherApplication);
        ASSERT_EQ(lines.size(), 5U);
        EXPECT_EQ(lines[2], each.line);
        EXPECT_EQ(lines[3], each.missing);
        EXPECT_EQ(lines[4], "   ❌ Not all modifiers pressed - ignoring");
    }
    EXPECT_THAT(page().scripts(), IsEmpty());
}

TEST_F(HotkeysTest, ChordWithAKeyThatIsNotInTheTable) {
    EXPECT_THAT(logOf(0, kChord, KeyTarget::otherApplication, "A"),
                ElementsAre("🌍 Global event (outside app): keyCode=0",
                            "🔔 Key event detected: keyCode=0, modifiers=1966080, characters=A",
                            "   Modifiers: Shift=true, Ctrl=true, Option=true, Cmd=true", "   ✅ All modifiers present!",
                            "⚠️ Unknown keyCode: 0 with all modifiers",
                            "   Available keyCodes: [1, 2, 3, 4, 6, 11, 12, 13, 15, 32, 34, 46, 49]"));
    EXPECT_THAT(page().scripts(), IsEmpty());
}

TEST_F(HotkeysTest, KeyIsAPositionWhateverItTypes) {
    EXPECT_THAT(logOf(6, kChord, KeyTarget::otherApplication, "W"), Contains("🔥 Hotkey detected: stop (keyCode: 6)"));
}

TEST_F(HotkeysTest, RepeatsOfAHeldKeyCountEachTime) {
    for (int i = 0; i < 5; ++i)
        press(1, kChord, KeyTarget::otherApplication);
    EXPECT_EQ(page().scripts().size(), 5U);
    EXPECT_EQ(log_.count("🔥 Hotkey detected: screenshot_active (keyCode: 1)"), 5U);
}

TEST_F(HotkeysTest, NoPressIsEverSwallowed) {
    EXPECT_TRUE(press(0, 0, KeyTarget::ownWindow));
    EXPECT_TRUE(press(0, kChord, KeyTarget::ownWindow));
    EXPECT_TRUE(press(1, kChord, KeyTarget::ownWindow));
}

TEST_F(HotkeysTest, MatchAfterTheControllerIsGoneIsLoggedAndDropped) {
    releaseShell();
    const auto lines = logOf(1, kChord, KeyTarget::otherApplication);
    EXPECT_EQ(lines.back(), "🔥 Hotkey detected: screenshot_active (keyCode: 1)");
    EXPECT_TRUE(press(1, kChord, KeyTarget::ownWindow));
    EXPECT_THAT(page().scripts(), IsEmpty());
}

TEST_F(HotkeysTest, MonitorsStayAfterTheShutdown) {
    platform_.app.terminate();
    press(1, kChord, KeyTarget::otherApplication);
    EXPECT_EQ(page().scripts().size(), 1U);
}

class HotkeySetupTest : public ShellTest {
protected:
    std::vector<std::string> setup() {
        construct();
        log_.take();
        shell_->setupGlobalHotkeys();
        return log_.take();
    }
};

TEST_F(HotkeySetupTest, TrustIsOnlySaid) {
    platform_.trust.trusted = true;
    const auto lines = setup();
    EXPECT_EQ(lines.at(1), "✅ Accessibility permissions granted");
    EXPECT_EQ(lines.at(2), "🔧 Registering global event monitor...");
    EXPECT_EQ(platform_.keyboard.globalCount(), 1U);
    EXPECT_EQ(platform_.keyboard.localCount(), 1U);
}

TEST_F(HotkeySetupTest, WithoutTrustTheMonitorsAreRegisteredAllTheSame) {
    setup();
    EXPECT_EQ(platform_.keyboard.globalCount(), 1U);
    EXPECT_EQ(platform_.keyboard.localCount(), 1U);
}

TEST_F(HotkeySetupTest, FailedRegistrationsAreLoggedAndTheSummaryStays) {
    platform_.trust.trusted = true;
    platform_.keyboard.globalAvailable = false;
    platform_.keyboard.localAvailable = false;
    const auto lines = setup();
    ASSERT_GE(lines.size(), 9U);
    EXPECT_THAT(std::vector<std::string>(lines.begin(), lines.begin() + 9),
                ElementsAre("⌨️ Setting up global hotkeys...", "✅ Accessibility permissions granted",
                            "🔧 Registering global event monitor...", "❌ Failed to register global event monitor!",
                            "🔧 Registering local event monitor...", "❌ Failed to register local event monitor!",
                            "✅ Global and local hotkeys registered (Shift + Ctrl + Option + Cmd + key)",
                            "📋 Registered keyCodes: [1, 2, 3, 4, 6, 11, 12, 13, 15, 32, 34, 46, 49]",
                            "📋 Hotkey mappings:"));
    EXPECT_EQ(lines.size(), 22U);
}

TEST_F(HotkeySetupTest, OneFailedRegistrationLeavesTheOther) {
    platform_.keyboard.globalAvailable = false;
    const auto lines = setup();
    EXPECT_THAT(lines, Contains("❌ Failed to register global event monitor!"));
    EXPECT_THAT(lines, Contains("✅ Local event monitor registered successfully"));
    EXPECT_EQ(platform_.keyboard.localCount(), 1U);
}

TEST_F(HotkeySetupTest, EverySetupInstallsAFreshPair) {
    setup();
    setup();
    EXPECT_EQ(platform_.keyboard.globalCount(), 2U);
    EXPECT_EQ(platform_.keyboard.localCount(), 2U);
}

} // namespace
} // namespace vantorel::fake
